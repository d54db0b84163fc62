// The window's whole space of import and export choices, walked touch by touch as far as a person can reach.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <deque>
#include <map>
#include <set>
#include <sstream>

#include "metabase/sites_test.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

bool isReachable(const Control& control, const Control& frame) {
  return control.enabled && control.visible && frame.enabled && frame.visible;
}

bool canExportToServer() {
  return isReachable(frmMain.cmdExportServer, frmMain.fraExportServer);
}
bool canExportToDatabase() {
  return isReachable(frmMain.cmdExportFile, frmMain.fraExportFile);
}

struct Choice {
  std::string import;
  std::string exportTo;
  auto operator<=>(const Choice&) const = default;
};

void PrintTo(const Choice& choice, std::ostream* out) {
  *out << choice.import << " to " << choice.exportTo;
}

// What the tabs say, by their captions.
Choice choiceOfTabs() {
  const std::string import = frmMain.TabImportType.tab(frmMain.TabImportType.selectedTab()).caption;
  const std::string exportTo = frmMain.TabExportType.tab(frmMain.TabExportType.selectedTab()).caption;
  return {import == "Database" ? "Database" : "Server", exportTo == "Database" ? "Database" : "Server"};
}

const Choice kServerToServer{"Server", "Server"};

struct ContentBox {
  CheckBox& box;
  bool& flag;
};

std::vector<ContentBox> contentBoxes() {
  return {{frmMain.chkCopyFiles, run.bCopyFiles},
          {frmMain.chkSetFilePerms, run.bSetFilePerms},
          {frmMain.chkFastPermissions, run.bFastPerms}};
}

void describe(const Control& control, std::ostream& text) {
  text << control.name << ' ' << control.enabled << control.visible;
  if (const auto* box = dynamic_cast<const CheckBox*>(&control)) text << box->value();
  if (const auto* option = dynamic_cast<const OptionButton*>(&control)) text << option->value();
  if (const auto* tabs = dynamic_cast<const TabStrip*>(&control)) {
    text << ' ' << tabs->selectedTab() << " of " << tabs->tabCount();
  }
  if (&control == &frmMain.lstIMIISVer || &control == &frmMain.lstEXIISVer || &control == &frmMain.lstSites) {
    const auto& list = dynamic_cast<const ListControl&>(control);
    text << ' ' << list.listIndex() << ' ' << list.listCount() << ' ' << list.selCount();
  }
  text << '\n';
}

// All that the window shows, and the run state that its choices set.
std::string stateNow() {
  std::ostringstream text;
  for (const Control* control : frmMain.controls()) describe(*control, text);
  for (const ContentBox& content : contentBoxes()) text << content.flag;
  text << run.bCopyIIS << run.bRunSilent << run.bStartWebs << run.dblIMIISVer << run.dblEXIISVer;
  text << frmMain.sImportType << ' ' << frmMain.sExportSiteType << ' ' << frmMain.sService;
  return text.str();
}

struct Touch {
  std::string name;
  bool (*isPossible)();
  void (*act)();
};

template <auto Member>
Touch pressOf(const char* name, bool (*isPossible)()) {
  return {name, isPossible, [] { (frmMain.*Member).onClick(); }};
}

template <auto Box>
void change() {
  (frmMain.*Box).setValue(!(frmMain.*Box).value());
}

template <auto Member>
Touch changeOf(const char* name) {
  return {name, [] { return isReachable(frmMain.*Member, frmMain.fraPreferences); }, change<Member>};
}

template <auto Member, std::int32_t Tab>
Touch tabOf(const char* name) {
  return {name, [] { return (frmMain.*Member).enabled && (frmMain.*Member).tabCount() >= Tab; },
          [] { (frmMain.*Member).select(Tab); }};
}

template <auto Member>
Touch optionOf(const char* name) {
  return {name, [] { return (frmMain.*Member).enabled; }, [] { (frmMain.*Member).setValue(true); }};
}

