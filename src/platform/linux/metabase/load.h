// Reads a metabase file into a tree.
#pragma once

#include <memory>
#include <string>

#include "disk.h"
#include "journal.h"
#include "tree.h"

namespace trelvin {

struct LoadedMetabase {
  FileIdentity identity;
  FileState state;
  std::shared_ptr<Tree> tree;
};

// 0x800CC819 with file, line, column and cause for what is no metabase; the file is only read.
LoadedMetabase loadMetabase(const std::string& path);

// Where a position of a text stands, such as "line 12, column 3". Columns count characters.
std::string placeOf(std::string_view text, std::size_t position);
[[noreturn]] void refuseFile(const std::string& path, std::size_t position, std::string_view cause);
// Fails for what is no UTF-8 text at all: another encoding, or a byte 0, which would end it early.
void requireUtf8(const std::string& path, std::string_view text);
// Parses in place. Line ends in attributes stay, which the separators of lists need.
void parseXml(const std::string& path, std::vector<char>& text, pugi::xml_document& document);

}  // namespace trelvin
