#include "platform/windows/object_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "core/err.h"
#include "fakes/failures.h"
#include "fakes/temp_folder.h"
#include "platform/windows/wide_text.h"

namespace trelvin {
namespace {

using test::TempFolder;
using testing::ElementsAre;

std::string textOf(const std::filesystem::path& path) {
  return utf8Text(path.wstring());
}

class FileTreeTest : public testing::Test {
 protected:
  FileTreeTest() {
    folder_.write("index.htm", "welcome");
    folder_.write("Übersicht.htm", "overview");
    folder_.write("images/logo.gif", "picture");
  }
  [[nodiscard]] bool isContainer(const std::string& path) const {
    OpenObject object;
    EXPECT_EQ(tree_->open(path, object), DWORD{ERROR_SUCCESS}) << path;
    EXPECT_NE(object.handle, nullptr);
    return object.isContainer;
  }

  TempFolder folder_;
  std::unique_ptr<ObjectTree> tree_ = makeFileTree();
};

TEST_F(FileTreeTest, WhatLiesAboveHasABackslashAtItsEnd) {
  EXPECT_EQ(tree_->parentOf("D:\\sites\\shop"), "D:\\sites\\");
  EXPECT_EQ(tree_->parentOf("D:\\sites\\shop\\"), "D:\\sites\\");
  EXPECT_EQ(tree_->parentOf("D:\\sites"), "D:\\");
  EXPECT_EQ(tree_->parentOf("D:/sites/shop"), "D:/sites\\");
  EXPECT_EQ(tree_->parentOf("\\\\WEB1\\D$\\sites\\shop"), "\\\\WEB1\\D$\\sites\\");
  EXPECT_EQ(tree_->parentOf("\\\\WEB1\\D$\\sites"), "\\\\WEB1\\D$\\");
}

TEST_F(FileTreeTest, NothingLiesAboveADriveOrAShare) {
  for (const char* top : {"D:\\", "D:", "\\\\WEB1\\D$", "\\\\WEB1\\D$\\", "sites", ""}) {
    EXPECT_EQ(tree_->parentOf(top), "") << top;
  }
}

TEST_F(FileTreeTest, TheHeirsOfAFolderAreItsFiles) {
  EXPECT_THAT(tree_->heirsOf(textOf(folder_.path())),
              ElementsAre(textOf(folder_ / "index.htm"), textOf(folder_ / "Übersicht.htm")));
  EXPECT_THAT(tree_->heirsOf(textOf(folder_ / "images")), ElementsAre(textOf(folder_ / "images\\logo.gif")));
}

TEST_F(FileTreeTest, AFolderThatIsGoneFails) {
  EXPECT_NE(test::numberOfFailure([&] { return tree_->heirsOf(textOf(folder_ / "gone")); }), 0);
}

TEST_F(FileTreeTest, AFolderIsAContainerAndAFileIsNone) {
  EXPECT_TRUE(isContainer(textOf(folder_.path())));
  EXPECT_TRUE(isContainer(tree_->parentOf(textOf(folder_ / "index.htm"))));
  EXPECT_FALSE(isContainer(textOf(folder_ / "index.htm")));
}

TEST_F(FileTreeTest, WhatIsNotThereDoesNotOpen) {
  OpenObject object;
  EXPECT_EQ(tree_->open(textOf(folder_ / "gone"), object), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_NE(tree_->open("", object), DWORD{ERROR_SUCCESS});
}

TEST_F(FileTreeTest, AnOpenFileKeepsNobodyFromIt) {
  OpenObject object;
  ASSERT_EQ(tree_->open(textOf(folder_ / "index.htm"), object), DWORD{ERROR_SUCCESS});
  folder_.write("index.htm", "new content");
  EXPECT_TRUE(std::filesystem::remove(folder_ / "index.htm"));
}

TEST(KeyTree, TheRootIsNoKeyOfTheTree) {
  OpenObject object;
  EXPECT_EQ(makeKeyTree()->open("", object), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(makeKeyTree()->parentOf("Software"), "");
  EXPECT_EQ(makeKeyTree()->parentOf("Software\\One\\Two"), "Software\\One");
}

}  // namespace
}  // namespace trelvin
