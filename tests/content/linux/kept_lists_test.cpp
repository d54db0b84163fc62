// What lists do that are kept with their files.
#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "content/content_whole.h"
#include "core/run_state.h"

namespace trelvin::test {

bool provideAccessLists(const std::filesystem::path& probe) {
  return ::setxattr(probe.c_str(), "user.trelvin.try", "x", 1, 0) == 0;
}

namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(ContentWhole, LetsTheFilesInheritInTheFastMode) {
  setList(R"(\\WEB1\D$\sites\shop)", {R"(WEB1\editors)"});
  setList(R"(\\WEB1\D$\sites\shop\img)", {R"(WEB1\painters)"});
  frmMain.chkFastPermissions.setValue(true);
  transfer();
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop)"), ElementsAre(entry(R"(WEB2\editors)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\index.htm)"), ElementsAre(entry(R"(WEB2\editors)")));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img\logo.gif)"), ElementsAre(entry(R"(WEB2\painters)")));
  EXPECT_EQ(run.lPermsSet, 2 * 2);
}

TEST_F(ContentWhole, EndsTheWalkAtAListThatSomebodyBrokeAndSaysWhich) {
  const fs::path page = folder / "network/WEB1/D$/sites/shop/index.htm";
  ASSERT_EQ(::setxattr(page.c_str(), "user.trelvin.acl", "nonsense", 8, 0), 0);
  setList(R"(\\WEB1\D$\sites\shop\img)", {R"(WEB1\painters)"});
  transfer();
  EXPECT_THAT(
      logLines(),
      Contains(AllOf(StartsWith("setPerms Error -2147352567 "),
                     EndsWith(R"( @S=\\WEB1\D$\sites\shop\index.htm@ @T=\\WEB2\D$\sites\shop\index.htm@)"))));
  EXPECT_THAT(listOf(R"(\\WEB2\D$\sites\shop\img)"), IsEmpty());
  EXPECT_TRUE(hasOutput("Done!"));
}

}  // namespace
}  // namespace trelvin::test
