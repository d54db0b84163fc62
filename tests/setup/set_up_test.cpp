#include "setup/set_up.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "core/err.h"

namespace trelvin::setup {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// Files of which only the names are kept.
class NamedFiles final : public FileSystem {
 public:
  [[nodiscard]] bool fileExists(std::string_view path) const override {
    return names.contains(std::string(path));
  }
  [[nodiscard]] bool folderExists(std::string_view /*path*/) const override { return true; }
  void createFolder(std::string_view /*path*/) override {}
  void copyFile(std::string_view /*source*/, std::string_view /*destination*/) override {}
  void deleteFile(std::string_view path) override { names.erase(std::string(path)); }
  void setAttributes(std::string_view /*path*/, int /*attributes*/) override {}
  [[nodiscard]] std::vector<std::string> fileNames(std::string_view /*folder*/) const override { return {}; }
  [[nodiscard]] std::vector<std::string> folderNames(std::string_view /*folder*/) const override {
    return {};
  }
  void appendText(std::string_view /*path*/, std::string_view /*bytes*/) override {}
  void writeText(std::string_view /*path*/, std::string_view /*bytes*/) override {}

  std::set<std::string> names;
};

// Databases that write down what is run on them.
class RecordedDatabases final : public Databases {
 public:
  std::unique_ptr<Connection> createConnection() override {
    return std::make_unique<RecordedConnection>(*this);
  }
  std::unique_ptr<RecordSet> createRecordSet() override { return nullptr; }
  std::vector<std::string> systemDataSources() override { return {}; }

  std::vector<std::string> done;
  std::string refused;  // fails when a statement holds it

 private:
  class RecordedConnection final : public Connection {
   public:
    explicit RecordedConnection(RecordedDatabases& all) : all_(all) {}
    void open(std::string_view connectionString) override { note("open " + std::string(connectionString)); }
    void close() override { note("close"); }
    [[nodiscard]] bool isOpen() const override { return true; }
    void execute(std::string_view sql) override { note(std::string(sql)); }

   private:
    void note(const std::string& text) {
      if (!all_.refused.empty() && text.find(all_.refused) != std::string::npos) {
        throw Failure(error_number::kUnspecified, "no " + all_.refused);
      }
      all_.done.push_back(text);
    }
    RecordedDatabases& all_;
  };
};

class SetUpTest : public testing::Test {
 protected:
  bool setUpAll(const std::vector<Database>& wanted) {
    return setUp("C:\\Trelvin", wanted,
                 {.files = files_,
                  .databases = databases_,
                  .create = [this](const std::string& path) { create(path); },
                  .connectionString = [](const std::string& path) { return "to " + path; }},
                 told_);
  }
  void create(const std::string& path) {
    if (noDriver_) throw Failure(error_number::kUnspecified, "there is no driver");
    files_.names.insert(path);
  }

  NamedFiles files_;
  RecordedDatabases databases_;
  bool noDriver_ = false;
  std::ostringstream told_;
};

TEST_F(SetUpTest, ADatabaseIsMadeAndFilledInOrder) {
  EXPECT_TRUE(setUpAll({{"a.mdb", {"CREATE TABLE T (a TEXT);", "INSERT INTO T (a) VALUES ('x');"}}}));
  EXPECT_THAT(databases_.done, ElementsAre("open to C:\\Trelvin\\a.mdb", "CREATE TABLE T ([a] LONGTEXT)",
                                           "INSERT INTO T (a) VALUES ('x')", "close"));
  EXPECT_EQ(told_.str(), "a.mdb is made.\n");
}

TEST_F(SetUpTest, ADatabaseThatIsThereStaysAsItIs) {
  files_.names = {"C:\\Trelvin\\a.mdb"};
  EXPECT_TRUE(setUpAll({{"a.mdb", {"CREATE TABLE T (a TEXT);"}}}));
  EXPECT_THAT(databases_.done, IsEmpty());
  EXPECT_EQ(told_.str(), "a.mdb is there already and stays as it is.\n");
}

TEST_F(SetUpTest, WithoutADriverItSaysWhatIsMissing) {
  noDriver_ = true;
  EXPECT_FALSE(setUpAll({{"a.mdb", {}}}));
  EXPECT_EQ(told_.str(), "a.mdb can't be made: there is no driver\n");
}

TEST_F(SetUpTest, ADatabaseThatCanNotBeFilledIsNotLeftBehindAndTheOthersAreStillMade) {
  databases_.refused = "INDEX";
  EXPECT_FALSE(setUpAll({{"a.mdb", {"CREATE TABLE T (a TEXT); CREATE INDEX i ON T (a);"}},
                         {"b.mdb", {"CREATE TABLE T (a TEXT);"}}}));
  EXPECT_THAT(files_.names, ElementsAre("C:\\Trelvin\\b.mdb"));
  EXPECT_EQ(told_.str(), "a.mdb can't be made: no INDEX\nb.mdb is made.\n");
}

TEST_F(SetUpTest, TheProgramGetsItsThree) {
  EXPECT_TRUE(setUpAll(programDatabases()));
  EXPECT_THAT(files_.names, AllOf(SizeIs(3), ::testing::Contains("C:\\Trelvin\\Trelvin.mdb"),
                                  ::testing::Contains("C:\\Trelvin\\TrelvinData.mdb"),
                                  ::testing::Contains("C:\\Trelvin\\ForBackups.mdb")));
}

}  // namespace
}  // namespace trelvin::setup
