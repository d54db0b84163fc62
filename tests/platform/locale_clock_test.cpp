#include "platform/linux/locale_clock.h"

#include <gtest/gtest.h>

#include <clocale>
#include <ctime>
#include <optional>

#include "fakes/scoped_locale.h"

namespace trelvin {
namespace {

Date date(int year, int month, int day, int hour, int minute, int second) {
  Date date;
  date.parts.tm_year = year - 1900;
  date.parts.tm_mon = month - 1;
  date.parts.tm_mday = day;
  date.parts.tm_hour = hour;
  date.parts.tm_min = minute;
  date.parts.tm_sec = second;
  return date;
}

class LocaleClockTest : public testing::Test {
 protected:
  bool use(const std::string& definition, const std::string& charset) {
    return locale_.emplace(LC_TIME, definition, charset).isInForce();
  }

  const Date evening_ = date(2006, 3, 9, 21, 5, 7);
  std::optional<test::ScopedLocale> locale_;
  std::unique_ptr<Clock> clock_ = makeLocaleClock();
};

TEST_F(LocaleClockTest, NowIsTheLocalTime) {
  const std::time_t before = std::time(nullptr);
  std::tm parts = clock_->now().parts;
  const std::time_t now = std::mktime(&parts);
  EXPECT_GE(now, before);
  EXPECT_LE(now, std::time(nullptr));
}

TEST_F(LocaleClockTest, WithoutALocaleTheFormsArePlain) {
  EXPECT_EQ(clock_->generalText(evening_), "03/09/06 21:05:07");
  EXPECT_EQ(clock_->shortDate(evening_), "03/09/06");
  EXPECT_EQ(clock_->shortTime(evening_), "21:05");
}

TEST_F(LocaleClockTest, EachMomentHasATextOfItsOwn) {
  EXPECT_EQ(clock_->generalText(evening_), "03/09/06 21:05:07");
  EXPECT_EQ(clock_->generalText(date(2006, 3, 9, 21, 5, 8)), "03/09/06 21:05:08");
  EXPECT_EQ(clock_->generalText(date(2006, 3, 9, 21, 4, 8)), "03/09/06 21:04:08");
  EXPECT_EQ(clock_->generalText(date(2006, 3, 9, 20, 4, 8)), "03/09/06 20:04:08");
  EXPECT_EQ(clock_->generalText(date(2006, 3, 8, 20, 4, 8)), "03/08/06 20:04:08");
  EXPECT_EQ(clock_->generalText(date(2006, 2, 8, 20, 4, 8)), "02/08/06 20:04:08");
  EXPECT_EQ(clock_->generalText(date(2005, 2, 8, 20, 4, 8)), "02/08/05 20:04:08");
  EXPECT_EQ(clock_->generalText(evening_), "03/09/06 21:05:07");
}

TEST_F(LocaleClockTest, TheFormIsThatOfTheLocaleOfTheMoment) {
  EXPECT_EQ(clock_->generalText(evening_), "03/09/06 21:05:07");
  if (!use("de_DE", "UTF-8")) GTEST_SKIP() << "localedef or its sources are not installed";
  EXPECT_EQ(clock_->generalText(evening_), "09.03.2006 21:05:07");
  locale_.reset();
  EXPECT_EQ(clock_->generalText(evening_), "03/09/06 21:05:07");
}

TEST_F(LocaleClockTest, ALocaleOf24HoursShowsThem) {
  if (!use("de_DE", "UTF-8")) GTEST_SKIP() << "localedef or its sources are not installed";
  EXPECT_EQ(clock_->generalText(evening_), "09.03.2006 21:05:07");
  EXPECT_EQ(clock_->shortDate(evening_), "09.03.2006");
  EXPECT_EQ(clock_->shortTime(evening_), "21:05");
}

TEST_F(LocaleClockTest, ALocaleOf12HoursShowsTheHalfOfTheDay) {
  if (!use("en_US", "UTF-8")) GTEST_SKIP() << "localedef or its sources are not installed";
  EXPECT_EQ(clock_->generalText(evening_), "03/09/2006 09:05:07 PM");
  EXPECT_EQ(clock_->shortTime(evening_), "09:05 PM");
  EXPECT_EQ(clock_->shortTime(date(2006, 3, 9, 0, 0, 0)), "12:00 AM");
}

TEST_F(LocaleClockTest, ALocaleWithSignsBehindItsNumbersKeepsThoseOfHourAndMinute) {
  if (!use("ja_JP", "UTF-8")) GTEST_SKIP() << "localedef or its sources are not installed";
  EXPECT_EQ(clock_->shortTime(evening_), "21時05分");
}

TEST_F(LocaleClockTest, TextsOfALocaleThatIsNotUtf8AreUtf8AllTheSame) {
  if (!use("fr_FR", "ISO-8859-1")) GTEST_SKIP() << "localedef or its sources are not installed";
  EXPECT_EQ(clock_->shortTime(evening_), "21:05");
}

TEST_F(LocaleClockTest, ADateThatIsNoneIsShownWithoutHarm) {
  EXPECT_FALSE(clock_->shortDate(date(2006, 25, 99, 30, 80, 90)).empty());
  EXPECT_FALSE(clock_->shortDate(Date{}).empty());
}

TEST(ShortTimeFormatTest, SecondsAreTakenOutWithWhatPartsThemFromTheMinutes) {
  EXPECT_EQ(shortTimeFormat("%H:%M:%S", ""), "%H:%M");
  EXPECT_EQ(shortTimeFormat("%T", ""), "%H:%M");
  EXPECT_EQ(shortTimeFormat("%H.%M.%S", ""), "%H.%M");
  EXPECT_EQ(shortTimeFormat("%k,%M,%S", ""), "%k,%M");
  EXPECT_EQ(shortTimeFormat("%H時%M分%S秒", ""), "%H時%M分");
  EXPECT_EQ(shortTimeFormat("%OH:%OM:%OS", ""), "%OH:%OM");
}

TEST(ShortTimeFormatTest, TheHalfOfTheDayStays) {
  EXPECT_EQ(shortTimeFormat("%r", "%I:%M:%S %p"), "%I:%M %p");
  EXPECT_EQ(shortTimeFormat("%r", ""), "%I:%M %p");
  EXPECT_EQ(shortTimeFormat("%p %I:%M:%S", ""), "%p %I:%M");
  EXPECT_EQ(shortTimeFormat("%p%I時%M分%S秒", ""), "%p%I時%M分");
}

TEST(ShortTimeFormatTest, TheZoneIsTakenOut) {
  EXPECT_EQ(shortTimeFormat("%I:%M:%S %p %Z", ""), "%I:%M %p");
  EXPECT_EQ(shortTimeFormat("%Z %I:%M:%S ", ""), "%I:%M");
}

TEST(ShortTimeFormatTest, AFormatWithoutSecondsStaysAsItIs) {
  EXPECT_EQ(shortTimeFormat("%H:%M", ""), "%H:%M");
  EXPECT_EQ(shortTimeFormat("", ""), "");
  EXPECT_EQ(shortTimeFormat("%", ""), "%");
  EXPECT_EQ(shortTimeFormat("100%%", ""), "100%%");
}

}  // namespace
}  // namespace trelvin