std::vector<Touch> allTouches() {
  return {
      tabOf<&FrmMain::TabImportType, 1>("import from a server"),
      tabOf<&FrmMain::TabImportType, 2>("import from the database"),
      tabOf<&FrmMain::TabExportType, 1>("export to a server"),
      tabOf<&FrmMain::TabExportType, 2>("export to the database"),
      changeOf<&FrmMain::chkCopyFiles>("files"),
      changeOf<&FrmMain::chkSetFilePerms>("permissions"),
      changeOf<&FrmMain::chkFastPermissions>("fast"),
      optionOf<&FrmMain::optExportWeb>("web"),
      optionOf<&FrmMain::optExportFTP>("ftp"),
      pressOf<&FrmMain::cmdPopulate>("list", [] { return frmMain.cmdPopulate.enabled; }),
      {"select", [] { return frmMain.lstSites.enabled && frmMain.lstSites.listCount() > 0; },
       [] { frmMain.lstSites.setSelected(0, !frmMain.lstSites.selected(0)); }},
      pressOf<&FrmMain::cmdExportServer>("run to the server", canExportToServer),
      pressOf<&FrmMain::cmdExportFile>("run to the database", canExportToDatabase),
  };
}

// Choices that stand for themselves: each is made and taken back.
std::vector<Touch> independentTouches() {
  const auto always = [] { return true; };
  return {{"configuration", always, change<&FrmMain::chkCopyIIS>},
          {"silence", always, change<&FrmMain::chkRunSilent>},
          {"start", always, change<&FrmMain::chkStartWebs>},
          {"version of the source", always,
           [] { frmMain.lstIMIISVer.setListIndex(2 - frmMain.lstIMIISVer.listIndex()); }},
          {"creation mode", always, [] {
             OptionButton& create = frmMain.optCreateWebs;
             (create.value() ? frmMain.optOverwriteWebs : create).setValue(true);
           }}};
}

// What must never be, whatever has been touched.
std::vector<std::string> faults() {
  std::vector<std::string> found;
  const auto expect = [&](bool holds, const char* fault) {
    if (!holds) found.emplace_back(fault);
  };
  const Choice choice = choiceOfTabs();
  const bool fromServer = choice.import == "Server";
  const bool toServer = choice.exportTo == "Server";
  expect(fromServer || toServer, "from a database into a database");
  expect(fromServer || !canExportToDatabase(), "a database's button with a database as source");
  expect(frmMain.TabExportType.tabCount() == (fromServer ? 2 : 1), "the number of export tabs");
  expect(frmMain.sImportType == choice.import, "another source than the tab says");
  expect(frmMain.txtImportServer.visible == fromServer, "the name of the source server");
  expect(frmMain.optExportServer.value() == toServer && frmMain.optExportFile.value() == !toServer,
         "another target than the tab says");
  expect(frmMain.fraExportServer.visible == toServer && frmMain.fraExportFile.visible == !toServer,
         "another group than that of the target");
  expect(canExportToServer() == toServer && canExportToDatabase() == !toServer,
         "not just the button of the target");
  expect(isReachable(frmMain.txtExportServer, frmMain.fraExportServer) == toServer,
         "the name of the target server");
  for (const ContentBox& content : contentBoxes()) {
    expect(content.box.value() == content.flag, "a box that says otherwise than its flag");
    expect(choice == kServerToServer || !content.flag, "content from or into a database");
    expect(choice == kServerToServer || !content.box.enabled, "a box for content from or into a database");
  }
  expect(!frmMain.chkSetFilePerms.enabled || run.bCopyFiles, "permissions without files");
  expect(!frmMain.chkFastPermissions.enabled || run.bSetFilePerms, "the fast mode without permissions");
  expect((frmMain.sExportSiteType == "Web") == (frmMain.sService == "W3SVC"), "two kinds of site");
  expect(frmMain.optExportWeb.value() == (frmMain.sExportSiteType == "Web") &&
             frmMain.optExportFTP.value() == (frmMain.sExportSiteType == "Ftp"),
         "another kind of site than the option says");
  expect(frmMain.chkCopyIIS.enabled, "the configuration out of reach");
  return found;
}

class ChoicesTest : public SitesTest {
 protected:
  ChoicesTest() {
    addServer("web1",
              metabaseFile(webService() + webSite("1", {{"ServerComment", "One"}}) +
                           webDirectory("1/ROOT", "d:\\one") + ftpService() +
                           ftpSite("1", {{"ServerComment", "Files"}}) +
                           element("IIsFtpVirtualDir", "/LM/MSFTPSVC/1/ROOT", {{"Path", "d:\\ftp"}})));
    executeOn("TrelvinData.mdb", "INSERT INTO Sites (SiteName, Type) VALUES ('Stored', 'Web')");
    frmMain.chkRunSilent.setValue(false);
  }

