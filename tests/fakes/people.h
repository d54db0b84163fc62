// What a person, a clock and a window system would do, from a script.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/application.h"
#include "platform/dialogs.h"
#include "platform/platform.h"

namespace trelvin::test {

// Answers boxes from a script and keeps what they said. A box that the script does not expect fails the test
// that looks at unexpected().
class ScriptedDialogs : public Dialogs {
 public:
  Answer showMessage(const Message& message) override {
    shown.push_back(message);
    if (const auto step = onMessage) step(message);
    if (answers.empty()) return refusal(message.buttons);
    const Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  std::string inputBox(std::string_view title, std::string_view prompt,
                       std::string_view defaultText) override {
    asked.push_back(std::string(title) + "|" + std::string(prompt) + "|" + std::string(defaultText));
    if (inputs.empty()) return {};
    std::string text = inputs.front();
    inputs.pop_front();
    return text;
  }

  std::optional<std::string> chooseFileToSave(const FileChoice& choice) override {
    return choose(savesOffered, choice);
  }
  std::optional<std::string> chooseFileToOpen(const FileChoice& choice) override {
    return choose(opensOffered, choice);
  }

  std::deque<Answer> answers;
  std::deque<std::string> inputs;
  std::deque<std::string> files;  // what is chosen in file choosers; none is Cancel
  std::vector<Message> shown;
  std::vector<std::string> asked;
  std::vector<FileChoice> savesOffered;
  std::vector<FileChoice> opensOffered;
  std::function<void(const Message&)> onMessage;

 private:
  std::optional<std::string> choose(std::vector<FileChoice>& offered, const FileChoice& choice) {
    offered.push_back(choice);
    if (files.empty()) return std::nullopt;
    std::string file = files.front();
    files.pop_front();
    return file;
  }
  static Answer refusal(Buttons buttons) {
    switch (buttons) {
      case Buttons::kOk:
        return Answer::kOk;
      case Buttons::kYesNo:
        return Answer::kNo;
      case Buttons::kAbortRetryIgnore:
        return Answer::kAbort;
      default:
        return Answer::kCancel;
    }
  }
};

// Counts yields and beeps; what a person clicks during a yield is run there, and what came over the net.
class RecordedEvents : public Events {
 public:
  void doEvents() override {
    ++yields;
    if (const auto step = onYield) step(yields);  // a copy: a step may take itself away
    if (platform().sockets) platform().sockets->dispatch();
  }
  void beep() override { ++beeps; }

  int yields = 0;
  int beeps = 0;
  std::function<void(int)> onYield;
};

// A clock that stands still.
class StoppedClock : public Clock {
 public:
  StoppedClock() {
    moment.parts.tm_year = 2004 - 1900;
    moment.parts.tm_mon = 2;
    moment.parts.tm_mday = 7;
    moment.parts.tm_hour = 2;
    moment.parts.tm_min = 30;
    moment.parts.tm_sec = 5;
  }
  [[nodiscard]] Date now() const override { return moment; }
  [[nodiscard]] std::string generalText(const Date& /*date*/) const override { return "NOW"; }
  [[nodiscard]] std::string shortDate(const Date& date) const override {
    return two(date.parts.tm_mday) + "." + two(date.parts.tm_mon + 1) + "." +
           std::to_string(date.parts.tm_year + 1900);
  }
  [[nodiscard]] std::string shortTime(const Date& date) const override {
    return two(date.parts.tm_hour) + ":" + two(date.parts.tm_min);
  }

  Date moment;

 private:
  static std::string two(int number) { return (number < 10 ? "0" : "") + std::to_string(number); }
};

// Thrown where the real process would end.
struct ProcessEnded {
  int exitCode;
};

class FakeApplication : public Application {
 public:
  explicit FakeApplication(std::string folder) : folder_(std::move(folder)) {}
  [[nodiscard]] std::string path() const override { return folder_; }
  [[nodiscard]] std::string commandLine() const override { return command; }
  bool prevInstance() override { return isSecond; }
  [[noreturn]] void end(int exitCode) override { throw ProcessEnded{exitCode}; }

  [[nodiscard]] std::int32_t versionMajor() const override { return major; }
  [[nodiscard]] std::int32_t versionMinor() const override { return minor; }

  std::string command;
  bool isSecond = false;
  std::int32_t major = TRELVIN_VERSION_MAJOR;
  std::int32_t minor = TRELVIN_VERSION_MINOR;

 private:
  std::string folder_;
};

}  // namespace trelvin::test
