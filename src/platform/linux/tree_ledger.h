// What the threads of a copy tell the one that started it.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

// The shell's own numbers and those of the system under it, for what can keep an item from travelling.
namespace shell_number {
inline constexpr std::int32_t kFileNotFound = 2;
inline constexpr std::int32_t kPathNotFound = 3;
inline constexpr std::int32_t kTooManyOpenFiles = 4;
inline constexpr std::int32_t kAccessDenied = 5;
inline constexpr std::int32_t kOutOfMemory = 8;
inline constexpr std::int32_t kGeneralFailure = 31;
inline constexpr std::int32_t kSharingViolation = 32;
inline constexpr std::int32_t kNotSupported = 50;
inline constexpr std::int32_t kDiskFull = 112;
inline constexpr std::int32_t kSameFolder = 0x71;
inline constexpr std::int32_t kTargetInSource = 0x76;
inline constexpr std::int32_t kInvalidPaths = 0x7C;
inline constexpr std::int32_t kFileInPlace = 0x7E;
inline constexpr std::int32_t kFolderInPlace = 0x80;
inline constexpr std::int32_t kAlreadyExists = 183;
inline constexpr std::int32_t kNameTooLong = 206;
inline constexpr std::int32_t kFileTooLarge = 223;
inline constexpr std::int32_t kNoSource = 0x402;
inline constexpr std::int32_t kDeviceFailure = 1117;
}  // namespace shell_number

// Every member may be called from any thread.
class TreeLedger {
 public:
  // An item that did not travel.
  void add(std::string_view path, std::int32_t number, std::string_view cause) noexcept;
  // What the operation that is being left threw; for a catch clause.
  void addCurrent(std::string_view folder, std::string_view name) noexcept;

  // Runs what is to be done for one item of a folder; an empty name stands for the folder itself. A failure
  // is written down and the copy goes on. Returns whether it went through.
  template <typename Operation>
  bool tryItem(std::string_view folder, std::string_view name, Operation&& operation) noexcept {
    try {
      operation();
      return true;
    } catch (...) {
      addCurrent(folder, name);
    }
    return false;
  }

  // The lines since the last call.
  [[nodiscard]] std::vector<std::string> takeLines();
  // 0 as long as everything travelled.
  [[nodiscard]] std::int32_t firstNumber() const { return firstNumber_; }
  // Nothing more is to be copied.
  [[nodiscard]] bool isDiskFull() const { return isDiskFull_; }

  std::atomic<std::uint64_t> filesFound{0};
  std::atomic<std::uint64_t> filesDone{0};

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
  std::atomic<std::int32_t> firstNumber_{0};
  std::atomic<bool> isDiskFull_{false};
};

}  // namespace trelvin
