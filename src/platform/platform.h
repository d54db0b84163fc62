// Everything that the program asks of a machine, as one set. Tests put a decorator or a fake over a member.
#pragma once

#include <functional>
#include <memory>

#include "platform/application.h"
#include "platform/database.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/metabase.h"
#include "platform/ntfs.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/shell.h"
#include "platform/socket.h"

namespace trelvin {

struct Platform {
  std::unique_ptr<Application> application;
  std::unique_ptr<Clock> clock;
  std::unique_ptr<Databases> databases;
  std::unique_ptr<Dialogs> dialogs;
  std::unique_ptr<Events> events;
  std::unique_ptr<FileSystem> files;
  std::unique_ptr<Metabase> metabase;
  std::unique_ptr<Opener> opener;
  std::unique_ptr<ProfileFiles> profile;
  std::unique_ptr<Registry> registry;
  std::unique_ptr<Shell> shell;
  std::unique_ptr<Sockets> sockets;
  // Makes one of the controls that stand on the main window.
  std::function<std::unique_ptr<NtfsControl>()> createNtfsControl;
};

// The set in force; empty until main or a test fills it.
Platform& platform();

}  // namespace trelvin
