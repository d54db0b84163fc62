// Brings Trelvin.exe into its main states, as a person does on the sample servers, and takes a picture of
// each. TRELVIN_PICTURES names the folder of the machine beneath that gets them.
#include <cstdlib>
#include <filesystem>

#include "program_win32/screen_test.h"
#include "window/frm_splash.h"

namespace trelvin::test {
namespace {

class Pictures : public ScreenTest {
 protected:
  Pictures() {
    std::filesystem::copy(std::filesystem::path(TRELVIN_SOURCE_DIR) / "samples/servers", folder_ / "network",
                          std::filesystem::copy_options::recursive);
  }
  void take(const std::string& name, HWND window) const {
    ASSERT_NE(window, nullptr) << name;
    person().takePicture(window, std::string(std::getenv("TRELVIN_PICTURES")) + "/" + name + ".png");
  }
};

TEST_F(Pictures, FromTheWelcomeToTheEndOfARun) {
  startProgram("");
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(person().see(frmSplash, "cmdContinue")); }));
  take("welcome", person().window(frmSplash.caption));
  person().click(person().see(frmSplash, "cmdContinue"));
  ASSERT_TRUE(Person::waitFor([this] { return Person::canReach(main("cmdPopulate")); }));
  take("main-empty", mainWindow());

  chooseByKeys("lstIMIISVer", 1);
  typeByMouse("txtImportServer", "WEB5");
  person().click(main("cmdPopulate"));
  ASSERT_TRUE(
      Person::waitFor([this] { return text("StatusBar1") == "Ready" && entries("lstSites").size() > 2; }));
  person().clickEntry(main("lstSites"), 0);
  ASSERT_TRUE(Person::waitFor([this] { return !entries("lstFolders").empty(); }));
  take("listed", mainWindow());

  chooseDatabaseByMouse();
  take("to-database", mainWindow());
  person().click(main("cmdExportFile"));
  ASSERT_TRUE(waitForBox("You are about to export web sites"));
  take("warning", person().window("Trelvin"));
  person().clickInBox(IDOK);
  ASSERT_TRUE(waitForBox("Done!"));
  person().clickInBox(IDOK);
  ASSERT_TRUE(waitForNoBox());
  take("exported", mainWindow());

  person().clickClose(mainWindow());
  EXPECT_EQ(program().outcome().status, 0U);
}

}  // namespace
}  // namespace trelvin::test
