#include "servers/database_server.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace trelvin::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* kAdministrator = "administrator";

// Whether the driver manager knows a driver of that name.
bool hasDriver(const std::string& name) {
  std::ifstream drivers("/etc/odbcinst.ini");
  for (std::string line; std::getline(drivers, line);) {
    if (line == "[" + name + "]") return true;
  }
  return false;
}

class MariaDb final : public DatabaseServer {
 public:
  [[nodiscard]] std::string whatIsMissing() const override {
    for (const char* file : {kServer, kInstaller, kClient}) {
      if (!fs::exists(file)) return std::string("there is no ") + file;
    }
    return hasDriver("MariaDB Unicode") ? "" : "there is no ODBC driver MariaDB Unicode";
  }
  std::string ask(const std::string& database, const std::string& sql) const override {
    return runTool(kClient,
                   {"--no-defaults", "--socket=" + socket(), "--user=root", "--batch", "--raw",
                    "--skip-column-names", "--default-character-set=utf8mb4", "--execute=" + sql, database});
  }
  [[nodiscard]] std::vector<std::string> attributesOf(const std::string& database) const override {
    return {"Driver=MariaDB Unicode", "SOCKET=" + socket(), "DATABASE=" + database};
  }

 protected:
  void install() override {
    runTool(kInstaller, {"--no-defaults", "--datadir=" + data(), "--auth-root-authentication-method=normal",
                         "--skip-test-db"});
  }
  [[nodiscard]] RunningProcess::Options serverOptions() const override {
    // Without a settings file a server is set up as badly for the program as it comes: case counts in names
    // of tables, backslashes are escapes, and the character set is latin1.
    return command(kServer,
                   {"--no-defaults", "--datadir=" + data(), "--socket=" + socket(), "--skip-networking",
                    "--pid-file=" + (folder_ / "pid").string(), "--innodb-buffer-pool-size=16M",
                    "--innodb-flush-log-at-trx-commit=2", "--sort-buffer-size=64K"});
  }
  [[nodiscard]] bool answers() const override {
    try {
      return ask("mysql", "SELECT 1") == "1\n";
    } catch (const std::runtime_error&) {
      return false;
    }
  }
  void load(const std::string& database) override {
    ask("mysql", "CREATE DATABASE " + database);
    ask(database, "source " + schemaFile("sites-mariadb.sql"));
    const std::string user = std::string("'") + kUser + "'@localhost";
    ask("mysql", "CREATE USER IF NOT EXISTS " + user + " IDENTIFIED BY '" + kPassword + "'");
    ask(database, "GRANT SELECT, INSERT ON " + database + ".* TO " + user);
  }

 private:
  static constexpr const char* kServer = "/usr/sbin/mariadbd";
  static constexpr const char* kInstaller = "/usr/bin/mariadb-install-db";
  static constexpr const char* kClient = "/usr/bin/mariadb";

  [[nodiscard]] std::string data() const { return (folder_ / "data").string(); }
  [[nodiscard]] std::string socket() const { return (folder_ / "socket").string(); }
};

class PostgreSql final : public DatabaseServer {
 public:
  [[nodiscard]] std::string whatIsMissing() const override {
    for (const char* file : {"initdb", "postgres", "psql"}) {
      if (!fs::exists(programs_ / file)) return std::string("there is no ") + file + " of PostgreSQL";
    }
    return hasDriver("PostgreSQL Unicode") ? "" : "there is no ODBC driver PostgreSQL Unicode";
  }
  std::string ask(const std::string& database, const std::string& sql) const override {
    return psql(database, {"--command=" + sql});
  }
  [[nodiscard]] std::vector<std::string> attributesOf(const std::string& database) const override {
    return {"Driver=PostgreSQL Unicode", "Servername=" + folder_.path().string(), "Port=5432",
            "Database=" + database};
  }

