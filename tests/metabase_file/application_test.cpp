#include "server_fixture.h"

namespace trelvin::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AnApplication : public MetabaseFileTest {
 protected:
  void pretendVersion(const std::string& version) {
    writeFile(replaceAll(sampleMetabase(), "MajorIIsVersionNumber=\"6\"",
                         "MajorIIsVersionNumber=\"" + version + "\""));
  }
  std::vector<std::string> rootsBelow(const std::string& path) {
    return bind(path)->getDataPaths("AppRoot", Value());
  }
};

TEST_F(AnApplication, IsMadeWithItsRootAndMode) {
  bind("/w3svc/1/root/STRAßE")->appCreate(true);
  EXPECT_EQ(bind("/W3SVC/1/ROOT/Straße")->get("AppRoot"), Value("/LM/W3SVC/1/ROOT/Straße"));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/Straße")->get("AppIsolated"), Value(0));
  bind("/W3SVC/1/ROOT/bin")->appCreate(false);
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AppIsolated"), Value(1));
  EXPECT_THAT(rootsBelow("/W3SVC/1"), ElementsAre("IIS://Web1/W3SVC/1/ROOT", "IIS://Web1/W3SVC/1/ROOT/bin",
                                                  "IIS://Web1/W3SVC/1/ROOT/Straße"));
  closeMetabase();
  EXPECT_THAT(fileText(), HasSubstr("\t\tAppIsolated=\"0\"\n\t\tAppRoot=\"/LM/W3SVC/1/ROOT/Straße\"\n"));
}

TEST_F(AnApplication, TakesTheModeAsANumber) {
  bind("/W3SVC/1/ROOT/bin")->appCreate2(2);
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AppIsolated"), Value(2));
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT/bin")->appCreate2(3); }), error_number::kAdsBadParameter);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT/bin")->appCreate2(-1); }), error_number::kAdsBadParameter);
}

TEST_F(AnApplication, OfTheSameModeStaysAsItIs) {
  bind("/W3SVC/1/ROOT")->appCreate2(2);
  EXPECT_FALSE(hasJournal());
}

TEST_F(AnApplication, OfAnotherModeIsDefinedAnew) {
  writeFile(replaceAll(sampleMetabase(), "\t\tAppRoot=\"/LM",
                       "\t\tAppPackageID=\"{1}\"\n\t\tAppPackageName=\"IIS-{1}\"\n\t\tAppRoot=\"/LM"));
  bind("/W3SVC/1/ROOT")->appCreate2(0);
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AppPackageID"), Value(""));
  EXPECT_THAT(bind("/W3SVC")->getDataPaths("AppPackageName", Value()), IsEmpty());
  closeMetabase();
  EXPECT_EQ(fileText(), replaceAll(sampleMetabase(), "AppIsolated=\"2\"", "AppIsolated=\"0\""));
}

TEST_F(AnApplication, IsPutIntoAPool) {
  bind("/W3SVC/1/ROOT/bin")->appCreate3(2, "DefaultAppPool", false);
  EXPECT_THAT(bind("/W3SVC/1")->getDataPaths("AppPoolId", Value()),
              ElementsAre("IIS://Web1/W3SVC/1/ROOT/bin"));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AppPoolID"), Value("DefaultAppPool"));
}

TEST_F(AnApplication, MakesAMissingPoolWhenAskedTo) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT/bin")->appCreate3(2, "Fast & new", false); }),
            error_number::kMetabasePathNotFound);
  EXPECT_THAT(rootsBelow("/W3SVC/1"), ElementsAre("IIS://Web1/W3SVC/1/ROOT")) << "nothing was done";
  bind("/W3SVC/1/ROOT/bin")->appCreate3(2, "Fast & new", true);
  EXPECT_EQ(bind("/W3SVC/AppPools/fast & NEW")->className(), "IIsApplicationPool");
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AppPoolId"), Value("Fast & new"));
  closeMetabase();
  EXPECT_EQ(bind("/W3SVC/AppPools/Fast & new")->get("MaxProcesses"), Value(1));
}

TEST_F(AnApplication, MakesTheFolderOfPoolsToo) {
  bind("/W3SVC")->deleteChild("IIsApplicationPools", "AppPools");
  bind("/W3SVC/1/ROOT")->appCreate3(2, "Own", true);
  EXPECT_EQ(bind("/W3SVC/AppPools")->className(), "IIsApplicationPools");
  EXPECT_EQ(bind("/W3SVC/AppPools/Own")->className(), "IIsApplicationPool");
  EXPECT_EQ(bind("/W3SVC/1/ROOT")->get("AppPoolId"), Value("Own"));
}

