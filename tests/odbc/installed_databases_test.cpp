// The databases as they are installed, through the statements that the program runs on them.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "odbc/store_fixture.h"

namespace trelvin {
namespace {

class InstalledDatabasesTest : public test::StoreTest {
 protected:
  std::vector<std::string> column(std::string_view sql, std::string_view name, Connection& connection) {
    std::vector<std::string> values;
    for (auto rows = rowsOf(sql, connection); !rows->eof(); rows->moveNext()) {
      const Value value = rows->field(name);
      values.push_back(value.isNull() ? "Null" : value.toText());
    }
    return values;
  }
};

constexpr const char* kReadable =
    "((Class <> 'IIsCertMapper' AND Class <> 'IIsFilters' AND Class <> 'IIsFilter') OR Class IS Null)";

TEST_F(InstalledDatabasesTest, TheNewestSiteIsTheLastRow) {
  auto data = opened(installed("TrelvinData.mdb"));
  for (int number = 1; number <= 40; ++number) {
    data->execute("INSERT INTO Sites (SiteName, Type) Values('" + std::to_string(100 - number) + "','Ftp')");
    auto rows = rowsOf("SELECT * FROM Sites", *data);
    rows->moveLast();
    ASSERT_EQ(rows->field("ID").toLong(), number);
  }
}

TEST_F(InstalledDatabasesTest, TheNumberOfASiteIsNeverGivenTwice) {
  auto data = opened(installed("TrelvinData.mdb"));
  data->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  data->execute("INSERT INTO Sites (SiteName, Type) Values('b','Web')");
  data->execute("DELETE FROM Sites WHERE ID = 2");
  data->execute("INSERT INTO Sites (SiteName, Type) Values('c','Web')");
  EXPECT_EQ(column("SELECT * FROM Sites", "ID", *data), (std::vector<std::string>{"1", "3"}));
}

TEST_F(InstalledDatabasesTest, ASiteIsDatedWithTheLocalTimeOfItsStoring) {
  auto data = opened(installed("TrelvinData.mdb"));
  const std::time_t before = std::time(nullptr);
  data->execute("INSERT INTO Sites (SiteName, Type) Values('a','Web')");
  const std::time_t after = std::time(nullptr);
  std::tm stored = fieldOf("SELECT * FROM Sites", "DateTime", *data).date().parts;
  const std::time_t moment = std::mktime(&stored);
  EXPECT_GE(moment, before);
  EXPECT_LE(moment, after);
}

TEST_F(InstalledDatabasesTest, SitesAreFoundByTypeInAnyCase) {
  auto data = opened(installed("TrelvinData.mdb"));
  data->execute("INSERT INTO Sites (SiteName, Type) Values('a','Ftp')");
  EXPECT_EQ(rowsOf("SELECT * FROM SITES WHERE (Type = 'FTP') ", *data)->recordCount(), 1);
  EXPECT_EQ(rowsOf("SELECT * FROM SITES WHERE (Type = 'Web') ", *data)->recordCount(), 0);
}

TEST_F(InstalledDatabasesTest, ANullClassPassesTheClassFilterAndTheThreeClassesDoNot) {
  auto data = opened(installed("TrelvinData.mdb"));
  data->execute(
      "INSERT INTO DATA (SiteNumber, Location, Name, ObjectValue, DataType )  VALUES (1, '', "
      "'ServerBindings', ':80:\r\n', 8204)");
  for (const char* name : {"IIsWebServer", "IIsCertMapper", "IIsFilters", "IIsFilter", "IISFILTER"}) {
    data->execute(std::string("INSERT INTO Data (SiteNumber, Location, Class) Values (1, '', '") + name +
                  "')");
  }
  EXPECT_EQ(
      column(std::string("SELECT * FROM DATA WHERE (SiteNumber = 1 AND ") + kReadable + ")", "Class", *data),
      (std::vector<std::string>{"Null", "IIsWebServer"}));
}

TEST_F(InstalledDatabasesTest, ASitesRowsComeParentFirstThenByNameDownwardsWithNullLastThenInOrderOfStoring) {
  auto data = opened(installed("TrelvinData.mdb"));
  const auto add = [&](const char* location, const char* localPath, const char* name) {
    data->execute(std::string("INSERT INTO Data (SiteNumber, Location, LocalPath, Name) Values (3, '") +
                  location + "', " + localPath + ", '" + name + "')");
  };
  add("/ROOT/images/small", "'small'", "1");
  add("/ROOT/images", "'images'", "2");
  add("", "NULL", "3");
  add("/ROOT", "'ROOT'", "4");
  add("", "'12'", "5");
  add("", "NULL", "6");
  add("/ROOT/IMAGES", "''", "7");
  add("/ROOT", "'ROOT'", "8");
  add("", "''", "9");
  EXPECT_EQ(column(std::string("SELECT * FROM DATA WHERE (SiteNumber = 3 AND ") + kReadable +
                       ") ORDER BY Location, LocalPath DESC, ID ",
                   "Name", *data),
            (std::vector<std::string>{"5", "9", "3", "6", "4", "8", "2", "7", "1"}));
}

TEST_F(InstalledDatabasesTest, TheInProcessSettingTakesTheIsolationAndTheWordsTrueAndFalse) {
  auto data = opened(installed("TrelvinData.mdb"));
  for (const char* value : {"0", "1", "2", "True", "False"}) {
    data->execute(
        std::string("INSERT INTO Data (SiteNumber , Location, LocalPath, AppPath, AppInOutProc, Name, "
                    "Class, DataType, StringValue, AppPoolName) Values(1, '/ROOT', 'ROOT','/ROOT',") +
        value + ", 'Path', 'IIsWebVirtualDir', 8, 'D:\\Web', 'Pool') ");
  }
  EXPECT_EQ(column("SELECT * FROM Data", "AppInOutProc", *data),
            (std::vector<std::string>{"0", "1", "2", "1", "0"}));
}

TEST_F(InstalledDatabasesTest, RowsOfOneSiteAreFoundWithoutReadingTheOthers) {
  auto data = opened(installed("TrelvinData.mdb"));
  const std::string plan =
      fieldOf(
          std::string("EXPLAIN QUERY PLAN SELECT * FROM DATA WHERE (SiteNumber = 3 AND ") + kReadable + ")",
          "detail", *data)
          .toText();
  EXPECT_NE(plan.find("DataOfSite"), std::string::npos) << plan;
}

TEST_F(InstalledDatabasesTest, TheWorkingRowsOfASiteAreToldApartByWhatIsNotNull) {
  auto settings = opened(installed("Trelvin.mdb"));
  settings->execute(
      "INSERT INTO tmpSettings (SiteID, ListIndex, Folder, Directory) VALUES (0,1,'/ROOT','D:\\b') ");
  settings->execute(
      "INSERT INTO tmpSettings (SiteID, ListIndex, Folder, Directory) VALUES (0,0,'/ROOT/x','D:\\a') ");
  settings->execute("INSERT INTO tmpSettings (SiteID, ListIndex, OldIP, NewIP) VALUES (0,0,':80:',':81:')");
  settings->execute(
      "INSERT INTO tmpSettings (SiteID, ListIndex, OldSSLIP, NewSSLIP) VALUES (0,0,':443:',':444:')");
  EXPECT_EQ(column("SELECT * FROM tmpSettings WHERE (SiteID = 0 AND Folder IS NOT NULL) ORDER BY ListIndex",
                   "Directory", *settings),
            (std::vector<std::string>{"D:\\a", "D:\\b"}));
  EXPECT_EQ(column("SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldIP IS NOT NULL) ORDER BY ListIndex",
                   "NewIP", *settings),
            (std::vector<std::string>{":81:"}));
  EXPECT_EQ(column("SELECT * FROM tmpSettings WHERE (SiteID = 0 AND OldSSLIP IS NOT NULL) ORDER BY ListIndex",
                   "NewSSLIP", *settings),
            (std::vector<std::string>{":444:"}));
  settings->execute("DELETE FROM tmpSettings");
  EXPECT_EQ(rowsOf("SELECT * FROM tmpSettings", *settings)->recordCount(), 0);
}

TEST_F(InstalledDatabasesTest, WhetherADirectoryIsCopiedIsATruthValue) {
  auto settings = opened(installed("Trelvin.mdb"));
  int number = 0;
  for (const char* flag : {"True", "False", "1", "0", "-1"}) {
    settings->execute("INSERT INTO tmpFilesToCopy (ListNum, DirNum, FileName, Copy) VALUES (0," +
                      std::to_string(number++) + ",'D:\\Web'," + flag + ") ");
  }
  EXPECT_EQ(column("SELECT * FROM tmpFilesToCopy  WHERE ListNum = 0  ORDER BY DirNum ", "Copy", *settings),
            (std::vector<std::string>{"True", "False", "True", "False", "True"}));
}

TEST_F(InstalledDatabasesTest, TheTemplateIsEmptyAndHasTheDataDatabasesTables) {
  auto backup = opened(installed("ForBackups.mdb"));
  auto data = opened(installed("TrelvinData.mdb"));
  EXPECT_TRUE(rowsOf("SELECT * FROM Sites", *backup)->eof());
  EXPECT_TRUE(rowsOf("SELECT * FROM Data", *backup)->eof());
  const char* const tables = "SELECT sql FROM sqlite_master ORDER BY name";
  EXPECT_EQ(column(tables, "sql", *backup), column(tables, "sql", *data));
}

// First column of the table of the metabase's properties.
std::set<std::string> metabaseProperties() {
  std::ifstream table(TRELVIN_SOURCE_DIR "/data/metabase-properties.csv");
  std::set<std::string> names;
  for (std::string line; std::getline(table, line);) names.insert(line.substr(0, line.find(',')));
  return names;
}

TEST_F(InstalledDatabasesTest, EveryExclusionIsAPropertyOfTheMetabaseSpelledAsItsSchemaDoes) {
  auto settings = opened(installed("Trelvin.mdb"));
  const std::set<std::string> known = metabaseProperties();
  ASSERT_GT(known.size(), 300U);
  const auto names = column("Select * FROM ExcludedExportParameters", "PName", *settings);
  EXPECT_FALSE(names.empty());
  for (const std::string& name : names) EXPECT_TRUE(known.contains(name)) << name;
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size())
      << "one stands there twice";
}

TEST_F(InstalledDatabasesTest, WhatIsSecretOrSetByTheTransferIsExcludedAndSettingsAreNot) {
  auto settings = opened(installed("Trelvin.mdb"));
  const auto names = column("Select * FROM ExcludedExportParameters", "PName", *settings);
  const auto excluded = [&](const char* name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  for (const char* name :
       {"KeyType", "Path", "AppRoot", "AppIsolated", "ServerState", "AdminACL", "SSLCertHash",
        "AnonymousUserPass", "UNCPassword", "LogOdbcPassword", "WAMUserPass", "ADConnectionsPassword"}) {
    EXPECT_TRUE(excluded(name)) << name;
  }
  for (const char* name :
       {"AppPoolId", "ServerBindings", "SecureBindings", "ServerComment", "ScriptMaps", "HttpCustomHeaders",
        "AppFriendlyName", "IPSecurity", "MimeMap", "AnonymousUserName"}) {
    EXPECT_FALSE(excluded(name)) << name;
  }
}

}  // namespace
}  // namespace trelvin