 protected:
  void install() override {
    ::setenv("PGPASSWORD", kPassword, 1);
    folder_.write("password", kPassword);
    runTool(programs_ / "initdb", {"--pgdata=" + data(), std::string("--username=") + kAdministrator,
                                   "--encoding=UTF8", "--locale=C.UTF-8", "--auth=scram-sha-256",
                                   "--pwfile=" + (folder_ / "password").string(), "--no-sync"});
  }
  [[nodiscard]] RunningProcess::Options serverOptions() const override {
    RunningProcess::Options options = command(
        programs_ / "postgres", {"-D", data(), "-k", folder_.path().string(), "-c", "listen_addresses=", "-c",
                                 "fsync=off", "-c", "standard_conforming_strings=off"});
    // Its own way of stopping at once, which leaves nothing behind in the system.
    options.endSignal = SIGQUIT;
    return options;
  }
  [[nodiscard]] bool answers() const override {
    try {
      return ask("postgres", "SELECT 1") == "1\n";
    } catch (const std::runtime_error&) {
      return false;
    }
  }
  void load(const std::string& database) override {
    ask("postgres", "CREATE DATABASE " + database);
    psql(database, {"--single-transaction", "--file=" + schemaFile("sites-postgresql.sql")});
    ask(database, std::string("DO $$ BEGIN IF NOT EXISTS (SELECT FROM pg_roles WHERE rolname = '") + kUser +
                      "') THEN CREATE ROLE " + kUser + " LOGIN PASSWORD '" + kPassword + "'; END IF; END $$");
    ask(database, std::string("GRANT SELECT, INSERT ON Sites, Data TO ") + kUser);
  }

 private:
  std::string psql(const std::string& database, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(),
                     {"--no-psqlrc", "--quiet", "--tuples-only", "--no-align", "--set=ON_ERROR_STOP=1",
                      "--host=" + folder_.path().string(), std::string("--username=") + kAdministrator,
                      "--dbname=" + database});
    return runTool(programs_ / "psql", arguments);
  }
  [[nodiscard]] std::string data() const { return (folder_ / "data").string(); }
  // Every version has a folder of its own; the last one found serves.
  static fs::path programFolder() {
    fs::path found;
    std::error_code none;
    for (const auto& version : fs::directory_iterator("/usr/lib/postgresql", none)) {
      if (fs::exists(version.path() / "bin/postgres")) found = version.path() / "bin";
    }
    return found;
  }

  fs::path programs_ = programFolder();
};

}  // namespace

void DatabaseServer::start() {
  if (process_) return;
  if (!isInstalled_) {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0 && ::chown(folder_.path().c_str(), kNobody, kNobody) != 0) {
      throw std::runtime_error("can't give the server its folder");
    }
    install();
    isInstalled_ = true;
  }
  process_ = std::make_unique<RunningProcess>(serverOptions());
  for (int looks = 0; looks < 300; ++looks) {
    if (answers()) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  process_->kill();
  throw std::runtime_error("the server does not come up: " + process_->wait().standardError);
}

std::string DatabaseServer::makeDatabase() {
  const std::string name = "sites" + std::to_string(++databases_);
  load(name);
  return name;
}

std::string DatabaseServer::connectionString(const std::string& database) const {
  std::string text;
  for (const std::string& attribute : attributesOf(database)) text += attribute + ";";
  return text + "UID=" + kUser + ";PWD=" + kBracedPassword + ";";
}

std::string DatabaseServer::schemaFile(const char* name) const {
  std::ostringstream text;
  text << std::ifstream(fs::path(TRELVIN_SOURCE_DIR) / "data" / name).rdbuf();
  return folder_.write(name, text.str()).string();
}

RunningProcess::Options DatabaseServer::command(const fs::path& tool,
                                                const std::vector<std::string>& arguments) const {
  return {.executable = tool,
          .arguments = arguments,
          .currentFolder = folder_.path(),
          .network = {},
          .asOrdinaryUser = true};
}

std::string DatabaseServer::runTool(const fs::path& tool, const std::vector<std::string>& arguments) const {
  const ProcessResult result = RunningProcess(command(tool, arguments)).wait();
  if (result.exitCode != 0) throw std::runtime_error(tool.string() + ": " + result.standardError);
  return result.standardOutput;
}

DatabaseServer& databaseServer(const std::string& kind) {
  static MariaDb mariaDb;
  static PostgreSql postgreSql;
  return kind == kMariaDb ? static_cast<DatabaseServer&>(mariaDb) : postgreSql;
}

}  // namespace trelvin::test
