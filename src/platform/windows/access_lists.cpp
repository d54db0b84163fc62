#include "platform/windows/access_lists.h"

#include <string>
#include <utility>
#include <vector>

namespace trelvin {

namespace {

class SecurityList final : public RecordList {
 public:
  SecurityList(std::string path, std::shared_ptr<SecurityStore> store, LastError lastError)
      : RecordList(store->read(path), std::move(lastError)),
        path_(std::move(path)),
        store_(std::move(store)) {}

 private:
  void write(const std::vector<AccessRecord>& records) override {
    store_->write(path_, records, firstApplyFlag() || secondApplyFlag());
  }

  std::string path_;
  std::shared_ptr<SecurityStore> store_;
};

class SecurityControl final : public NtfsControl {
 public:
  explicit SecurityControl(std::shared_ptr<SecurityStore> store) : store_(std::move(store)) {}

  void setFileOrDirectory(std::string_view path) override {
    path_ = path;
    lastError_->clear();
  }

  std::unique_ptr<AccessList> getAccounts() override {
    return recorded(lastError_, [this]() -> std::unique_ptr<AccessList> {
      return std::make_unique<SecurityList>(path_, store_, lastError_);
    });
  }

  [[nodiscard]] std::string lastError() const override { return *lastError_; }

 private:
  std::shared_ptr<SecurityStore> store_;
  std::string path_;
  LastError lastError_ = std::make_shared<std::string>();
};

}  // namespace

std::unique_ptr<NtfsControl> makeAccessLists(std::shared_ptr<SecurityStore> store) {
  return std::make_unique<SecurityControl>(std::move(store));
}

}  // namespace trelvin
