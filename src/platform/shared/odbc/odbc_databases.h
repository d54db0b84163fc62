// Databases through ODBC, for every machine that has a driver manager. Texts are UTF-8 on the way in and out,
// whatever the driver wants them in, and hold no NUL.
//
// Kinds of fields: whole numbers are longs, those beyond 32 bits doubles, truth values Booleans, moments and
// days dates; everything else is text, of any length.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/database.h"

namespace trelvin {

// What the driver manager is to be given for a connection string of the program.
struct DriverConnection {
  DriverConnection(std::string text)
      : connectionString(std::move(text)) {}  // NOLINT(google-explicit-constructor)

  std::string connectionString;
  std::string probe{};    // run as soon as the connection stands; Open fails when it does
  std::string subject{};  // what descriptions of a failed Open begin with, such as the file's path
};

using ToDriver = std::function<DriverConnection(std::string_view connectionString)>;

// Connections and record sets. A record set works with the connections of this maker only, and always as a
// static cursor. Closing a connection closes the sets that were opened on it. `toDriver` may throw a Failure,
// which is Open's then.
std::unique_ptr<Databases> makeOdbcDatabases(ToDriver toDriver);

}  // namespace trelvin
