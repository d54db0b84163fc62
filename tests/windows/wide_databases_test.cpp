// What a database's wide text can be on Windows alone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fakes/temp_folder.h"
#include "platform/shared/odbc/odbc_databases.h"
#include "platform/windows/wide_text.h"

namespace trelvin::test {
namespace {

using Names = std::vector<std::string>;

class WideDatabasesTest : public testing::Test {
 protected:
  WideDatabasesTest() {
    const std::filesystem::path file = folder_ / "TrelvinData.mdb";
    std::filesystem::copy_file(std::filesystem::path(TRELVIN_DATABASES) / "TrelvinData.mdb", file);
    database_ = utf8Text(file.wstring());
  }

  TempFolder folder_;
  std::string database_;
  std::unique_ptr<Databases> databases_ =
      makeOdbcDatabases([](std::string_view text) { return std::string(text); });
  std::unique_ptr<Connection> connection_ = databases_->createConnection();
};

class StoredTextTest : public WideDatabasesTest {
 protected:
  StoredTextTest() { connection_->open("Driver={Microsoft Access Driver (*.mdb)};DBQ=" + database_ + ";"); }
  // Stores a text by its bytes; those of a lone half of a character reach the program as that half.
  std::string read(const std::string& hexBytes) {
    connection_->execute("INSERT INTO Sites (SiteName) VALUES (CAST(X'" + hexBytes + "' AS TEXT))");
    const auto rows = databases_->createRecordSet();
    rows->open("SELECT SiteName FROM Sites", *connection_, kStaticCursor);
    rows->moveLast();
    return rows->field("SiteName").toText();
  }
};

TEST_F(StoredTextTest, AHalfOfACharacterComesAsTheReplacementCharacter) {
  EXPECT_EQ(read("61EDA0BD62"), "a\uFFFDb");  // the first half
  EXPECT_EQ(read("61EDB88062"), "a\uFFFDb");  // the second one
  EXPECT_EQ(read("61EDA0BD"), "a\uFFFD");
  EXPECT_EQ(read("EDA0BD"), "\uFFFD");
}

TEST_F(StoredTextTest, AHalfOfACharacterMaySitWhereAPieceEnds) {
  std::string bytes;
  for (int count = 0; count < 1022; ++count) bytes += "78";
  const std::string before(1022, 'x');
  EXPECT_EQ(read(bytes + "EDA0BD"), before + "\uFFFD");
  EXPECT_EQ(read(bytes + "EDA0BD7979"), before + "\uFFFDyy");
}

// The data sources of the driver manager that the tests run with, for the duration of a test.
class DataSourcesTest : public WideDatabasesTest {
 protected:
  ~DataSourcesTest() override { std::filesystem::remove(file_); }

  // The manager takes each byte of its file for a character.
  void setSystem(const std::vector<std::u16string>& names) const {
    std::ofstream stream(file_, std::ios::binary);
    for (const std::u16string& name : names) {
      stream.put('[');
      for (const char16_t character : name) stream.put(static_cast<char>(character));
      stream << "]\nDriver=Microsoft Access Driver (*.mdb)\n";
    }
    if (!stream.flush()) throw std::runtime_error("can't write " + file_.string());
  }

 private:
  static std::filesystem::path odbcIni() {
    const char* const folder = std::getenv("ODBCSYSINI");
    if (folder == nullptr) throw std::runtime_error("ODBCSYSINI isn't set");
    return std::filesystem::path("Z:" + std::string(folder)) / "odbc.ini";
  }

  std::filesystem::path file_ = odbcIni();
};

TEST_F(DataSourcesTest, NamesComeWholeAndInTheirOwnCharacters) {
  setSystem({u"Sites", u"Größe é", std::u16string(200, u'n'), u"x"});
  EXPECT_EQ(databases_->systemDataSources(), (Names{"Sites", "Größe é", std::string(200, 'n'), "x"}));
}

TEST_F(DataSourcesTest, ASourceIsOpenedByANameInAnyCharacters) {
  setSystem({u"Größe é"});
  connection_->open("DSN=Größe é;DBQ=" + database_ + ";");
  EXPECT_TRUE(connection_->isOpen());
}

TEST_F(DataSourcesTest, WithoutSourcesThereAreNone) {
  setSystem({});
  EXPECT_EQ(databases_->systemDataSources(), Names{});
}

}  // namespace
}  // namespace trelvin::test
