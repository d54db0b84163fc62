#include "desktop/layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "window/frm_main.h"

namespace trelvin::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

using Names = std::vector<std::string>;
using Keys = std::multiset<char>;

class LayoutTest : public ::testing::TestWithParam<std::size_t> {
 protected:
  LayoutTest() : window_(windows().at(GetParam())), form_(*window_.form), layout_(window_.layout) {}

  // Every name that the layout gives a place or says to be undrawn, as often as it does.
  [[nodiscard]] Names mentioned() const {
    Names names = layout_.undrawn;
    forEachControl(layout_.body, [&](const Place& place) { names.push_back(place.control); });
    for (const Menu& menu : layout_.menus) {
      names.push_back(menu.control);
      std::copy_if(menu.entries.begin(), menu.entries.end(), std::back_inserter(names),
                   [](const std::string& entry) { return !entry.empty(); });
    }
    for (const std::string& bar : {layout_.statusBar, layout_.progressBar}) {
      if (!bar.empty()) names.push_back(bar);
    }
    return names;
  }
  void forEachPlace(const std::function<void(const Place&, const Control&)>& visit) const {
    forEachControl(layout_.body, [&](const Place& place) {
      const Control* control = form_.control(place.control);
      ASSERT_NE(control, nullptr) << place.control;
      visit(place, *control);
    });
  }

  Window window_;
  Form& form_;
  WindowLayout layout_;
};

std::string nameOfWindow(const ::testing::TestParamInfo<std::size_t>& info) {
  return std::vector<std::string>{"Welcome", "Main", "PermissionProgress", "DatabaseSelect"}.at(info.param);
}

INSTANTIATE_TEST_SUITE_P(Windows, LayoutTest, ::testing::Range<std::size_t>(0, 4), nameOfWindow);

TEST(WindowsTest, HaveOneAmongThemThatEverythingStandsOn) {
  const std::vector<Window> all = windows();
  ASSERT_EQ(all.size(), 4U);
  for (const Window& each : all) EXPECT_EQ(each.isMain, each.form == &frmMain);
}

TEST_P(LayoutTest, GivesEveryControlOnePlaceOrSaysThatItIsNotDrawn) {
  Names controls;
  for (const Control* control : form_.controls()) controls.push_back(control->name);
  EXPECT_THAT(mentioned(), UnorderedElementsAreArray(controls));
}

TEST_P(LayoutTest, DrawsNothingThatOnlyHoldsData) {
  for (const std::string& name : layout_.undrawn) {
    const Control* control = form_.control(name);
    EXPECT_TRUE(!control->visible || dynamic_cast<const Timer*>(control) != nullptr) << name;
  }
}

TEST_P(LayoutTest, HoldsOnlyFramesThatHoldSomethingAndNothingElseThatDoes) {
  forEachPlace([](const Place& place, const Control& control) {
    EXPECT_EQ(!place.places.empty(), dynamic_cast<const Frame*>(&control) != nullptr) << place.control;
  });
}

TEST_P(LayoutTest, NamesButtonsAndLabelledControlsThatAreThere) {
  forEachPlace([this](const Place& place, const Control& control) {
    if (!place.returnPresses.empty()) {
      EXPECT_NE(dynamic_cast<const TextBox*>(&control), nullptr) << place.control;
      EXPECT_NE(dynamic_cast<const Button*>(form_.control(place.returnPresses)), nullptr) << place.control;
    }
    if (!place.names.empty()) {
      EXPECT_NE(dynamic_cast<const Label*>(&control), nullptr) << place.control;
      EXPECT_NE(form_.control(place.names), nullptr) << place.control;
    }
  });
  for (const std::string& button : {layout_.returnPresses, layout_.escapePresses}) {
    if (button.empty()) continue;
    EXPECT_NE(dynamic_cast<const Button*>(form_.control(button)), nullptr) << button;
  }
}

TEST_P(LayoutTest, TellsAPersonWhatEveryInputIs) {
  for (const std::string& control : tabOrder(form_, layout_)) {
    EXPECT_NE(spokenName(form_, layout_, control), "") << control;
    EXPECT_NE(spokenName(form_, layout_, control), form_.caption) << control << " has no name of its own";
  }
}

// The letters behind a single "&" of a drawn caption.
Keys keysOf(const std::string& caption) {
  Keys keys;
  for (std::size_t at = 0; at + 1 < caption.size(); ++at) {
    if (caption[at] != '&') continue;
    ++at;
    if (caption[at] != '&') keys.insert(static_cast<char>(std::toupper(caption[at])));
  }
  return keys;
}

// Keys of all that can show together; the places of a stack show one at a time.
Keys keysOf(const Form& form, const Place& place) {
  Keys keys;
  if (place.kind == Place::Kind::kControl) {
    const Control& control = *form.control(place.control);
    if (const auto* strip = dynamic_cast<const TabStrip*>(&control)) {
      for (std::int32_t i = 1; i <= strip->tabCount(); ++i) {
        const std::string key =
            place.accessKeys.empty() ? "" : place.accessKeys.substr(std::size_t(i) - 1, 1);
        keys.merge(keysOf(captionWithKey(strip->tab(i).caption, key)));
      }
    } else {
      const std::string words = wordsInFront(form, place);
      keys.merge(keysOf(captionWithKey(words.empty() ? control.caption : words, place.accessKeys)));
    }
  }
  for (const Place& each : place.places) {
    Keys inner = keysOf(form, each);
    if (place.kind == Place::Kind::kStack) {
      std::erase_if(inner, [&](char key) { return keys.count(key) > 0; });
    }
    keys.merge(inner);
  }
  return keys;
}

void expectNoneTwice(const Keys& keys, const std::string& where) {
  for (const char key : keys) EXPECT_EQ(keys.count(key), 1U) << key << " in " << where;
}

