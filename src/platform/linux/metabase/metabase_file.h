// IIS:// paths on a system without IIS: every server is a saved MetaBase.xml, the form that IIS 6 keeps its
// own metabase in. The objects answer as the directory service of a real server does.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/metabase.h"

namespace trelvin {

// Native path of a server's MetaBase.xml; nothing when the server can't be reached. The name comes as the
// caller of a bind wrote it.
using LocateMetabase = std::function<std::optional<std::string>(std::string_view server)>;

// Besides the failures that platform/metabase.h names:
//   0x800CC819  the description names file, line, column and cause of a broken file; also for a file that
//               another program changed while changes wait in the journal
//               beside it
//   0x80070005  setInfo and the other changing calls, when the file or its folder is read-only
//   0x80070070  the disk is full; nothing was changed
//   0x80070094  another program is changing the same metabase
//   0x800CC81D  put of a secret: it can't be encrypted without the server's own key, and is never
//               written clear
//
// What setInfo commits is appended to MetaBase.xml.journal and gets into the file when the provider is
// destroyed, or when the journal has grown as long as the file. A metabase that is only read is never
// written.
//
// Whether another program has changed a file is looked at by every bind and commit, or with a patience only
// after so long; the first commit and the writing of a new file always look. So a patience never costs
// another program's change, it is just seen a moment later.
std::unique_ptr<Metabase> makeFileMetabase(LocateMetabase locate, std::chrono::microseconds patience = {});

// The program's own patience. A run binds three nodes for each value; a look at the disk for each would be a
// third of its time.
inline constexpr std::chrono::microseconds kMetabasePatience{1000};

}  // namespace trelvin
