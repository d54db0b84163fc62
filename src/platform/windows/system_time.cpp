#include "platform/windows/system_time.h"

namespace trelvin {

namespace {

constexpr int kFirstYear = 1900;  // of std::tm

}  // namespace

SYSTEMTIME systemTimeOf(const Date& date) {
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(date.parts.tm_year + kFirstYear);
  time.wMonth = static_cast<WORD>(date.parts.tm_mon + 1);
  time.wDay = static_cast<WORD>(date.parts.tm_mday);
  time.wHour = static_cast<WORD>(date.parts.tm_hour);
  time.wMinute = static_cast<WORD>(date.parts.tm_min);
  time.wSecond = static_cast<WORD>(date.parts.tm_sec);
  return time;
}

Date dateOf(const SYSTEMTIME& time) {
  Date date;
  date.parts.tm_year = time.wYear - kFirstYear;
  date.parts.tm_mon = time.wMonth - 1;
  date.parts.tm_mday = time.wDay;
  date.parts.tm_hour = time.wHour;
  date.parts.tm_min = time.wMinute;
  date.parts.tm_sec = time.wSecond;
  date.parts.tm_isdst = -1;
  return date;
}

}  // namespace trelvin