TEST_P(LayoutTest, GivesNoTwoControlsThatShowTogetherTheSameAccessKey) {
  Keys keys = keysOf(form_, layout_.body);
  for (const Menu& menu : layout_.menus) keys.merge(keysOf(form_.control(menu.control)->caption));
  expectNoneTwice(keys, form_.caption);
}

TEST_P(LayoutTest, GivesNoTwoEntriesOfAMenuTheSameAccessKey) {
  for (const Menu& menu : layout_.menus) {
    Keys keys;
    for (const std::string& entry : menu.entries) {
      if (!entry.empty()) keys.merge(keysOf(form_.control(entry)->caption));
    }
    expectNoneTwice(keys, menu.control);
  }
}

TEST_P(LayoutTest, UsesOnlyLettersOfTheCaptionsAsAccessKeys) {
  forEachPlace([this](const Place& place, const Control& control) {
    if (place.accessKeys.empty() || dynamic_cast<const TabStrip*>(&control) != nullptr) return;
    const std::string words = wordsInFront(form_, place);
    const std::string caption = captionWithKey(words.empty() ? control.caption : words, place.accessKeys);
    EXPECT_EQ(caption.find("(&"), std::string::npos) << caption;
  });
}

TEST(MainLayoutTest, KeepsTheKeyOfAButtonThatReadsAbortDuringARun) {
  forEachControl(mainLayout().body, [](const Place& place) {
    if (place.control != "cmdExportServer" && place.control != "cmdExportFile") return;
    EXPECT_EQ(captionWithKey("Export", place.accessKeys), "Exp&ort");
    EXPECT_EQ(captionWithKey("Abort", place.accessKeys), "Ab&ort");
  });
}

TEST(MainLayoutTest, LeadsTheTabKeyFromTheSourceOverItsSitesToTheTarget) {
  renew(frmMain);
  EXPECT_THAT(tabOrder(frmMain, mainLayout()),
              ElementsAre("TabImportType", "txtImportServer", "lstIMIISVer", "cmdPopulate", "optExportWeb",
                          "optExportFTP", "lstSites", "lstExclude", "txtAddExclusion", "cmdAddExclusion",
                          "TabExportType", "txtExportServer", "lstEXIISVer", "optCreateWebs",
                          "optOverwriteWebs", "optOverwritePreserve", "cmdExportServer", "cmdExportFile",
                          "chkCopyFiles", "chkSetFilePerms", "chkFastPermissions", "chkCopyIIS",
                          "chkStartWebs", "chkRunSilent", "tabNewValues", "lstFolders", "lstDirectories",
                          "lstOldIPs", "lstNewIPs", "cmdAddIP", "lstOldSSLIPs", "lstNewSSLIPs", "cmdAddSSLIP",
                          "lstOldValues", "lstNewValues", "cmdAddNewValue", "lstOutput"));
}

TEST(MainLayoutTest, HasTheMenusInTheirOrder) {
  const std::vector<Menu> menus = mainLayout().menus;
  ASSERT_EQ(menus.size(), 3U);
  EXPECT_EQ(menus[0].control, "mnuFile");
  EXPECT_THAT(menus[0].entries,
              ElementsAre("mnuSaveBackup", "mnuLoadBackup", "", "mnuDBLoc", "mnuChkUpdates", "", "mnuExit"));
  EXPECT_EQ(menus[1].control, "mnuTools");
  EXPECT_THAT(menus[1].entries, ElementsAre("mnuCheckMetabase", "mnuFixMetabase", "", "mnuProxyServer"));
  EXPECT_EQ(menus[2].control, "mnuHelp");
  EXPECT_THAT(menus[2].entries, ElementsAre("mnuAbout", "mnuDocumentation", "mnuHomePage", "mnuCredits"));
}

TEST(MainLayoutTest, TellsInputsByTheirLabelsAndByTheFramesAroundThem) {
  renew(frmMain);
  const WindowLayout layout = mainLayout();
  const auto spoken = [&](const char* control) { return spokenName(frmMain, layout, control); };
  EXPECT_EQ(spoken("txtImportServer"), "Server");
  EXPECT_EQ(spoken("txtExportServer"), "Export Server");
  EXPECT_EQ(spoken("txtAddExclusion"), "Additional Exclusions");
  EXPECT_EQ(spoken("lstSites"), "Available Sites");
  EXPECT_EQ(spoken("lstDirectories"), "New Directories");
  EXPECT_EQ(spoken("lstOutput"), "Output");
  EXPECT_EQ(spoken("TabImportType"), "Import from :");
  EXPECT_EQ(spoken("cmdPopulate"), "List Sites");
}

TEST(CaptionTest, LosesItsAccessKeyAndKeepsAnAmpersandOfItsOwn) {
  EXPECT_EQ(plainCaption("&Find && Replace"), "Find & Replace");
  EXPECT_EQ(plainCaption("E&xit"), "Exit");
  EXPECT_EQ(plainCaption("List Sites"), "List Sites");
  EXPECT_EQ(plainCaption("R&&D&"), "R&D");
  EXPECT_EQ(plainCaption(""), "");
}

TEST(CaptionTest, GetsTheAccessKeyThatTheLayoutGivesIt) {
  EXPECT_EQ(captionWithKey("&Find && Replace", "C"), "Find && Repla&ce");
  EXPECT_EQ(captionWithKey("List Sites", "L"), "&List Sites");
  EXPECT_EQ(captionWithKey("Run silently", "Y"), "Run silentl&y");
  EXPECT_EQ(captionWithKey("&Directories", ""), "&Directories") << "its own stays";
  EXPECT_EQ(captionWithKey("Add", "Z"), "Add (&Z)");
}

}  // namespace
}  // namespace trelvin::desktop
