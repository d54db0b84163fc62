// The facilities of the system that the tests are built for, so that one test of each holds for all systems.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "fakes/temp_folder.h"
#include "platform/application.h"
#include "platform/database.h"
#include "platform/files.h"
#include "platform/metabase.h"
#include "platform/ntfs.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/shell.h"

namespace trelvin::test {

std::unique_ptr<FileSystem> systemFiles();
std::unique_ptr<ProfileFiles> systemProfileFiles();
// Its values are nobody else's; where the system has one registry for all, below a key of the tests.
std::unique_ptr<Registry> systemRegistry(const TempFolder& folder);
std::unique_ptr<Clock> systemClock();
std::unique_ptr<Databases> systemDatabases();
// Reaches the servers of a network folder: <server>/C$/WINDOWS/system32/inetsrv/MetaBase.xml. What was
// changed is in the file once this and all of its nodes are gone. Where objects are counted, its end is a
// test that none is left over.
std::unique_ptr<Metabase> systemMetabase(const TempFolder& network);
std::unique_ptr<NtfsControl> systemAccessLists();
// Makes something that has a list, with that name, and returns its path in the form of the control; empty
// where nothing has one.
std::string pathWithAccessList(const TempFolder& folder, std::string_view name);
std::unique_ptr<Shell> systemShell();
// Whether a copy that ends with this number may have found no source.
bool tellsMissingSource(std::int32_t number);
std::unique_ptr<Opener> systemOpener();

// A native path in the program's own form.
std::string programForm(const std::filesystem::path& native);

// Writes a program that makes the file "started" in its own folder. Returns its native path.
std::filesystem::path writeProgram(const TempFolder& folder);

// Whether the handle of a set of sockets says that there is something to do.
bool isSignalled(std::intptr_t handle);
// Whether the system tells a connection that was broken off from one that was closed, when nothing is sent.
bool tellsResetFromClose();

}  // namespace trelvin::test
