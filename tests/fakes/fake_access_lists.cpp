#include "fakes/fake_access_lists.h"

#include <algorithm>
#include <utility>

#include "core/err.h"
#include "window/frm_main.h"

namespace trelvin::test {

namespace {

std::string text(bool flag) {
  return flag ? "True" : "False";
}

class FakeEntry : public AccessEntry {
 public:
  FakeEntry(AccessLists& lists, std::string control, Account account = {})
      : lists_(lists), control_(std::move(control)), account_(std::move(account)) {}

  [[nodiscard]] std::string accountName() const override {
    lists_.note(control_ + " accountName");
    return account_.name;
  }
  void setAccountName(std::string_view name) override {
    lists_.note(control_ + " accountName = " + std::string(name));
    account_.name = name;
  }
  [[nodiscard]] std::int32_t accessValue(int index) const override {
    lists_.note(control_ + " accessValue" + std::to_string(index));
    return account_.values.at(static_cast<std::size_t>(index - 1));
  }
  void setAccessValue(int index, std::int32_t value) override {
    lists_.note(control_ + " accessValue" + std::to_string(index) + " = " + std::to_string(value));
    account_.values.at(static_cast<std::size_t>(index - 1)) = value;
  }

  [[nodiscard]] const Account& account() const { return account_; }

 private:
  AccessLists& lists_;
  std::string control_;
  Account account_;
};

// The list as it was when it was taken; writing brings it back to the path.
class FakeList : public AccessList {
 public:
  FakeList(AccessLists& lists, std::string control, std::string path)
      : lists_(lists), control_(std::move(control)), path_(std::move(path)) {
    for (const Account& account : lists_.lists[path_]) addEntry(account);
  }

  void forEachAccount(const std::function<void(const AccessEntry&)>& visit) const override {
    lists_.note(control_ + " enumerate");
    for (const auto& entry : entries_) visit(*entry);
  }
  AccessEntry& addAccount() override {
    lists_.note(control_ + " addAccount");
    return addEntry({});
  }
  void removeAccount(std::int32_t index) override {
    lists_.note(control_ + " removeAccount " + std::to_string(index));
    if (index < 1 || static_cast<std::size_t>(index) > entries_.size()) {
      throw Failure(error_number::kSubscriptOutOfRange);
    }
    entries_.erase(entries_.begin() + index - 1);
  }
  void writeAccounts() override {
    lists_.note(control_ + " writeAccounts");
    Accounts accounts;
    for (const auto& entry : entries_) accounts.push_back(entry->account());
    lists_.lists[path_] = accounts;
    lists_.written[path_].push_back(accounts);
  }
  void setFirstApplyFlag(bool flag) override { lists_.note(control_ + " firstApplyFlag = " + text(flag)); }
  void setSecondApplyFlag(bool flag) override { lists_.note(control_ + " secondApplyFlag = " + text(flag)); }

 private:
  AccessEntry& addEntry(const Account& account) {
    entries_.push_back(std::make_unique<FakeEntry>(lists_, control_, account));
    return *entries_.back();
  }

  AccessLists& lists_;
  std::string control_;
  std::string path_;
  std::vector<std::unique_ptr<FakeEntry>> entries_;
};

class FakeControl : public NtfsControl {
 public:
  FakeControl(AccessLists& lists, std::string name) : lists_(lists), name_(std::move(name)) {}

  void setFileOrDirectory(std::string_view path) override {
    lists_.note(name_ + " FileOrDirectory = " + std::string(path));
    path_ = path;
  }
  std::unique_ptr<AccessList> getAccounts() override {
    lists_.note(name_ + " GetAccounts");
    return std::make_unique<FakeList>(lists_, name_, path_);
  }
  [[nodiscard]] std::string lastError() const override {
    lists_.note(name_ + " LastError");
    return lists_.lastErrors[name_];
  }

 private:
  AccessLists& lists_;
  std::string name_;
  std::string path_;
};

}  // namespace

std::unique_ptr<NtfsControl> AccessLists::makeControl(const std::string& name) {
  return std::make_unique<FakeControl>(*this, name);
}

void AccessLists::placeOnMainWindow() {
  for (NtfsControlHost* place : {&frmMain.NTFSCtl1, &frmMain.NTFSCtl2}) {
    place->object = makeControl(place->name);
  }
}

void AccessLists::note(const std::string& call) {
  calls.push_back(call);
  const auto number = rule ? rule(call) : std::nullopt;
  if (number) throw Failure(*number);
}

void AccessLists::failOn(const std::string& call, std::int32_t number) {
  rule = [=](const std::string& made) { return made == call ? std::optional(number) : std::nullopt; };
}

void AccessLists::failOnNth(const std::string& call, int nth, std::int32_t number) {
  rule = [=, left = nth](const std::string& made) mutable -> std::optional<std::int32_t> {
    if (made != call || --left != 0) return std::nullopt;
    return number;
  };
}

std::vector<std::string> AccessLists::pathsGivenTo(const std::string& control) const {
  const std::string beginning = control + " FileOrDirectory = ";
  std::vector<std::string> paths;
  for (const std::string& call : calls) {
    if (call.starts_with(beginning)) paths.push_back(call.substr(beginning.size()));
  }
  return paths;
}

int AccessLists::count(const std::string& call) const {
  return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

}  // namespace trelvin::test
