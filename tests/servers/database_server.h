// Real database servers, set up as an administrator would: a private one of each kind for a test program, in
// a temporary folder, gone with it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "fakes/temp_folder.h"
#include "scenarios/program_run.h"

namespace trelvin::test {

class DatabaseServer {
 public:
  DatabaseServer() = default;
  DatabaseServer(const DatabaseServer&) = delete;
  DatabaseServer& operator=(const DatabaseServer&) = delete;
  virtual ~DatabaseServer() = default;

  // What this machine lacks to run one; empty when it lacks nothing.
  [[nodiscard]] virtual std::string whatIsMissing() const = 0;

  // Starts the server unless it runs. Throws, with what it said, when it doesn't come up.
  void start();
  // Ends it at once, as a power cut would. What was committed is there again after the next start.
  void stop() { process_.reset(); }

  // A new database with the tables of data/, for the user that data sources name. Returns its name.
  std::string makeDatabase();
  // Runs a statement with all rights; what the server's own client prints for it, without headings.
  virtual std::string ask(const std::string& database, const std::string& sql) const = 0;

  // A database by keyword=value pairs of ODBC: the driver and where the server is. User and password are not
  // among them.
  [[nodiscard]] virtual std::vector<std::string> attributesOf(const std::string& database) const = 0;
  [[nodiscard]] std::string connectionString(const std::string& database) const;

  // May read and add rows, and nothing else.
  static constexpr const char* kUser = "trelvin";
  static constexpr const char* kPassword = "se;cret";
  // The password as a connection string has it.
  static constexpr const char* kBracedPassword = "{se;cret}";

 protected:
  // Makes the server's own files in its folder, which is its user's.
  virtual void install() = 0;
  [[nodiscard]] virtual RunningProcess::Options serverOptions() const = 0;
  [[nodiscard]] virtual bool answers() const = 0;
  virtual void load(const std::string& database) = 0;

  // A file of data/ where the server's user can read it, whoever the sources belong to.
  [[nodiscard]] std::string schemaFile(const char* name) const;
  // A command of the server's package, run to its end as the server's user. Throws when it fails.
  std::string runTool(const std::filesystem::path& tool, const std::vector<std::string>& arguments) const;
  [[nodiscard]] RunningProcess::Options command(const std::filesystem::path& tool,
                                                const std::vector<std::string>& arguments) const;

  TempFolder folder_;

 private:
  std::unique_ptr<RunningProcess> process_;
  bool isInstalled_ = false;
  int databases_ = 0;
};

// The kinds by their names, and the one server of each that the test program shares.
inline constexpr const char* kMariaDb = "MariaDB";
inline constexpr const char* kPostgreSql = "PostgreSQL";
DatabaseServer& databaseServer(const std::string& kind);

}  // namespace trelvin::test
