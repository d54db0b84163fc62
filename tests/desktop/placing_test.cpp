#include "desktop/placing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "desktop/layout.h"
#include "window/frm_main.h"

namespace trelvin::desktop {
namespace {

using Kind = Place::Kind;

// Everything is 10 high; the words of a label are as wide as it has characters, ten times.
class RoundMeasures final : public Measures {
 public:
  [[nodiscard]] int leastWidth(const Place& place) const override {
    const auto width = widths.find(place.control);
    return width == widths.end() ? 50 : width->second;
  }
  // A text of 100 that goes onto several lines.
  [[nodiscard]] int leastHeight(const Place& place, int width) const override {
    if (place.control == "text") return 10 * ((100 + width - 1) / width);
    return 10;
  }
  [[nodiscard]] Extent words(const Place& place) const override {
    return {10 * static_cast<int>(place.label.size()), place.label.empty() ? 0 : 10};
  }
  [[nodiscard]] Insets insets(const Place& /*place*/) const override { return {5, 20, 6, 7}; }
  [[nodiscard]] int spacing() const override { return 2; }
  [[nodiscard]] int indentation() const override { return 15; }

  std::map<std::string, int> widths;
};

class PlacingTest : public ::testing::Test {
 protected:
  void place(const Place& body, Rectangle room) {
    Placing placing(body, measures);
    least = placing.least();
    placing.place(room, [this](const Place& each, const Rectangle& control, const Rectangle& front) {
      placed[each.control] = control;
      words[each.control] = front;
    });
  }

