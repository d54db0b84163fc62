#include <gtest/gtest.h>

#include <ctime>

#include "contract/facilities.h"

namespace trelvin::test {
namespace {

Date evening() {
  Date date;
  date.parts.tm_year = 2004 - 1900;
  date.parts.tm_mon = 2;
  date.parts.tm_mday = 7;
  date.parts.tm_hour = 22;
  date.parts.tm_min = 45;
  date.parts.tm_sec = 59;
  return date;
}

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

TEST(ClockContract, NowIsTheLocalTime) {
  const std::time_t before = std::time(nullptr);
  std::tm now = systemClock()->now().parts;
  now.tm_isdst = -1;
  const std::time_t told = std::mktime(&now);
  EXPECT_GE(told, before);
  EXPECT_LE(told, std::time(nullptr));
}

TEST(ClockContract, TheGeneralFormHoldsDateAndTimeToTheSecond) {
  const std::string text = systemClock()->generalText(evening());
  EXPECT_TRUE(holds(text, "45") && holds(text, "59")) << text;
  EXPECT_TRUE(text.starts_with(systemClock()->shortDate(evening()))) << text;
}

TEST(ClockContract, TheShortFormsHoldDayAndMinuteAlone) {
  const std::string date = systemClock()->shortDate(evening());
  EXPECT_TRUE(holds(date, "04") && holds(date, "7")) << date;
  EXPECT_FALSE(holds(date, "45")) << date;
  const std::string time = systemClock()->shortTime(evening());
  EXPECT_TRUE(holds(time, "45")) << time;
  EXPECT_FALSE(holds(time, "59")) << time;
}

}  // namespace
}  // namespace trelvin::test
