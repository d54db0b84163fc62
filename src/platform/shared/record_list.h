// Access lists that are kept entry by entry until they are written: what every system's control has in
// common.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/err.h"
#include "platform/ntfs.h"

namespace trelvin {

// An entry's account and its fifteen values, value 1 at place 0.
struct AccessRecord {
  std::string account;
  std::array<std::int32_t, AccessEntry::kValueCount> values{};
  // The system's own key of the account, byte for byte; empty when there is only the name to go by.
  std::vector<std::uint8_t> accountKey{};
};

class RecordEntry final : public AccessEntry {
 public:
  RecordEntry() = default;
  explicit RecordEntry(AccessRecord record) : record_(std::move(record)) {}

  [[nodiscard]] const AccessRecord& record() const { return record_; }

  [[nodiscard]] std::string accountName() const override { return record_.account; }
  void setAccountName(std::string_view name) override {
    record_.account = name;
    record_.accountKey.clear();
  }
  [[nodiscard]] std::int32_t accessValue(int index) const override;
  void setAccessValue(int index, std::int32_t value) override;

 private:
  AccessRecord record_;
};

// 0x80020009 with the path, what couldn't be done ("read", "written") and the cause.
Failure accessListFailure(const std::string& path, const char* undone, const std::string& cause);

// The text of the last failure; a list may be used longer than the control that it shares it with.
using LastError = std::shared_ptr<std::string>;

// Keeps the text of a failure for the control's LastError.
template <typename Operation>
auto recorded(const LastError& lastError, Operation&& operation) {
  try {
    return std::forward<Operation>(operation)();
  } catch (const Failure& failure) {
    *lastError = failure.description();
    throw;
  }
}

// A list in hand. What is left to a system is to write it.
class RecordList : public AccessList {
 public:
  RecordList(std::string path, std::vector<AccessRecord> records, LastError lastError);

  void forEachAccount(const std::function<void(const AccessEntry& entry)>& visit) const final;
  AccessEntry& addAccount() final;
  void removeAccount(std::int32_t index) final;
  void writeAccounts() final;
  void setFirstApplyFlag(bool flag) final { firstApplyFlag_ = flag; }
  void setSecondApplyFlag(bool flag) final { secondApplyFlag_ = flag; }

 protected:
  // `handsDown` has the files right in a folder inherit anew. Not called with the first flag set.
  virtual void write(const std::vector<AccessRecord>& records, bool handsDown) = 0;
  [[nodiscard]] bool secondApplyFlag() const { return secondApplyFlag_; }

 private:
  std::string path_;
  // A list, because an entry that was handed out stays where it is.
  std::list<RecordEntry> entries_;
  bool firstApplyFlag_ = false;
  bool secondApplyFlag_ = false;
  bool isEmptying_ = false;
  LastError lastError_;
};

}  // namespace trelvin