  RoundMeasures measures;
  Extent least;
  std::map<std::string, Rectangle> placed;
  std::map<std::string, Rectangle> words;
};

TEST_F(PlacingTest, RowGivesEachWhatItNeedsAndTheRestToTheShares) {
  place({.kind = Kind::kRow, .places = {{.control = "a"}, {.control = "b", .share = 1}, {.control = "c"}}},
        {100, 200, 254, 10});
  EXPECT_EQ(least, (Extent{154, 10}));
  EXPECT_EQ(placed["a"], (Rectangle{100, 200, 50, 10}));
  EXPECT_EQ(placed["b"], (Rectangle{152, 200, 150, 10}));
  EXPECT_EQ(placed["c"], (Rectangle{304, 200, 50, 10}));
}

TEST_F(PlacingTest, SharesAreOfTheWholeRoomAsFarAsEachHasWhatItNeeds) {
  const Place body{.kind = Kind::kRow,
                   .places = {{.control = "a", .share = 2}, {.control = "b", .share = 3}}};
  place(body, {0, 0, 502, 10});
  EXPECT_EQ(placed["a"].width, 200);
  EXPECT_EQ(placed["b"].width, 300);

  measures.widths["a"] = 260;
  place(body, {0, 0, 502, 10});
  EXPECT_EQ(placed["a"].width, 260);
  EXPECT_EQ(placed["b"].width, 240);
}

TEST_F(PlacingTest, NoPixelIsLostBetweenShares) {
  place(
      {.kind = Kind::kRow,
       .places = {{.control = "a", .share = 1}, {.control = "b", .share = 1}, {.control = "c", .share = 1}}},
      {0, 0, 204, 10});
  EXPECT_EQ(placed["a"].width + placed["b"].width + placed["c"].width, 200);
}

TEST_F(PlacingTest, GapTakesWhatIsLeftOver) {
  place({.kind = Kind::kRow, .places = {{.kind = Kind::kGap, .share = 1}, {.control = "a"}}},
        {0, 0, 300, 30});
  EXPECT_EQ(placed["a"], (Rectangle{250, 10, 50, 10})) << "and a control stands in the middle of its row";
  EXPECT_EQ(placed.size(), 1U);
}

TEST_F(PlacingTest, ColumnGivesEachTheWholeWidth) {
  place({.kind = Kind::kColumn, .places = {{.control = "a"}, {.control = "b", .share = 1}}}, {0, 0, 80, 62});
  EXPECT_EQ(placed["a"], (Rectangle{0, 0, 80, 10}));
  EXPECT_EQ(placed["b"], (Rectangle{0, 12, 80, 50}));
}

TEST_F(PlacingTest, StackPutsAllInTheRoomOfTheLargest) {
  measures.widths["wide"] = 90;
  place({.kind = Kind::kStack, .places = {{.control = "wide"}, {.control = "a"}}}, {0, 0, 90, 40});
  EXPECT_EQ(least, (Extent{90, 10}));
  EXPECT_EQ(placed["a"], (Rectangle{0, 0, 90, 40}));
  EXPECT_EQ(placed["wide"], placed["a"]);
}

TEST_F(PlacingTest, FrameStandsAroundWhatItHolds) {
  place({.kind = Kind::kColumn, .places = {{.control = "frame", .places = {{.control = "a"}}}}},
        {0, 0, 61, 37});
  EXPECT_EQ(least, (Extent{61, 37}));
  EXPECT_EQ(placed["frame"], (Rectangle{0, 0, 61, 37}));
  EXPECT_EQ(placed["a"], (Rectangle{5, 20, 50, 10}));
}

TEST_F(PlacingTest, WhatDependsOnTheOneAboveIsIndented) {
  place({.kind = Kind::kColumn, .places = {{.control = "a"}, {.control = "b", .isIndented = true}}},
        {0, 0, 65, 22});
  EXPECT_EQ(least.width, 65);
  EXPECT_EQ(placed["b"], (Rectangle{15, 12, 50, 10}));
}

TEST_F(PlacingTest, RowsOfOneFrameBeginWithEquallyWideWords) {
  measures.widths["label"] = 40;
  place({.kind = Kind::kColumn,
         .places = {{.control = "frame",
                     .places = {{.kind = Kind::kRow, .places = {{.control = "a", .label = "Version"}}},
                                {.kind = Kind::kRow, .places = {{.control = "b", .label = "To"}}},
                                {.kind = Kind::kRow,
                                 .places = {{.control = "label", .names = "c"}, {.control = "c"}}}}},
                    {.kind = Kind::kRow, .places = {{.control = "d", .label = "No"}}}}},
        {0, 0, 200, 100});
  EXPECT_EQ(words["a"].width, 70);
  EXPECT_EQ(words["b"].width, 70);
  EXPECT_EQ(placed["a"].left, 5 + 70 + 2);
  EXPECT_EQ(placed["b"].left, placed["a"].left);
  EXPECT_EQ(placed["c"].left, placed["a"].left);
  EXPECT_EQ(placed["d"].left, 20 + 2) << "stands in no frame";
}

TEST_F(PlacingTest, TextThatGoesOntoSeveralLinesIsAsHighAsItsWidthAsksFor) {
  const Place body{.kind = Kind::kColumn, .places = {{.control = "text"}, {.control = "a"}}};
  place(body, {0, 0, 50, 32});
  EXPECT_EQ(least, (Extent{50, 32}));
  EXPECT_EQ(placed["a"].top, 22);
  place(body, {0, 0, 100, 100});
  EXPECT_EQ(placed["a"].top, 12);
}

TEST_F(PlacingTest, TooSmallARoomIsTakenForTheLeast) {
  place({.kind = Kind::kRow, .places = {{.control = "a", .share = 1}, {.control = "b", .share = 1}}},
        {0, 0, 3, 3});
  EXPECT_EQ(placed["b"], (Rectangle{52, 0, 50, 10}));
}

constexpr Rectangle kFirstScreen{0, 0, 1280, 994};

TEST(CentredTest, AWindowComesUpInTheMiddleOfItsOwner) {
  EXPECT_EQ(centred({200, 100}, {300, 200, 600, 400}, kFirstScreen), (Rectangle{500, 350, 200, 100}));
}

TEST(CentredTest, ItStaysOnTheScreenOfAnOwnerBesideOrAboveTheFirstScreen) {
  const Rectangle leftScreen{-1920, -200, 1920, 1080};
  EXPECT_EQ(centred({200, 100}, {-1500, 100, 600, 400}, leftScreen), (Rectangle{-1300, 250, 200, 100}));
  const Rectangle upperScreen{0, -1080, 1920, 1040};
  EXPECT_EQ(centred({200, 100}, {300, -900, 600, 400}, upperScreen), (Rectangle{500, -750, 200, 100}));
}

TEST(CentredTest, OfAnOwnerThatHangsOverAnEdgeItIsSeenAsAWhole) {
  EXPECT_EQ(centred({200, 100}, {-500, -300, 600, 400}, kFirstScreen), (Rectangle{0, 0, 200, 100}));
  EXPECT_EQ(centred({200, 100}, {1100, 900, 600, 400}, kFirstScreen), (Rectangle{1080, 894, 200, 100}));
  const Rectangle leftScreen{-1920, -200, 1920, 1080};
  EXPECT_EQ(centred({200, 100}, {-2300, -500, 600, 400}, leftScreen), (Rectangle{-1920, -200, 200, 100}));
}

TEST(CentredTest, OfOneThatIsLargerThanTheScreenTheCaptionCanBeReached) {
  EXPECT_EQ(centred({2000, 1200}, {300, 200, 600, 400}, kFirstScreen), (Rectangle{0, 0, 2000, 1200}));
}

TEST_F(PlacingTest, PlacesOfTheMainWindowStandInEachOtherButNeverCrossOver) {
  const WindowLayout layout = mainLayout();
  place(layout.body, {0, 0, 900, 700});
  const Rectangle outer = placed["fraImportType"];
  const Rectangle server = placed["txtImportServer"];
  EXPECT_GT(server.left, outer.left);
  EXPECT_LE(server.left + server.width, outer.left + outer.width);
  EXPECT_EQ(placed["fraExportServer"], placed["fraExportFile"]) << "they share one room";
  EXPECT_EQ(placed["lstFolders"].width, placed["lstDirectories"].width);
  EXPECT_GE(placed["Frame1"].top, placed["Frame4"].top + placed["Frame4"].height);
  EXPECT_GE(placed["fraNewValues"].left, outer.left + outer.width);
}

}  // namespace
}  // namespace trelvin::desktop
