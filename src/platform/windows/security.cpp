#include "platform/windows/security.h"

#include <map>
#include <optional>
#include <utility>

#include "core/err.h"
#include "platform/windows/inheritance.h"
#include "platform/windows/list_builder.h"
#include "platform/windows/security_entry.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

constexpr const char* kRead = "read";
constexpr const char* kWritten = "written";

[[noreturn]] void fail(const std::string& path, const char* undone, const std::string& cause) {
  throw accessListFailure(path, undone, cause);
}

void require(DWORD result, const std::string& path, const char* undone) {
  if (result != ERROR_SUCCESS) fail(path, undone, systemText(result));
}

// The server that a network path names; empty, which stands for this machine, for any other path.
std::string serverOf(const std::string& path) {
  if (!path.starts_with("\\\\")) return {};
  return path.substr(2, path.find('\\', 2) - 2);
}

// An object's owner, group and list, as they were when they were read.
class Descriptor {
 public:
  // The system's number, 0 when it is read.
  DWORD read(const OpenObject& object) {
    for (DWORD size = 0;;) {
      if (::GetKernelObjectSecurity(object.handle.get(), kWanted, bytes_.data(),
                                    static_cast<DWORD>(bytes_.size()), &size)) {
        return ERROR_SUCCESS;
      }
      const DWORD number = ::GetLastError();
      if (number != ERROR_INSUFFICIENT_BUFFER) return number;
      bytes_.resize(size);
    }
  }

  [[nodiscard]] PACL list() {
    BOOL isPresent = FALSE;
    BOOL isDefaulted = FALSE;
    PACL list = nullptr;
    ::GetSecurityDescriptorDacl(bytes_.data(), &isPresent, &list, &isDefaulted);
    return isPresent ? list : nullptr;
  }

  // Whom the entries of a creator mean on the object.
  [[nodiscard]] Heir heir(bool isContainer, const GENERIC_MAPPING& rights) {
    Heir heir{isContainer, nullptr, nullptr, rights};
    BOOL isDefaulted = FALSE;
    ::GetSecurityDescriptorOwner(bytes_.data(), &heir.owner, &isDefaulted);
    ::GetSecurityDescriptorGroup(bytes_.data(), &heir.group, &isDefaulted);
    return heir;
  }

  [[nodiscard]] bool inheritsNothing() {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    ::GetSecurityDescriptorControl(bytes_.data(), &control, &revision);
    return (control & SE_DACL_PROTECTED) != 0;
  }

 private:
  static constexpr SECURITY_INFORMATION kWanted =
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
  std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(1024);
};

// Of this object alone: the calls that know of inheritance would walk through all that lies in it. The
// system's number, 0 when it is set.
DWORD setList(const OpenObject& object, PACL list) {
  SECURITY_DESCRIPTOR descriptor{};
  ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  ::SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
  constexpr SECURITY_DESCRIPTOR_CONTROL kInheriting = SE_DACL_AUTO_INHERIT_REQ | SE_DACL_AUTO_INHERITED;
  ::SetSecurityDescriptorControl(&descriptor, kInheriting, kInheriting);
  const BOOL done = ::SetKernelObjectSecurity(object.handle.get(), DACL_SECURITY_INFORMATION, &descriptor);
  return done ? ERROR_SUCCESS : ::GetLastError();
}

class WindowsObject final : public SecuredObject {
 public:
  WindowsObject(std::string path, std::shared_ptr<ObjectTree> tree, std::shared_ptr<Accounts> accounts)
      : path_(std::move(path)),
        server_(serverOf(path_)),
        tree_(std::move(tree)),
        accounts_(std::move(accounts)) {
    require(tree_->open(path_, object_), path_, kRead);
  }

  [[nodiscard]] std::vector<AccessRecord> read() override {
    Descriptor descriptor = describe(object_, path_, kRead);
    std::vector<AccessRecord> records;
    forEachEntry(descriptor.list(), [&](const ACE_HEADER* entry) {
      if (!isInherited(entry)) records.push_back(recordOf(entry));
    });
    return records;
  }

  void write(const std::vector<AccessRecord>& records) override {
    ListBuilder builder;
    addRecords(builder, records);
    Descriptor former = describe(object_, path_, kWritten);
    if (hasParent()) {
      Descriptor parent = describeParent();
      addInherited(builder, parent.list(), former.heir(object_.isContainer, tree_->rights()));
    } else {
      addEntries(builder, former.list(), isInherited);
    }
    set(object_, builder, path_);
  }

  void findHeirs() override {
    if (heirs_ || !object_.isContainer) return;
    try {
      heirs_ = tree_->heirsOf(path_);
    } catch (const Failure& failure) {
      fail(path_, kWritten, "who inherits it can't be seen (" + failure.description() + ")");
    }
  }

  void handDown() override {
    if (!heirs_) return;
    Descriptor descriptor = describe(object_, path_, kWritten);
    for (const std::string& heir : *heirs_) bequeath(descriptor.list(), heir);
  }

 private:
  static Descriptor describe(const OpenObject& object, const std::string& path, const char* undone) {
    Descriptor descriptor;
    require(descriptor.read(object), path, undone);
    return descriptor;
  }

