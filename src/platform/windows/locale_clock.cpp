#include "platform/windows/locale_clock.h"

#include <array>
#include <string>

#include "platform/windows/system_time.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

std::string timeText(const Date& date, DWORD flags) {
  const SYSTEMTIME time = systemTimeOf(date);
  std::array<wchar_t, 128> text{};
  const int length = ::GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, flags, &time, nullptr, text.data(),
                                       static_cast<int>(text.size()));
  return length > 0 ? utf8Text({text.data(), static_cast<std::size_t>(length) - 1}) : std::string();
}

class LocaleClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override {
    SYSTEMTIME time{};
    ::GetLocalTime(&time);
    return dateOf(time);
  }

  [[nodiscard]] std::string generalText(const Date& date) const override {
    return shortDate(date) + " " + timeText(date, 0);
  }

  [[nodiscard]] std::string shortDate(const Date& date) const override {
    const SYSTEMTIME time = systemTimeOf(date);
    std::array<wchar_t, 128> text{};
    const int length = ::GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr,
                                         text.data(), static_cast<int>(text.size()), nullptr);
    return length > 0 ? utf8Text({text.data(), static_cast<std::size_t>(length) - 1}) : std::string();
  }

  [[nodiscard]] std::string shortTime(const Date& date) const override {
    return timeText(date, TIME_NOSECONDS);
  }
};

}  // namespace

std::unique_ptr<Clock> makeLocaleClock() {
  return std::make_unique<LocaleClock>();
}

}  // namespace trelvin
