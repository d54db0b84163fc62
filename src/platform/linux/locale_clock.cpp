#include "platform/linux/locale_clock.h"

#include <langinfo.h>

#include <array>
#include <cctype>
#include <clocale>
#include <ctime>
#include <tuple>

#include "core/text.h"
#include "platform/linux/file_text.h"

namespace trelvin {

namespace {

// One item of a time format: a conversion such as %H or %-I, or the text up to the next one.
std::string_view itemAt(std::string_view format, std::size_t begin) {
  if (format[begin] != '%') return format.substr(begin, format.find('%', begin) - begin);
  // Flags, width and the modifiers E and O stand between the sign and the letter.
  const std::size_t letter = format.find_first_not_of("_-0^#123456789EO", begin + 1);
  return format.substr(begin, letter == format.npos ? format.npos : letter + 1 - begin);
}

bool isConversion(std::string_view item, char letter) {
  return item.starts_with('%') && item.back() == letter;
}

// "12.30.45" has its point before the seconds; in other scripts each number has its own mark behind it.
bool endsInSeparator(std::string_view text) {
  return !text.empty() && std::ispunct(static_cast<unsigned char>(text.back())) != 0 && !text.ends_with('%');
}

void dropMarkOfSeconds(std::string_view& rest) {
  const std::size_t end = rest.find_first_of(" %");
  rest.remove_prefix(end == rest.npos ? rest.size() : end);
}

std::string withoutSeconds(std::string_view format) {
  std::string result;
  while (!format.empty()) {
    const std::string_view item = itemAt(format, 0);
    format.remove_prefix(item.size());
    if (isConversion(item, 'S')) {
      if (endsInSeparator(result)) {
        result.pop_back();
      } else {
        dropMarkOfSeconds(format);
      }
    } else if (!isConversion(item, 'Z') && !isConversion(item, 'z')) {
      result += item;
    }
  }
  return std::string(trimmed(result));
}

std::string formatted(const std::tm& parts, const std::string& format) {
  std::array<char, 256> text{};
// The format is the locale's, so no compiler can check it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const std::size_t length = std::strftime(text.data(), text.size(), format.c_str(), &parts);
#pragma GCC diagnostic pop
  // A locale need not be one of UTF-8.
  return utf8OrWindows1252({text.data(), length});
}

// A date that was put together from its numbers lacks the weekday and the zone, which some locales show.
std::tm completed(const Date& date) {
  std::tm parts = date.parts;
  std::tm local = date.parts;
  local.tm_isdst = -1;
  if (std::mktime(&local) == -1) return parts;
  parts.tm_wday = local.tm_wday;
  parts.tm_yday = local.tm_yday;
  parts.tm_isdst = local.tm_isdst;
  parts.tm_gmtoff = local.tm_gmtoff;
  parts.tm_zone = local.tm_zone;
  return parts;
}

// All that a text is made of; the name of the zone goes with its offset.
bool isSameTime(const std::tm& left, const std::tm& right) {
  const auto all = [](const std::tm& time) {
    return std::tuple(time.tm_sec, time.tm_min, time.tm_hour, time.tm_mday, time.tm_mon, time.tm_year,
                      time.tm_isdst, time.tm_gmtoff);
  };
  return all(left) == all(right);
}

class LocaleClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override {
    const std::time_t moment = std::time(nullptr);
    Date date;
    ::localtime_r(&moment, &date.parts);
    return date;
  }

  // The lines of a log come many to the second, and the zone is looked up in its file for each text.
  [[nodiscard]] std::string generalText(const Date& date) const override {
    const char* locale = std::setlocale(LC_TIME, nullptr);
    if (last_.locale != locale || !isSameTime(last_.parts, date.parts))
      last_ = {date.parts, locale, formatted(completed(date), "%x %X")};
    return last_.text;
  }

  [[nodiscard]] std::string shortDate(const Date& date) const override {
    return formatted(completed(date), "%x");
  }

  [[nodiscard]] std::string shortTime(const Date& date) const override {
    return formatted(completed(date), shortTimeFormat(::nl_langinfo(T_FMT), ::nl_langinfo(T_FMT_AMPM)));
  }

 private:
  struct Text {
    std::tm parts{};
    std::string locale;
    std::string text;
  };
  mutable Text last_;
};

}  // namespace

std::unique_ptr<Clock> makeLocaleClock() {
  return std::make_unique<LocaleClock>();
}

std::string shortTimeFormat(std::string_view time, std::string_view timeWithHalves) {
  constexpr std::string_view kPlainHalves = "%I:%M:%S %p";
  std::string format = replaceAll(time, "%r", timeWithHalves.empty() ? kPlainHalves : timeWithHalves);
  format = replaceAll(format, "%T", "%H:%M:%S");
  return withoutSeconds(format);
}

}  // namespace trelvin