  static void set(const OpenObject& object, ListBuilder& builder, const std::string& path) {
    if (builder.isTooLong()) fail(path, kWritten, "it would be longer than 64 KB");
    require(setList(object, builder.list()), path, kWritten);
  }

  template <typename IsWanted>
  static void addEntries(ListBuilder& builder, PACL list, IsWanted&& isWanted) {
    forEachEntry(list, [&](const ACE_HEADER* entry) {
      if (isWanted(entry)) builder.add(entry);
    });
  }

  [[nodiscard]] AccessRecord recordOf(const ACE_HEADER* entry) const {
    if (!isKnownEntryType(entry->AceType)) {
      fail(path_, kRead, "it holds an entry of the unknown type " + std::to_string(entry->AceType));
    }
    AccessRecord record;
    PSID sid = readEntry(entry, record);
    const DWORD result = accounts_->findName(server_, sid, record.account);
    if (result != ERROR_SUCCESS) {
      fail(path_, kRead, "an account of it is not known (" + systemText(result) + ")");
    }
    const auto* bytes = static_cast<const std::uint8_t*>(sid);
    record.accountKey.assign(bytes, bytes + ::GetLengthSid(sid));
    return record;
  }

  // In the order that Windows expects: what denies stands before what allows.
  void addRecords(ListBuilder& builder, const std::vector<AccessRecord>& records) {
    for (const bool denying : {true, false}) {
      for (const AccessRecord& record : records) {
        const std::int32_t type = entryTypeOf(record);
        if (!isKnownEntryType(type)) {
          fail(path_, kWritten, "an entry has the unknown type " + std::to_string(type));
        }
        if (deniesAccess(type) != denying) continue;
        const std::vector<std::uint8_t> entry = entryOf(record, sidOf(record));
        builder.add(reinterpret_cast<const ACE_HEADER*>(entry.data()));
      }
    }
  }

  const Sid& sidOf(const AccessRecord& record) {
    if (!record.accountKey.empty()) return record.accountKey;
    const auto known = sids_.find(record.account);
    if (known != sids_.end()) return known->second;
    Sid sid;
    const DWORD result = accounts_->findSid(server_, record.account, sid);
    if (result != ERROR_SUCCESS) {
      fail(path_, kWritten, "the account '" + record.account + "' is not known (" + systemText(result) + ")");
    }
    return sids_.emplace(record.account, std::move(sid)).first->second;
  }

  [[nodiscard]] bool hasParent() const { return !tree_->parentOf(path_).empty(); }

  // The parent stays open too, and its list is read anew each time.
  Descriptor describeParent() {
    Descriptor descriptor;
    DWORD result = ERROR_SUCCESS;
    if (parent_.handle == nullptr) result = tree_->open(tree_->parentOf(path_), parent_);
    if (result == ERROR_SUCCESS) result = descriptor.read(parent_);
    if (result != ERROR_SUCCESS) {
      fail(path_, kWritten, "what it would inherit can't be read (" + systemText(result) + ")");
    }
    return descriptor;
  }

  void bequeath(PACL list, const std::string& path) {
    OpenObject heir;
    const DWORD result = tree_->open(path, heir);
    if (result == ERROR_FILE_NOT_FOUND) return;
    require(result, path, kWritten);
    Descriptor former = describe(heir, path, kWritten);
    if (former.inheritsNothing()) return;
    ListBuilder builder;
    addEntries(builder, former.list(), [](const ACE_HEADER* entry) { return !isInherited(entry); });
    addInherited(builder, list, former.heir(heir.isContainer, tree_->rights()));
    set(heir, builder, path);
  }

  std::string path_;
  std::string server_;
  std::shared_ptr<ObjectTree> tree_;
  std::shared_ptr<Accounts> accounts_;
  OpenObject object_;
  OpenObject parent_;
  std::optional<std::vector<std::string>> heirs_;
  std::map<std::string, Sid> sids_;
};

class WindowsSecurity final : public SecurityStore {
 public:
  WindowsSecurity(std::shared_ptr<ObjectTree> tree, std::shared_ptr<Accounts> accounts)
      : tree_(std::move(tree)), accounts_(std::move(accounts)) {}

  std::unique_ptr<SecuredObject> open(const std::string& path) override {
    return std::make_unique<WindowsObject>(path, tree_, accounts_);
  }

 private:
  std::shared_ptr<ObjectTree> tree_;
  std::shared_ptr<Accounts> accounts_;
};

}  // namespace

std::unique_ptr<SecurityStore> makeSecurity(std::shared_ptr<ObjectTree> tree,
                                            std::shared_ptr<Accounts> accounts) {
  return std::make_unique<WindowsSecurity>(std::move(tree), std::move(accounts));
}

std::unique_ptr<SecurityStore> makeFileSecurity() {
  return makeSecurity(makeFileTree(), makeAccounts());
}

std::unique_ptr<SecurityStore> makeKeySecurity() {
  return makeSecurity(makeKeyTree(), makeAccounts());
}

}  // namespace trelvin
