#include "platform/windows/access_lists.h"

#include <string>
#include <utility>
#include <vector>

namespace trelvin {

namespace {

class SecurityList final : public RecordList {
 public:
  SecurityList(const std::string& path, std::unique_ptr<SecuredObject> object, LastError lastError)
      : RecordList(path, object->read(), std::move(lastError)), object_(std::move(object)) {}

 private:
  void write(const std::vector<AccessRecord>& records, bool handsDown) override {
    if (secondApplyFlag()) object_->findHeirs();
    object_->write(records);
    if (handsDown) object_->handDown();
  }

  std::unique_ptr<SecuredObject> object_;
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
      return std::make_unique<SecurityList>(path_, store_->open(path_), lastError_);
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
