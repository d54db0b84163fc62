// The machine that a test of the whole program runs on: the facilities of the system that the tests are built
// for, on folders of the test's own.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace trelvin::test {

struct ScratchMachine {
  std::filesystem::path programFolder;
  // One folder for each server, in it one for each share; C$/WINDOWS/system32/inetsrv holds MetaBase.xml.
  std::filesystem::path network;
  // Gets each line about what the tree copy could not copy.
  std::function<void(std::string_view line)> onCopyReport;
};

// Puts files, profiles, shell copy, access lists, registry and databases into the set.
void useScratchMachine(Platform& set, const ScratchMachine& machine);

// The program's own way to the servers. What was changed is in the files once it has gone.
std::unique_ptr<Metabase> scratchMetabase(const std::filesystem::path& network);
// A second look at them, beside that one.
std::unique_ptr<Metabase> scratchReader(const std::filesystem::path& network);

// A native path in the program's own form.
std::string programForm(const std::filesystem::path& native);

}  // namespace trelvin::test