TEST_F(AnApplication, WithoutANamedPoolStoresTheInheritedOne) {
  bind("/W3SVC/1/ROOT/bin")->appCreate3(2, "", true);
  EXPECT_THAT(bind("/W3SVC/1/ROOT/bin")->getDataPaths("AppPoolId", Value()),
              ElementsAre("IIS://Web1/W3SVC/1/ROOT/bin"));
  EXPECT_EQ(bind("/W3SVC/1/ROOT/bin")->get("AppPoolId"), Value("DefaultAppPool"));
}

TEST_F(AnApplication, NeedsTheServersVersion) {
  pretendVersion("4");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->appCreate(true); }), 0);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->appCreate2(1); }), error_number::kNotSupportedByObject);
  closeMetabase();
  pretendVersion("5");
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->appCreate2(1); }), 0);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->appCreate3(1, "P", true); }),
            error_number::kNotSupportedByObject);
}

TEST_F(AnApplication, IsMadeOfDirectoriesOnly) {
  for (const char* path :
       {"/W3SVC", "/W3SVC/1", "/MSFTPSVC/1/ROOT", "/W3SVC/1/ROOT/plain", "/W3SVC/1/Filters"}) {
    EXPECT_EQ(numberOf([&] { bind(path)->appCreate(true); }), error_number::kNotSupportedByObject) << path;
  }
}

TEST_F(AnApplication, MadeBeforeSetInfoLeavesAKeyWithoutKeyType) {
  const NodeHandle folder = bind("/W3SVC/1/ROOT")->create("IIsWebVirtualDir", "early");
  folder->appCreate2(0);
  EXPECT_EQ(bind("/W3SVC/1/ROOT/early")->className(), "IIsObject");
  EXPECT_EQ(numberOf([&] { folder->setInfo(); }), error_number::kAdsObjectExists);
  closeMetabase();
  EXPECT_THAT(
      fileText(),
      HasSubstr(
          "<IIsConfigObject\tLocation =\"/LM/W3SVC/1/ROOT/early\"\n\t>\n\t<Custom\n\t\tName=\"AppIsolated\"\n"
          "\t\tID=\"2104\"\n\t\tValue=\"0\"\n\t\tType=\"DWORD\"\n\t\tUserType=\"IIS_MD_UT_WAM\"\n"
          "\t\tAttributes=\"INHERIT\"\n\t/>\n\t<Custom\n\t\tName=\"AppRoot\"\n"));
  const NodeHandle early = bind("/W3SVC/1/ROOT/early");
  early->put("KeyType", "IIsWebVirtualDir");
  early->setInfo();
  EXPECT_EQ(bind("/W3SVC/1/ROOT/early")->get("AppIsolated"), Value(0)) << "the repair finds the definition";
}

TEST_F(AnApplication, MadeStraightAfterSetInfoIsWhole) {
  const NodeHandle folder = bind("/W3SVC/1/ROOT")->create("IIsWebVirtualDir", "new");
  folder->setInfo();
  folder->appCreate3(2, "DefaultAppPool", true);
  EXPECT_EQ(folder->get("AppRoot"), Value("/LM/W3SVC/1/ROOT/new"));
  closeMetabase();
  EXPECT_THAT(fileText(),
              HasSubstr("<IIsWebVirtualDir\tLocation =\"/LM/W3SVC/1/ROOT/new\"\n\t\tAppIsolated=\"2\"\n"
                        "\t\tAppPoolId=\"DefaultAppPool\"\n\t\tAppRoot=\"/LM/W3SVC/1/ROOT/new\"\n\t>\n</"
                        "IIsWebVirtualDir>\n"));
}

class ASite : public MetabaseFileTest {};

TEST_F(ASite, IsStartedInMemoryAlone) {
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerState"), Value(4));
  bind("/W3SVC/1")->start();
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerState"), Value(2));
  bind("/MSFTPSVC/1")->start();
  closeMetabase();
  EXPECT_EQ(fileText(), sampleMetabase());
  EXPECT_EQ(bind("/W3SVC/1")->get("ServerState"), Value(4)) << "a file has no running server";
}

TEST_F(ASite, KeepsItsStateOutOfTheFileAlsoWhenOtherThingsAreWritten) {
  const NodeHandle site = bind("/W3SVC/1");
  site->start();
  site->put("ServerComment", "x");
  site->put("Win32Error", 5);
  site->setInfo();
  closeMetabase();
  EXPECT_THAT(fileText(), ::testing::Not(HasSubstr("ServerState")));
  EXPECT_THAT(fileText(), ::testing::Not(HasSubstr("Win32Error")));
}

TEST_F(ASite, IsTheOnlyThingThatStarts) {
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/1/ROOT")->start(); }), error_number::kNotSupportedByObject);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC")->start(); }), error_number::kNotSupportedByObject);
}

}  // namespace trelvin::test
