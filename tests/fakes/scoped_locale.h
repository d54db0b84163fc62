// A locale for the length of a test, one that the system need not have installed: it is compiled into a
// folder of its own.
#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

#include "fakes/scoped_variable.h"
#include "fakes/temp_folder.h"

namespace trelvin::test {

class ScopedLocale {
 public:
  // A category of setlocale, and the locale's definition and character set, such as "de_DE" and "UTF-8".
  ScopedLocale(int category, const std::string& definition, const std::string& charset)
      : category_(category), variable_("LC_ALL", definition + "." + charset) {
    const std::string name = definition + "." + charset;
    const std::string command = "localedef --no-archive -i " + definition + " -f " + charset + " '" +
                                (folder_ / name).string() + "' > /dev/null 2>&1";
    isInForce_ = std::system(command.c_str()) == 0 && std::setlocale(category, name.c_str()) != nullptr;
  }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;
  ~ScopedLocale() { std::setlocale(category_, "C"); }

  // False where localedef or what it compiles is not installed.
  [[nodiscard]] bool isInForce() const { return isInForce_; }

 private:
  int category_;
  TempFolder folder_;
  ScopedVariable path_{"LOCPATH", folder_.path().string()};
  ScopedVariable variable_;
  bool isInForce_ = false;
};

}  // namespace trelvin::test
