// What the driver manager tells about data sources.
#include "fakes/data_sources.h"

#include <gtest/gtest.h>

#include "odbc/store_fixture.h"

namespace trelvin {
namespace {

using test::dataSources;
using test::sqliteSource;
using Names = std::vector<std::string>;

class DataSourcesTest : public test::StoreTest {
 protected:
  DataSourcesTest() { dataSources.clear(); }
  ~DataSourcesTest() override { dataSources.clear(); }
  Names names() { return databases_->systemDataSources(); }
};

TEST_F(DataSourcesTest, TheSystemsSourcesComeInTheirOrder) {
  dataSources.setSystem(sqliteSource("Sites") + sqliteSource("Archive") + sqliteSource("Old sites"));
  EXPECT_EQ(names(), (Names{"Sites", "Archive", "Old sites"}));
}

TEST_F(DataSourcesTest, SourcesOfAUserAreLeftOut) {
  dataSources.setUser(sqliteSource("Mine"));
  EXPECT_EQ(names(), Names{});
  dataSources.setSystem(sqliteSource("Sites"));
  EXPECT_EQ(names(), (Names{"Sites"}));
}

TEST_F(DataSourcesTest, WithoutSourcesThereAreNone) {
  EXPECT_EQ(names(), Names{});
}

TEST_F(DataSourcesTest, TheyAreReadAnewEachTime) {
  dataSources.setSystem(sqliteSource("Sites"));
  EXPECT_EQ(names(), (Names{"Sites"}));
  dataSources.setSystem(sqliteSource("Sites") + sqliteSource("More"));
  EXPECT_EQ(names(), (Names{"Sites", "More"}));
}

TEST_F(DataSourcesTest, NamesOfAnyLengthAndInAnyLanguageComeWhole) {
  const std::string longName(200, 'n');
  dataSources.setSystem(sqliteSource("Größentabellen") + sqliteSource(longName) + sqliteSource("x"));
  EXPECT_EQ(names(), (Names{"Größentabellen", longName, "x"}));
}

TEST_F(DataSourcesTest, AllOfManyAreFound) {
  std::string file;
  for (int number = 0; number < 300; ++number) file += sqliteSource("Source" + std::to_string(number));
  dataSources.setSystem(file);
  const Names found = names();
  ASSERT_EQ(found.size(), 300U);
  EXPECT_EQ(found.back(), "Source299");
}

TEST_F(DataSourcesTest, ASourceThatIsListedCanBeOpenedByItsName) {
  dataSources.setSystem(sqliteSource("Sites", installed("TrelvinData.mdb")));
  ASSERT_EQ(names(), (Names{"Sites"}));
  auto connection = databases_->createConnection();
  connection->open("DSN=Sites;");
  EXPECT_TRUE(rowsOf("SELECT * FROM Sites", *connection)->eof());
}

}  // namespace
}  // namespace trelvin
