// Forms of metabase paths, class words, and what binding means.
#include "metabase/paths.h"

#include <gtest/gtest.h>

#include "core/value.h"
#include "fakes/failures.h"
#include "sites_test.h"

namespace trelvin::test {
namespace {

TEST(SiteNumberTest, IsWhatStandsBehindTheLastSlash) {
  EXPECT_EQ(siteNumberFromPath("IIS://server/W3SVC/3"), 3);
  EXPECT_EQ(siteNumberFromPath("IIS://server/W3SVC/1876543210"), 1876543210);
  EXPECT_EQ(siteNumberFromPath("/12"), 12);
}

TEST(SiteNumberTest, APathWithoutASlashIsTheNumberItself) {
  EXPECT_EQ(siteNumberFromPath("7"), 7);
}

TEST(SiteNumberTest, APathThatEndsInASlashFails) {
  EXPECT_EQ(numberOfFailure([] { return siteNumberFromPath("IIS://server/W3SVC/3/"); }), 13);
  EXPECT_EQ(numberOfFailure([] { return siteNumberFromPath(""); }), 13);
}

TEST(SiteNumberTest, APathThatEndsInAWordFails) {
  EXPECT_EQ(numberOfFailure([] { return siteNumberFromPath("IIS://server/W3SVC"); }), 13);
}

TEST(SiteNumberTest, ANumberThatCannotBeHeldFails) {
  EXPECT_EQ(numberOfFailure([] { return siteNumberFromPath("IIS://server/W3SVC/99999999999"); }), 6);
}

TEST(SiteNumberTest, ANodeNameOf32768CannotBeHeldInASiteNumber) {
  EXPECT_EQ(Value("32767").toInteger(), 32767);
  EXPECT_EQ(numberOfFailure([] { return Value("32768").toInteger(); }), 6);
}

TEST(ServicePathTest, JoinsServerAndService) {
  EXPECT_EQ(servicePath("web1", "W3SVC"), "IIS://web1/W3SVC");
  EXPECT_EQ(servicePath("10.0.0.1", "MSFTPSVC"), "IIS://10.0.0.1/MSFTPSVC");
}

TEST(RelativePathTest, IsEmptyForTheSiteAndBeginsWithASlashBelowIt) {
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC/1"), "");
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC/1/ROOT"), "/ROOT");
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC/1876/ROOT/a b/c"), "/ROOT/a b/c");
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC/1/"), "/");
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC/1/ROOT/"), "/ROOT/");
  EXPECT_EQ(relativeToSite("IIS://web1/W3SVC"), "");
  EXPECT_EQ(relativeToSite("web1"), "");
  EXPECT_EQ(relativeToSite(""), "");
}

class PathsTest : public SitesTest {};

TEST_F(PathsTest, ClassWordsFollowTheKindOfSite) {
  EXPECT_EQ(classWord("Server"), "IIsWebServer");
  EXPECT_EQ(classWord("VirtualDir"), "IIsWebVirtualDir");
  EXPECT_EQ(classWord("Directory"), "IIsWebDirectory");
  frmMain.optExportFTP.setValue(true);
  EXPECT_EQ(classWord("Server"), "IIsFtpServer");
  EXPECT_EQ(classWord("VirtualDir"), "IIsFtpVirtualDir");
  EXPECT_EQ(classWord("Directory"), "IIsFtpDirectory");
}

TEST_F(PathsTest, ClassesAreComparedWithoutRegardToCase) {
  EXPECT_TRUE(isClass("IIsWebServer", "Server"));
  EXPECT_TRUE(isClass("IISWEBSERVER", "Server"));
  EXPECT_TRUE(isClass("iiswebvirtualdir", "VirtualDir"));
  EXPECT_FALSE(isClass("IIsFtpServer", "Server"));
  EXPECT_FALSE(isClass("IIsWebServerX", "Server"));
  EXPECT_FALSE(isClass("", "Server"));
}

TEST_F(PathsTest, BindingAnExistingSiteGoesThroughAndAnyFailureMeansThatThereIsNone) {
  addWebServer(webSite("1", {}));
  EXPECT_TRUE(attempt([] { getObject("IIS://web1/W3SVC/1"); }));
  EXPECT_EQ(Err.number, 0);
  EXPECT_EQ(numberOfFailure([] { return getObject("IIS://web1/W3SVC/2"); }),
            error_number::kMetabasePathNotFound);
  EXPECT_EQ(numberOfFailure([] { return getObject("IIS://nowhere/W3SVC/1"); }),
            error_number::kServerUnavailable);
  // Which number this has is the system's own affair.
  EXPECT_NE(numberOfFailure([] { return getObject("web1/W3SVC/1"); }), 0);
}

TEST_F(PathsTest, ABindThatFailsLeavesTheHandleOnItsFormerNode) {
  addWebServer(webSite("1", {}));
  NodeHandle node = getObject("IIS://web1/W3SVC/1");
  attempt([&] { node = getObject("IIS://web1/W3SVC/2"); });
  EXPECT_EQ(node->name(), "1");
  EXPECT_TRUE(Err.isSet());
}

TEST_F(PathsTest, TheWarmUpBindsTheServiceOfThisMachineAndForgetsWhatCameOfIt) {
  Err.set(Failure(6));
  warmUpProvider();
  EXPECT_EQ(boundPaths(), (Texts{"IIS://Localhost/W3SVC"}));
  EXPECT_FALSE(Err.isSet());
  frmMain.optExportFTP.setValue(true);
  warmUpProvider();
  EXPECT_EQ(boundPaths().back(), "IIS://Localhost/MSFTPSVC");
}

}  // namespace
}  // namespace trelvin::test
