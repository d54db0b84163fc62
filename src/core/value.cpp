#include "core/value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>

#include "core/err.h"
#include "core/text.h"

namespace trelvin {

namespace {

[[noreturn]] void mismatch() {
  throw Failure(error_number::kTypeMismatch);
}

// A reading head over the text of a number.
struct NumberText {
  std::string_view rest;

  bool take(char expected) {
    if (rest.empty() || rest.front() != expected) return false;
    rest.remove_prefix(1);
    return true;
  }
  bool takeDigits(std::string& digits, bool groups) {
    bool any = false;
    while (!rest.empty() &&
           ((rest.front() >= '0' && rest.front() <= '9') || (groups && any && rest.front() == ','))) {
      if (rest.front() != ',') digits += rest.front();
      any = true;
      rest.remove_prefix(1);
    }
    return any;
  }
};

// &H10 and &O17: 32 bits whose top bit is the sign.
std::optional<double> prefixedNumber(std::string_view text) {
  if (text.size() < 3 || text[0] != '&') return std::nullopt;
  const char kind = text[1];
  const int base = kind == 'H' || kind == 'h' ? 16 : (kind == 'O' || kind == 'o' ? 8 : 0);
  if (base == 0) return std::nullopt;
  std::uint64_t bits = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), bits, base);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) mismatch();
  if (error != std::errc() || bits > 0xFFFFFFFFU) throw Failure(error_number::kOverflow);
  return static_cast<std::int32_t>(bits);
}

std::string exponentOf(NumberText& number) {
  if (number.rest.empty()) return {};
  const char mark = number.rest.front();
  if (mark != 'e' && mark != 'E' && mark != 'd' && mark != 'D') return {};
  number.rest.remove_prefix(1);
  std::string exponent = "e";
  if (number.take('-')) {
    exponent += '-';
  } else {
    number.take('+');
  }
  if (!number.takeDigits(exponent, false)) mismatch();
  return exponent;
}

bool takeSign(NumberText& number, bool& negative) {
  if (number.take('-')) {
    negative = true;
    return true;
  }
  return number.take('+');
}

double decimalNumber(std::string_view text) {
  NumberText number{text};
  bool negative = false;
  const bool signedInFront = takeSign(number, negative);
  if (signedInFront) number.rest = trimmed(number.rest);
  std::string digits;
  bool any = number.takeDigits(digits, true);
  if (number.take('.')) {
    digits += '.';
    any = number.takeDigits(digits, false) || any;
  }
  if (!any) mismatch();
  digits += exponentOf(number);
  if (!signedInFront) takeSign(number, negative);
  if (!number.rest.empty()) mismatch();
  double result = 0;
  const std::errc error = std::from_chars(digits.data(), digits.data() + digits.size(), result).ec;
  // What is out of range by being tiny, such as 1E-400, is nought.
  if (error == std::errc::result_out_of_range && digits.find("e-") == std::string::npos) {
    throw Failure(error_number::kOverflow);
  }
  return negative ? -result : result;
}

template <typename Integer>
Integer narrowed(double number) {
  // The platform rounds halves to the even neighbour, which is the default rounding mode's way too.
  const double whole = std::nearbyint(number);
  if (!(whole >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
        whole <= static_cast<double>(std::numeric_limits<Integer>::max()))) {
    throw Failure(error_number::kOverflow);
  }
  return static_cast<Integer>(whole);
}

std::string textOf(const Date& date) {
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &date.parts);
  return {text.data(), length};
}

// Days since 30 December 1899, the way a date is held as a number.
double serialOf(const Date& date) {
  const int year = date.parts.tm_year + 1900;
  const int month = date.parts.tm_mon + 1;
  const int shifted = (14 - month) / 12;
  const int y = year + 4800 - shifted;
  const int m = month + 12 * shifted - 3;
  const int julian = date.parts.tm_mday + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400 - 32045;
  constexpr int kJulianOfDayNought = 2415019;
  const double seconds = date.parts.tm_hour * 3600.0 + date.parts.tm_min * 60.0 + date.parts.tm_sec;
  return julian - kJulianOfDayNought + seconds / 86400.0;
}

}  // namespace

bool operator==(const Date& left, const Date& right) {
  return textOf(left) == textOf(right);
}

std::string textOf(bool flag) {
  return flag ? "True" : "False";
}

