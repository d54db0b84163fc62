#include "window/frm_perm_progress.h"

#include <gtest/gtest.h>

#include "core/run_state.h"
#include "window/frm_main.h"

namespace trelvin {
namespace {

class FrmPermProgressTest : public ::testing::Test {
 protected:
  FrmPermProgressTest() {
    run = RunState{};
    renew(frmPermProgress);
  }
  ~FrmPermProgressTest() override {
    run = RunState{};
    renew(frmPermProgress);
  }
};

TEST_F(FrmPermProgressTest, BeginsWithNothingDone) {
  EXPECT_EQ(frmPermProgress.filesCompleted.caption, "Files completed 0...");
  EXPECT_EQ(frmPermProgress.currentPath.caption, "Current file / directory");
  EXPECT_EQ(frmPermProgress.Timer1.interval, 3000);
}

TEST_F(FrmPermProgressTest, CancelStopsTheWalkAloneAndTakesTheFormDown) {
  frmPermProgress.loaded = true;
  frmPermProgress.cmdCancel.onClick();
  EXPECT_TRUE(run.bCancelPerms);
  EXPECT_FALSE(run.bExportCancelled);
  EXPECT_FALSE(frmPermProgress.loaded);
}

}  // namespace
}  // namespace trelvin
