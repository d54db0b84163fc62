// Tests that run against each kind of server.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "servers/database_server.h"

namespace trelvin::test {

// Starts the server of the kind that a test is run for, and makes a database on it. Skips the test where the
// server isn't installed; with TRELVIN_REQUIRE_SERVERS in the environment that is a failure.
class ServerUnderTest {
 public:
  explicit ServerUnderTest(const std::string& kind) : server(databaseServer(kind)) {
    missing = server.whatIsMissing();
    if (!missing.empty()) return;
    server.start();
    database = server.makeDatabase();
  }

  DatabaseServer& server;
  std::string missing;
  std::string database;
};

}  // namespace trelvin::test

// First statement of SetUp in a fixture that has such a server.
#define TRELVIN_SKIP_WITHOUT(serverUnderTest)                                                   \
  if (!(serverUnderTest).missing.empty()) {                                                     \
    if (std::getenv("TRELVIN_REQUIRE_SERVERS") != nullptr) FAIL() << (serverUnderTest).missing; \
    GTEST_SKIP() << "Not tested, the server is not installed: " << (serverUnderTest).missing;   \
  }                                                                                             \
  static_assert(true)