std::string textOf(double number) {
  if (number == 0) return "0";
  std::array<char, 40> buffer{};
  const double size = std::fabs(number);
  if (size >= 1e15 || size < 1e-15) {
    std::snprintf(buffer.data(), buffer.size(), "%.14E", number);
    std::string text = buffer.data();
    const std::size_t mark = text.find('E');
    std::string mantissa = text.substr(0, mark);
    while (mantissa.back() == '0') mantissa.pop_back();
    if (mantissa.back() == '.') mantissa.pop_back();
    return mantissa + text.substr(mark);
  }
  const int decimals = 14 - static_cast<int>(std::floor(std::log10(size)));
  std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals > 0 ? decimals : 0, number);
  std::string text = buffer.data();
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

double numberOf(const std::string& text) {
  const std::string_view inner = trimmed(text);
  if (const std::optional<double> prefixed = prefixedNumber(inner)) return *prefixed;
  return decimalNumber(inner);
}

std::int32_t longOf(double number) {
  return narrowed<std::int32_t>(number);
}
std::int16_t integerOf(double number) {
  return narrowed<std::int16_t>(number);
}
std::int32_t longOf(const std::string& text) {
  return longOf(numberOf(text));
}
std::int16_t integerOf(const std::string& text) {
  return integerOf(numberOf(text));
}

VarType Value::varType() const {
  constexpr std::array kTypes{kVarEmpty, kVarNull, kVarBoolean, kVarInteger, kVarLong, kVarDouble,
                              kVarDate,  kVarText, kVarObject,  kVarList,    kVarBytes};
  return kTypes[held_.index()];
}

std::string Value::toText() const {
  switch (varType()) {
    case kVarEmpty:
      return {};
    case kVarText:
      return std::get<std::string>(held_);
    case kVarBoolean:
      return textOf(std::get<bool>(held_));
    case kVarInteger:
      return std::to_string(std::get<std::int16_t>(held_));
    case kVarLong:
      return std::to_string(std::get<std::int32_t>(held_));
    case kVarDouble:
      return textOf(std::get<double>(held_));
    case kVarDate:
      return textOf(std::get<Date>(held_));
    case kVarNull:
      throw Failure(error_number::kInvalidUseOfNull);
    case kVarObject:
      throw Failure(error_number::kNotSupportedByObject);
    default:
      mismatch();
  }
}

double Value::toDouble() const {
  switch (varType()) {
    case kVarEmpty:
      return 0;
    case kVarText:
      return numberOf(std::get<std::string>(held_));
    case kVarBoolean:
      return std::get<bool>(held_) ? -1 : 0;
    case kVarInteger:
      return std::get<std::int16_t>(held_);
    case kVarLong:
      return std::get<std::int32_t>(held_);
    case kVarDouble:
      return std::get<double>(held_);
    case kVarDate:
      return serialOf(std::get<Date>(held_));
    case kVarNull:
      throw Failure(error_number::kInvalidUseOfNull);
    case kVarObject:
      throw Failure(error_number::kNotSupportedByObject);
    default:
      mismatch();
  }
}

std::int32_t Value::toLong() const {
  return longOf(toDouble());
}
std::int16_t Value::toInteger() const {
  return integerOf(toDouble());
}

bool Value::toBoolean() const {
  if (varType() == kVarText) {
    const std::string& text = std::get<std::string>(held_);
    if (equalsIgnoringCase(text, "True")) return true;
    if (equalsIgnoringCase(text, "False")) return false;
  }
  return toDouble() != 0;
}

const Value::List& Value::list() const {
  if (varType() != kVarList) mismatch();
  return *std::get<SharedList>(held_);
}

const Value::Bytes& Value::bytes() const {
  if (varType() != kVarBytes) mismatch();
  return *std::get<SharedBytes>(held_);
}

const Value::Object& Value::object() const {
  if (varType() != kVarObject) mismatch();
  return std::get<Object>(held_);
}

const Date& Value::date() const {
  if (varType() != kVarDate) mismatch();
  return std::get<Date>(held_);
}

std::int32_t Value::upperBound() const {
  return static_cast<std::int32_t>(list().size()) - 1;
}

bool Value::operator==(const Value& other) const {
  if (held_.index() != other.held_.index()) return false;
  if (varType() == kVarList) return list() == other.list();
  if (varType() == kVarBytes) return bytes() == other.bytes();
  return held_ == other.held_;
}

}  // namespace trelvin
