// Access lists in memory, a record of every call that reaches them, and a rule that makes chosen calls fail.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ntfs.h"

namespace trelvin::test {

struct Account {
  std::string name;
  std::array<std::int32_t, AccessEntry::kValueCount> values{};
  bool operator==(const Account&) const = default;
};
using Accounts = std::vector<Account>;

// What the disks of all servers hold, and what the controls on them were asked for. A call is the control's
// name, the member and what goes into it: "NTFSCtl2 removeAccount 1". Reading a member of an entry reads
// "NTFSCtl1 accountName" and "NTFSCtl1 accessValue14"; writing it "NTFSCtl2 accountName = WEB2\anna" and
// "NTFSCtl2 accessValue14 = 14".
class AccessLists {
 public:
  std::unique_ptr<NtfsControl> makeControl(const std::string& name);
  // Puts a control of that name into each of the form's two places.
  void placeOnMainWindow();

  // Notes the call and fails it if the rule says so.
  void note(const std::string& call);
  // Fails every call that reads like this.
  void failOn(const std::string& call, std::int32_t number);
  // Fails the n-th call that reads like this, counted from 1 and from now on.
  void failOnNth(const std::string& call, int nth, std::int32_t number);
  // The paths that were given to a control, in order.
  [[nodiscard]] std::vector<std::string> pathsGivenTo(const std::string& control) const;
  [[nodiscard]] int count(const std::string& call) const;

  std::map<std::string, Accounts> lists;                 // by path; one that isn't here is empty
  std::map<std::string, std::vector<Accounts>> written;  // each state that reached a path, in order
  std::map<std::string, std::string> lastErrors;         // by the control's name
  std::vector<std::string> calls;
  // Says which number a call fails with; nothing lets it through.
  std::function<std::optional<std::int32_t>(const std::string& call)> rule;
};

}  // namespace trelvin::test
