// The process itself, and its turn in the window system.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/value.h"

namespace trelvin {

// App.* and Command$.
class Application {
 public:
  Application() = default;
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  virtual ~Application() = default;

  [[nodiscard]] virtual std::string path() const = 0;  // folder of the executable, no trailing backslash
  [[nodiscard]] virtual std::string commandLine() const = 0;  // the raw text behind the program's name
  // The version that this program was built as.
  [[nodiscard]] virtual std::int32_t versionMajor() const { return TRELVIN_VERSION_MAJOR; }
  [[nodiscard]] virtual std::int32_t versionMinor() const { return TRELVIN_VERSION_MINOR; }
  // Whether another instance of this executable runs. The first call claims the place for this process.
  virtual bool prevInstance() = 0;
  // Ends the process at once, with no event routine run any more.
  [[noreturn]] virtual void end(int exitCode) = 0;
};

// The window system's loop.
class Events {
 public:
  Events() = default;
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;
  virtual ~Events() = default;

  virtual void doEvents() = 0;  // gives way to whatever waits: clicks, timers, sockets
  virtual void beep() = 0;
  // How far a piece of long work has got, under its title. Nothing to do where nobody watches.
  virtual void showProgress(std::string_view /*title*/, std::uint64_t /*done*/, std::uint64_t /*found*/) {}
};

class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock() = default;

  [[nodiscard]] virtual Date now() const = 0;  // local time
  // Forms of the locale in force.
  [[nodiscard]] virtual std::string generalText(const Date& date) const = 0;
  [[nodiscard]] virtual std::string shortDate(const Date& date) const = 0;
  [[nodiscard]] virtual std::string shortTime(const Date& date) const = 0;
};

}  // namespace trelvin
