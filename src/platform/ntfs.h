// Access lists of files and folders, after the control that reads and writes them: its members by their names
// and in their order.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace trelvin {

// One entry of a list. The fifteen values carry all of an entry but its account: type, flags, mask and
// whatever else an equal copy needs. Nobody but the control attaches a meaning to them.
class AccessEntry {
 public:
  AccessEntry() = default;
  AccessEntry(const AccessEntry&) = delete;
  AccessEntry& operator=(const AccessEntry&) = delete;
  virtual ~AccessEntry() = default;

  static constexpr int kValueCount = 15;
  [[nodiscard]] virtual std::string accountName() const = 0;  // DOMAIN\name
  virtual void setAccountName(std::string_view name) = 0;
  // accessValue1 to accessValue15. Fail with 9 for another index.
  [[nodiscard]] virtual std::int32_t accessValue(int index) const = 0;
  virtual void setAccessValue(int index, std::int32_t value) = 0;
};

// The list of one path, as it was when it was taken; changes reach the path with writeAccounts.
class AccessList {
 public:
  AccessList() = default;
  AccessList(const AccessList&) = delete;
  AccessList& operator=(const AccessList&) = delete;
  virtual ~AccessList() = default;

  // The entries that the path holds itself, in the order of the list.
  virtual void forEachAccount(const std::function<void(const AccessEntry& entry)>& visit) const = 0;
  // A new, empty entry, which the list keeps; valid until the list changes again.
  virtual AccessEntry& addAccount() = 0;
  // Counted from 1; fails with 9 where there is no entry.
  virtual void removeAccount(std::int32_t index) = 0;
  // Applies the list to the path. 0x80020009 for an account that can't be resolved and for a path that can't
  // be written; the path then keeps the list that it had.
  virtual void writeAccounts() = 0;
  // Whether subfolders and whether files inherit anew what a folder hands down. The second flag has
  // writeAccounts do that for the files right in the folder; what lies in a subfolder waits for that folder's
  // own turn. Nothing does it for subfolders: writeAccounts fails with 0x80020009 when the first flag is set.
  // A write right behind a removal is taken for a step on the way to an empty list and hands nothing down;
  // the next write does, and every copy ends with one.
  virtual void setFirstApplyFlag(bool flag) = 0;
  virtual void setSecondApplyFlag(bool flag) = 0;
};

class NtfsControl {
 public:
  NtfsControl() = default;
  NtfsControl(const NtfsControl&) = delete;
  NtfsControl& operator=(const NtfsControl&) = delete;
  virtual ~NtfsControl() = default;

  // The path that the control works on, in the program's form.
  virtual void setFileOrDirectory(std::string_view path) = 0;
  // 0x80020009 for a path that isn't there or can't be read.
  virtual std::unique_ptr<AccessList> getAccounts() = 0;
  // A text about the last failure, with path and cause; empty when there was none.
  [[nodiscard]] virtual std::string lastError() const = 0;
};

}  // namespace trelvin
