// Forms of metabase paths and class words.
#pragma once

#include <cstdint>
#include <string>

#include "platform/metabase.h"

namespace trelvin {

// GetObject. The existence of a node is tested by binding it.
NodeHandle getObject(const std::string& path);

// "IIS://" + server + "/" + service.
std::string servicePath(const std::string& server, const std::string& service);

// "IIs", the site kind in hand and "Server", "VirtualDir" or "Directory": IIsWebServer.
std::string classWord(const char* suffix);
// Whether a class is that word, in any case.
bool isClass(const std::string& className, const char* suffix);

// The number behind the last "/". Fails with 13 for a path that ends in "/" or in a word, 6 beyond 32 bits.
std::int32_t siteNumberFromPath(const std::string& path);

// A node's path relative to its site: empty for the site itself, /ROOT/images for a node below. Host, service
// and number are cut off by count, five slashes, whatever they hold.
std::string relativeToSite(const std::string& adsPath);

// The first bind of a server, made just ahead of the real one and without regard to what it gives: it only
// warms up the local provider.
void warmUpProvider();

}  // namespace trelvin
