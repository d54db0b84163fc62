#include "platform/linux/access_driver.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "core/text.h"
#include "odbc/store_fixture.h"

namespace trelvin {
namespace {

namespace fs = std::filesystem;
using test::failureOf;

// Without the rights of the superuser, whom no file mode binds, for the length of a test.
class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    if (wasRoot_) active_ = seteuid(kNobody) == 0;
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
  ~WithoutPrivileges() {
    if (wasRoot_ && seteuid(0) != 0) std::abort();
  }
  [[nodiscard]] bool active() const { return active_; }

 private:
  static constexpr uid_t kNobody = 65534;
  bool wasRoot_ = geteuid() == 0;
  bool active_ = !wasRoot_;
};

class AccessDriverTest : public test::StoreTest {
 protected:
  void SetUp() override {
    databases_ = makeOdbcDatabases([](std::string_view text) {
      return accessDriverString(text, [](std::string_view path) { return std::string(path); });
    });
  }
  void TearDown() override { fs::permissions(folder_.path(), fs::perms::owner_all); }

  static std::string accessString(const fs::path& file) {
    return "DBQ=" + file.string() + ";Driver={Microsoft Access Driver (*.mdb)};";
  }
  std::unique_ptr<Connection> openedByAccess(const fs::path& file) {
    auto connection = databases_->createConnection();
    connection->open(accessString(file));
    return connection;
  }
  Failure failureToOpen(const std::string& text) {
    auto connection = databases_->createConnection();
    const Failure failure = failureOf([&] { connection->open(text); });
    EXPECT_FALSE(connection->isOpen());
    return failure;
  }
  static void addSite(Connection& connection) {
    connection.execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  }
  std::int32_t siteCount(Connection& connection) {
    return rowsOf("SELECT * FROM Sites", connection)->recordCount();
  }
  [[nodiscard]] int filesInFolder() const {
    return static_cast<int>(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }
  // A database of this folder, moved to another name.
  fs::path installedAs(const std::string& name) {
    const fs::path file = installed("TrelvinData.mdb");
    fs::create_directories((folder_ / name).parent_path());
    fs::rename(file, folder_ / name);
    return folder_ / name;
  }
};

TEST_F(AccessDriverTest, OpensTheFileThatDbqNamesAndLeavesNothingBesideItWhenItCloses) {
  const fs::path file = installed("TrelvinData.mdb");
  auto connection = openedByAccess(file);
  addSite(*connection);
  EXPECT_EQ(siteCount(*connection), 1);
  connection->close();
  EXPECT_EQ(filesInFolder(), 1);
  EXPECT_EQ(siteCount(*openedByAccess(file)), 1);
}

TEST_F(AccessDriverTest, KnowsTheAccessDriverInAnyCaseAndPlaceAndWithBlanksAround) {
  const std::string file = installed("TrelvinData.mdb").string();
  for (const std::string& text : {"DRIVER={MICROSOFT ACCESS DRIVER (*.MDB)};DBQ=" + file,
                                  "dbq = " + file + " ; driver = { microsoft access driver (*.mdb) } ; ",
                                  "Driver=Microsoft Access Driver (*.mdb);UID=admin;DBQ={" + file + "};",
                                  "DBQ=" + file + ";Driver={Microsoft Access Driver (*.mdb)}; "}) {
    SCOPED_TRACE(text);
    auto connection = databases_->createConnection();
    connection->open(text);
    addSite(*connection);
  }
  EXPECT_EQ(siteCount(*openedByAccess(file)), 4);
}

TEST_F(AccessDriverTest, TurnsThePathIntoANativeOne) {
  const fs::path file = installed("TrelvinData.mdb");
  std::string asked;
  const DriverConnection target = accessDriverString(
      "DBQ=Z:\\a b\\x.mdb;Driver={Microsoft Access Driver (*.mdb)};", [&](std::string_view path) {
        asked = path;
        return file.string();
      });
  EXPECT_EQ(asked, "Z:\\a b\\x.mdb");
  EXPECT_NE(target.connectionString.find("Database=" + file.string() + ";"), std::string::npos);
}

TEST_F(AccessDriverTest, EveryOtherStringStaysAsItIsLessTheBlanksAtItsEnd) {
  for (const char* text :
       {"DSN=store;User Id=a;", "Driver={SQL Server};Server=x", "DBQ=x.mdb", " DSN = a ", ""}) {
    const DriverConnection target = accessDriverString(text, [](std::string_view) -> std::string {
      ADD_FAILURE() << "no path is asked for";
      return "";
    });
    EXPECT_EQ(target.connectionString, trimmedRight(text));
    EXPECT_EQ(target.probe, "");
  }
}

TEST_F(AccessDriverTest, AMissingFileIsNamedAndNotMade) {
  const fs::path file = folder_ / "None.mdb";
  const Failure failure = failureToOpen(accessString(file));
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_EQ(failure.description(), file.string() + ": there is no such database file.");
  EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(AccessDriverTest, AStringWithoutAFileFails) {
  EXPECT_EQ(failureToOpen("Driver={Microsoft Access Driver (*.mdb)};").number(), error_number::kUnspecified);
  EXPECT_EQ(failureToOpen("DBQ=;Driver={Microsoft Access Driver (*.mdb)};").number(),
            error_number::kUnspecified);
}

TEST_F(AccessDriverTest, AFolderIsNoDatabase) {
  const Failure failure = failureToOpen(accessString(folder_.path()));
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("is not a file"), std::string::npos) << failure.description();
}

TEST_F(AccessDriverTest, AFileThatIsNoDatabaseIsRefusedAtOnceAndLeftAlone) {
  const std::string text = "a file of another kind, longer than any header " + std::string(2000, 'x');
  for (const std::string& bytes : {text, std::string("short"), std::string()}) {
    const fs::path file = folder_.write("Other.mdb", bytes);
    const Failure failure = failureToOpen(accessString(file));
    EXPECT_EQ(failure.number(), error_number::kUnspecified);
    EXPECT_TRUE(failure.description().starts_with(file.string() + ": ")) << failure.description();
    EXPECT_NE(failure.description().find("database"), std::string::npos) << failure.description();
    EXPECT_EQ(folder_.read("Other.mdb"), bytes);
    EXPECT_EQ(filesInFolder(), 1);
  }
}

TEST_F(AccessDriverTest, PathsMayHoldBlanksBracesSemicolonsAndAnyLetters) {
  for (const char* name :
       {"with blanks/a b.mdb", "with {braces}/{x}.mdb", "with;semicolon/a;b.mdb", "größe/網站.mdb",
        "per%20cent/100%.mdb", "marks/what?#&.mdb", "mixed; {ü} %41?/x.mdb", "quotes/'a' \"b\".mdb"}) {
    SCOPED_TRACE(name);
    const fs::path file = installedAs(name);
    auto connection = openedByAccess(file);
    addSite(*connection);
    connection->close();
    EXPECT_EQ(siteCount(*openedByAccess(file)), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1);
  }
}

TEST_F(AccessDriverTest, APathOfNearlyFiveHundredBytesIsOpened) {
  const std::string part(200, 'p');
  const fs::path file = installedAs(part + "/" + part + "/x.mdb");
  addSite(*openedByAccess(file));
  EXPECT_EQ(siteCount(*openedByAccess(file)), 1);
}

TEST_F(AccessDriverTest, ALongerPathIsRefusedWithItsReason) {
  const std::string part(200, 'p');
  const fs::path file = installedAs(part + "/" + part + "/" + part + "/x.mdb");
  const Failure failure = failureToOpen(accessString(file));
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_EQ(failure.description(), file.string() + ": the path is too long for the database driver.");
}

TEST_F(AccessDriverTest, WhatWasStoredSurvivesAKilledProcess) {
  const fs::path file = installed("TrelvinData.mdb");
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    auto connection = openedByAccess(file);
    for (int number = 0; number < 100; ++number) addSite(*connection);
    std::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  auto connection = openedByAccess(file);
  EXPECT_EQ(siteCount(*connection), 100);
  addSite(*connection);
  connection->close();
  EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(AccessDriverTest, ACopyOfAClosedDatabaseIsWhole) {
  const fs::path file = installed("TrelvinData.mdb");
  addSite(*openedByAccess(file));
  fs::copy_file(file, folder_ / "Copy.mdb");
  EXPECT_EQ(siteCount(*openedByAccess(folder_ / "Copy.mdb")), 1);
}

TEST_F(AccessDriverTest, TwoConnectionsMayUseOneFile) {
  const fs::path file = installed("TrelvinData.mdb");
  auto first = openedByAccess(file);
  auto second = openedByAccess(file);
  addSite(*first);
  addSite(*second);
  EXPECT_EQ(siteCount(*first), 2);
  first->close();
  addSite(*second);
  EXPECT_EQ(siteCount(*second), 3);
  second->close();
  EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(AccessDriverTest, ADatabaseThatAnotherHoldsLockedFailsInTheEndAndIsUsableAfterwards) {
  const fs::path file = installed("TrelvinData.mdb");
  auto first = openedByAccess(file);
  auto second = openedByAccess(file);
  first->execute("BEGIN IMMEDIATE");
  const Failure failure = failureOf([&] { addSite(*second); });
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("locked"), std::string::npos) << failure.description();
  EXPECT_EQ(siteCount(*second), 0) << "reading is not held up";
  first->execute("COMMIT");
  addSite(*second);
}

// A file that the process may not write, in a folder that it may or may not write.
class ReadOnlyDatabaseTest : public AccessDriverTest {
 protected:
  void protect(const fs::path& file, bool folderToo) {
    fs::permissions(file, fs::perms::owner_read | fs::perms::others_read | fs::perms::group_read);
    fs::permissions(folder_.path(), folderToo ? fs::perms(0555) : fs::perms(0777));
  }
  void expectReadingOnly(const fs::path& file) {
    auto connection = openedByAccess(file);
    EXPECT_EQ(siteCount(*connection), 1);
    const Failure failure = failureOf([&] { addSite(*connection); });
    EXPECT_EQ(failure.number(), error_number::kUnspecified);
    EXPECT_NE(failure.description().find("readonly"), std::string::npos) << failure.description();
  }
};

TEST_F(ReadOnlyDatabaseTest, AFreshOneIsReadAndRefusesToBeWritten) {
  for (const bool folderToo : {false, true}) {
    const fs::path file = installed("TrelvinData.mdb");
    auto plain = databases_->createConnection();
    plain->open(connectionString(file));
    addSite(*plain);
    plain->close();
    protect(file, folderToo);
    {
      const WithoutPrivileges user;
      ASSERT_TRUE(user.active());
      expectReadingOnly(file);
    }
    EXPECT_EQ(filesInFolder(), 1);
    fs::permissions(folder_.path(), fs::perms::owner_all);
    fs::remove(file);
  }
}

TEST_F(ReadOnlyDatabaseTest, AUsedOneIsReadAndRefusesToBeWritten) {
  for (const bool folderToo : {false, true}) {
    SCOPED_TRACE(folderToo);
    const fs::path file = installed("TrelvinData.mdb");
    addSite(*openedByAccess(file));
    protect(file, folderToo);
    {
      const WithoutPrivileges user;
      ASSERT_TRUE(user.active());
      expectReadingOnly(file);
    }
    EXPECT_EQ(filesInFolder(), 1);
    fs::permissions(folder_.path(), fs::perms::owner_all);
    fs::remove(file);
  }
}

TEST_F(ReadOnlyDatabaseTest, OneThatAnotherAccountIsWritingIsRefusedWhereTheLogCanNotBeShared) {
  const fs::path file = installed("TrelvinData.mdb");
  auto writer = openedByAccess(file);
  addSite(*writer);
  protect(file, true);
  const WithoutPrivileges user;
  ASSERT_TRUE(user.active());
  const Failure failure = failureToOpen(accessString(file));
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("unfinished"), std::string::npos) << failure.description();
}

TEST_F(ReadOnlyDatabaseTest, OneThatCanNotEvenBeReadSaysSo) {
  const fs::path file = installed("TrelvinData.mdb");
  fs::permissions(file, fs::perms::none);
  fs::permissions(folder_.path(), fs::perms(0777));
  const WithoutPrivileges user;
  ASSERT_TRUE(user.active());
  const Failure failure = failureToOpen(accessString(file));
  EXPECT_EQ(failure.number(), error_number::kUnspecified);
  EXPECT_NE(failure.description().find("ermission denied"), std::string::npos) << failure.description();
}

}  // namespace
}  // namespace trelvin
