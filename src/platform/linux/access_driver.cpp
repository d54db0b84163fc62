#include "platform/linux/access_driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "core/err.h"
#include "core/text.h"
#include "platform/shared/odbc/connection_string.h"

namespace trelvin {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
  throw Failure(error_number::kUnspecified, file + ": " + reason);
}

bool permitted(const fs::path& path, int mode) {
  return faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

// What the driver would only call a failed connection.
void requireDatabaseFile(const std::string& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (status.type() == fs::file_type::not_found) refuse(file, "there is no such database file.");
  if (status.type() == fs::file_type::none) refuse(file, "can't be looked at: " + error.message() + ".");
  if (!fs::is_regular_file(status)) refuse(file, "is not a file.");
  if (!permitted(file, R_OK)) refuse(file, "can't be read: " + std::generic_category().message(errno) + ".");
  if (fs::file_size(file, error) == 0) refuse(file, "the file is empty and no database.");
}

// Whether the file says of itself that its latest changes may lie in a log beside it.
bool usesLog(const std::string& file) {
  constexpr std::size_t kReadVersion = 19;
  constexpr char kWithLog = 2;
  std::array<char, kReadVersion + 1> header{};
  std::ifstream(file, std::ios::binary).read(header.data(), header.size());
  return header[kReadVersion] == kWithLog;
}

bool hasUnfinishedLog(const std::string& file) {
  std::error_code error;
  const auto size = fs::file_size(file + "-wal", error);
  return !error && size > 0;
}

// The file's name as a URI, for what a plain name can't express in a connection string.
std::string uriOf(const std::string& file, const std::string& query) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char character : file) {
    if (std::string_view(";%?#").find(character) == std::string_view::npos) {
      uri += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      uri.append("%").append(1, kDigits[byte / 16]).append(1, kDigits[byte % 16]);
    }
  }
  return uri + query;
}

std::string driverString(const std::string& file, const std::string& database, const std::string& journal) {
  // The driver would cut a longer name and look for another file.
  constexpr std::size_t kLongestName = 504;
  if (database.size() > kLongestName) refuse(file, "the path is too long for the database driver.");
  return "Driver=SQLite3;Database=" + database + ";NoCreat=1;Timeout=" + std::to_string(kLockTimeout) +
         ";SyncPragma=NORMAL;" + journal;
}

// A file that is still in the journal mode with a log wants its log and the log's index beside it even to be
// read, and a reader who can't write would leave both behind in a form that locks the file's owner out. With
// nothing in the log the file is complete and is read for itself.
std::string readingString(const std::string& file, bool folderIsWritable) {
  if (!usesLog(file)) return driverString(file, uriOf(file, "?mode=ro"), "");
  if (!hasUnfinishedLog(file)) return driverString(file, uriOf(file, "?immutable=1"), "");
  if (!folderIsWritable) {
    refuse(file, "changes to it lie unfinished in a log beside it, and its folder can't be written.");
  }
  return driverString(file, uriOf(file, "?mode=ro"), "");
}

std::string stringForFile(const std::string& file) {
  const bool folderIsWritable = permitted(fs::path(file).parent_path(), W_OK);
  if (!folderIsWritable || !permitted(file, W_OK)) return readingString(file, folderIsWritable);
  const bool plain = file.find(';') == std::string::npos;
  return driverString(file, plain ? file : uriOf(file, ""), "JournalMode=WAL;");
}

bool namesAccessDriver(const std::vector<Attribute>& attributes) {
  return equalsIgnoringCase(trimmed(attributeOf(attributes, "Driver")), "Microsoft Access Driver (*.mdb)");
}

}  // namespace

DriverConnection accessDriverString(std::string_view connectionString,
                                    const std::function<std::string(std::string_view)>& toNativePath) {
  const std::vector<Attribute> attributes = attributesOf(connectionString);
  if (!namesAccessDriver(attributes)) return std::string(trimmedRight(connectionString));
  const std::string path = attributeOf(attributes, "DBQ");
  if (path.empty()) throw Failure(error_number::kUnspecified, "The connection string names no file in DBQ.");
  const std::string file = toNativePath(path);
  requireDatabaseFile(file);
  DriverConnection connection = stringForFile(file);
  // SQLite looks into a file no earlier than a statement makes it.
  connection.probe = "SELECT COUNT(*) FROM sqlite_master";
  connection.subject = file;
  return connection;
}

}  // namespace trelvin
