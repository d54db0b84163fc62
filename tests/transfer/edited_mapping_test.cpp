// From server to server as a person does it who edits the mapping first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "server_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {

using ::testing::ElementsAre;

class EditedMappingTest : public ServerToServer {
 protected:
  EditedMappingTest() {
    open(infoOf(6) +
         webService(webSite(1, "Shop",
                            {{"ServerBindings", ":80:shop" + std::string(kNextEntry) + ":81:shop"},
                             {"SecureBindings", ":443:shop"},
                             {"LogFileDirectory", "C:\\logs\\shop"}}) +
                    virtualDir(1, "/ROOT", {{"Path", "C:\\shop"}, {"DefaultDoc", "a.htm"}}) +
                    virtualDir(1, "/ROOT/img", {{"Path", "C:\\img"}})));
    select({0});
  }

  void answer(std::initializer_list<const char*> texts) {
    dialogs->inputs.assign(texts.begin(), texts.end());
  }
};

TEST_F(EditedMappingTest, WhatWasEditedIsWhatTheTargetGets) {
  frmMain.lstDirectories(0).setListIndex(1);
  answer({"E:\\pictures"});
  frmMain.lstDirectories(0).onDblClick();

  frmMain.tabNewValues.select(2);
  frmMain.lstNewIPs(0).setSelected(0, true);
  answer({"10.0.0.9:80:shop"});
  frmMain.lstNewIPs(0).onDblClick();
  frmMain.lstNewIPs(0).setSelected(0, false);
  frmMain.lstNewIPs(0).setSelected(1, true);
  frmMain.lstNewIPs(0).onKeyUp(46);
  answer({":8080:shop"});
  frmMain.cmdAddIP.onClick();

  frmMain.tabNewValues.select(3);
  frmMain.lstNewSSLIPs(0).setSelected(0, true);
  answer({"10.0.0.9:443:"});
  frmMain.lstNewSSLIPs(0).onDblClick();

  frmMain.tabNewValues.select(4);
  answer({"C:\\logs", "E:\\logs"});
  frmMain.cmdAddNewValue.onClick();
  frmMain.txtAddExclusion.text = "DefaultDoc";
  frmMain.cmdAddExclusion.onClick();

  press();

  EXPECT_EQ(stored("/W3SVC/1/ROOT", "Path"), "C:\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT/img", "Path"), "E:\\pictures");
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), "10.0.0.9:80:shop|:8080:shop");
  EXPECT_EQ(stored("/W3SVC/1", "SecureBindings"), "10.0.0.9:443:");
  EXPECT_EQ(stored("/W3SVC/1", "LogFileDirectory"), "E:\\logs\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), kUnset);
}

TEST_F(EditedMappingTest, ABindingTakenBackBeforeTheRunDoesNotTravel) {
  frmMain.tabNewValues.select(2);
  answer({":80:wrong"});
  frmMain.cmdAddIP.onClick();
  frmMain.lstNewIPs(0).setSelected(2, true);
  frmMain.lstNewIPs(0).onKeyPress(8);
  press();
  EXPECT_EQ(stored("/W3SVC/1", "ServerBindings"), ":80:shop|:81:shop");
}

TEST_F(EditedMappingTest, APairTakenOutAndAnExclusionTakenBackAreForgotten) {
  answer({"C:\\logs", "E:\\logs"});
  frmMain.cmdAddNewValue.onClick();
  frmMain.lstOldValues.setSelected(0, true);
  frmMain.lstOldValues.onKeyUp(46);
  frmMain.txtAddExclusion.text = "DefaultDoc";
  frmMain.cmdAddExclusion.onClick();
  frmMain.lstExclude.setSelected(frmMain.lstExclude.listCount() - 1, true);
  frmMain.lstExclude.onKeyPress(8);
  press();
  EXPECT_EQ(stored("/W3SVC/1", "LogFileDirectory"), "C:\\logs\\shop");
  EXPECT_EQ(stored("/W3SVC/1/ROOT", "DefaultDoc"), "a.htm");
}

}  // namespace
}  // namespace trelvin::test