  // Does what hasn't been done yet where it can be done, and goes the shortest known way to the next such
  // place, until there is none left. Some places have no way back to others; then the window is opened anew.
  void walk() {
    std::size_t here = visit();
    while (isAnythingUntried()) {
      const Touch* next = nextTouch(here);
      if (next == nullptr) {
        here = openAnew();
        continue;
      }
      next->act();
      ASSERT_THAT(faults(), IsEmpty()) << next->name << " at\n" << names_[here];
      const std::size_t there = visit();
      places_[here].ways[next] = there;
      ++touched_;
      here = there;
    }
  }

  struct Place {
    std::vector<const Touch*> possible;
    std::map<const Touch*, std::size_t> ways;  // what was tried here, and where it led
  };

  std::vector<Place> places_;
  std::set<Choice> choices_;
  std::set<std::vector<bool>> contents_;  // the three flags, from server to server
  int touched_ = 0;

 private:
  // The number of the state in which the window is.
  std::size_t visit() {
    const auto [known, isNew] = numbers_.try_emplace(stateNow(), places_.size());
    if (!isNew) return known->second;
    names_.push_back(known->first);
    choices_.insert(choiceOfTabs());
    if (choiceOfTabs() == kServerToServer) {
      contents_.insert({run.bCopyFiles, run.bSetFilePerms, run.bFastPerms});
    }
    expectIndependence(known->first);
    Place& place = places_.emplace_back();
    for (const Touch& touch : touches_) {
      if (touch.isPossible()) place.possible.push_back(&touch);
    }
    return known->second;
  }

  // Choices that stand for themselves bring nothing else about, and taken back they leave no trace.
  static void expectIndependence(const std::string& state) {
    for (const Touch& touch : independentTouches()) {
      touch.act();
      EXPECT_NE(stateNow(), state) << touch.name;
      EXPECT_THAT(faults(), IsEmpty()) << touch.name;
      touch.act();
      EXPECT_EQ(stateNow(), state) << touch.name;
    }
  }

  std::size_t openAnew() {
    renew(frmMain);
    run = RunState{};
    openWindow();
    frmMain.txtImportServer.text = "web1";
    return visit();
  }

  [[nodiscard]] bool isAnythingUntried() const {
    for (std::size_t state = 0; state < places_.size(); ++state) {
      if (untried(state) != nullptr) return true;
    }
    return false;
  }

  [[nodiscard]] const Touch* untried(std::size_t state) const {
    const Place& place = places_[state];
    const auto found = std::find_if(place.possible.begin(), place.possible.end(),
                                    [&](const Touch* touch) { return !place.ways.contains(touch); });
    return found == place.possible.end() ? nullptr : *found;
  }

  // The first step towards the nearest state with something untried; null when there is none.
  [[nodiscard]] const Touch* nextTouch(std::size_t here) const {
    if (const Touch* touch = untried(here)) return touch;
    std::map<std::size_t, const Touch*> firstSteps{{here, nullptr}};
    std::deque<std::size_t> waiting{here};
    while (!waiting.empty()) {
      const std::size_t state = waiting.front();
      waiting.pop_front();
      if (untried(state) != nullptr) return firstSteps.at(state);
      for (const auto& [touch, there] : places_[state].ways) {
        const Touch* firstStep = state == here ? touch : firstSteps.at(state);
        if (firstSteps.try_emplace(there, firstStep).second) waiting.push_back(there);
      }
    }
    return nullptr;
  }

  const std::vector<Touch> touches_ = allTouches();
  std::map<std::string, std::size_t> numbers_;
  std::vector<std::string> names_;
};

TEST_F(ChoicesTest, WhateverIsTouchedInWhateverOrderNothingIsReachedThatMustNotBe) {
  ASSERT_THAT(faults(), IsEmpty()) << "at the start";
  walk();
  if (HasFatalFailure()) return;
  EXPECT_THAT(choices_, ElementsAre(Choice{"Database", "Server"}, Choice{"Server", "Database"},
                                    Choice{"Server", "Server"}));
  EXPECT_EQ(contents_.size(), 8U) << "a box that is checked stays so when the one it hangs on goes off";
  for (const Place& place : places_) EXPECT_EQ(place.ways.size(), place.possible.size());
  RecordProperty("states", static_cast<int>(places_.size()));
  RecordProperty("touches", touched_);
}

}  // namespace
}  // namespace trelvin::test
