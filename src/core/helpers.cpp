#include "core/helpers.h"

#include "core/err.h"
#include "core/text.h"
#include "platform/platform.h"
#include "window/controls.h"

namespace trelvin {

std::string quoteSql(const Value& value) {
  if (value.isNull()) return {};
  return replaceAll(value.toText(), "'", "''");
}

void removeDuplicates(ListControl& list) {
  std::int32_t i = 0;
  while (i < list.listCount()) {
    // A missing neighbour reads as the empty text; it must not pass for the equal of an empty last entry.
    const bool isLast = i + 1 >= list.listCount();
    if (!isLast && list.list(i) == list.list(i + 1)) {
      attempt([&] { list.removeItem(i + 1); });
      attempt([&] { list.refresh(); });
    } else {
      ++i;
    }
  }
}

std::string ReverseString(std::string_view text) {
  std::string result;
  handled("ReverseString Error ", [&] { result = reversed(text); });
  return result;
}

std::string padTwoDigits(const Value& value) {
  std::string text = value.toText();
  return characterCount(text) < 2 ? "0" + text : text;
}

std::string programVersion() {
  const Application& application = *platform().application;
  return std::to_string(application.versionMajor()) + "." + std::to_string(application.versionMinor());
}

}  // namespace trelvin
