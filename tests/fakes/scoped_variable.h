// An environment variable for the length of a test.
#pragma once

#include <cstdlib>
#include <string>

namespace trelvin::test {

// Gives the variable a value, and its former one, or none, back at the end.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : name_(name) {
    const char* old = std::getenv(name);
    if (old != nullptr) old_ = old;
    wasSet_ = old != nullptr;
    setenv(name, value.c_str(), 1);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { wasSet_ ? setenv(name_, old_.c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::string old_;
  bool wasSet_ = false;
};

}  // namespace trelvin::test
