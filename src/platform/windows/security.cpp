#include "platform/windows/security.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/err.h"
#include "platform/windows/security_entry.h"
#include "platform/windows/wide_text.h"

// It needs what windows.h brings.
#include <aclapi.h>

namespace trelvin {

namespace {

[[noreturn]] void fail(const std::string& path, const char* undone, const std::string& cause) {
  throw Failure(error_number::kControlException,
                "The access list of '" + path + "' can't be " + undone + ": " + cause);
}

void require(DWORD result, const std::string& path, const char* undone) {
  if (result != ERROR_SUCCESS) fail(path, undone, systemText(result));
}

struct LocalFreer {
  void operator()(void* memory) const { ::LocalFree(memory); }
};
using LocalDescriptor = std::unique_ptr<void, LocalFreer>;

// The server that a network path names; the empty text, which stands for this machine, for any other path.
std::wstring serverOf(const std::string& path) {
  if (!path.starts_with("\\\\")) return {};
  return wideText(path.substr(2, path.find('\\', 2) - 2));
}

const wchar_t* orThisMachine(const std::wstring& server) {
  return server.empty() ? nullptr : server.c_str();
}

std::string accountOf(const std::wstring& server, PSID sid, const std::string& path) {
  std::wstring name(256, L'\0');
  std::wstring domain(256, L'\0');
  auto nameSize = static_cast<DWORD>(name.size());
  auto domainSize = static_cast<DWORD>(domain.size());
  SID_NAME_USE use{};
  if (!::LookupAccountSidW(orThisMachine(server), sid, name.data(), &nameSize, domain.data(), &domainSize,
                           &use)) {
    fail(path, "read", "an account of it is not known (" + systemText(::GetLastError()) + ")");
  }
  name.resize(nameSize);
  domain.resize(domainSize);
  return domain.empty() ? utf8Text(name) : utf8Text(domain + L"\\" + name);
}

std::vector<std::uint8_t> sidOf(const std::wstring& server, const std::string& account,
                                const std::string& path) {
  std::vector<std::uint8_t> sid(SECURITY_MAX_SID_SIZE);
  std::wstring domain(256, L'\0');
  auto sidSize = static_cast<DWORD>(sid.size());
  auto domainSize = static_cast<DWORD>(domain.size());
  SID_NAME_USE use{};
  if (!::LookupAccountNameW(orThisMachine(server), wideText(account).c_str(), sid.data(), &sidSize,
                            domain.data(), &domainSize, &use)) {
    fail(path, "written",
         "the account '" + account + "' is not known (" + systemText(::GetLastError()) + ")");
  }
  sid.resize(sidSize);
  return sid;
}

// An access list that is put together entry by entry.
class ListBuilder {
 public:
  void add(const void* entry, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(entry);
    entries_.insert(entries_.end(), bytes, bytes + size);
    ++count_;
  }

  // Valid as long as the builder and until the next entry.
  PACL list() {
    content_.assign(sizeof(ACL) + entries_.size(), 0);
    ACL header{};
    header.AclRevision = ACL_REVISION_DS;
    header.AclSize = static_cast<WORD>(content_.size());
    header.AceCount = static_cast<WORD>(count_);
    std::memcpy(content_.data(), &header, sizeof header);
    std::copy(entries_.begin(), entries_.end(), content_.begin() + sizeof(ACL));
    return reinterpret_cast<PACL>(content_.data());
  }

  [[nodiscard]] bool isTooLong() const { return sizeof(ACL) + entries_.size() > 0xFFFF; }

 private:
  std::vector<std::uint8_t> entries_;
  std::vector<std::uint8_t> content_;
  std::size_t count_ = 0;
};

// What reads and writes the whole list of one kind of object.
struct Access {
  SE_OBJECT_TYPE kind;
  std::wstring prefix;  // before a path, in the form that the security calls want
};

class WindowsSecurity final : public SecurityStore {
 public:
  explicit WindowsSecurity(Access access) : access_(std::move(access)) {}

  [[nodiscard]] std::vector<AccessRecord> read(const std::string& path) override {
    PACL list = nullptr;
    const LocalDescriptor descriptor = listOf(path, "read", list);
    const std::wstring server = serverOf(path);
    std::vector<AccessRecord> records;
    forEachEntry(list, [&](const ACE_HEADER* entry) {
      if ((entry->AceFlags & INHERITED_ACE) != 0) return;
      if (!isKnownEntryType(entry->AceType)) {
        fail(path, "read", "it holds an entry of the unknown type " + std::to_string(entry->AceType));
      }
      AccessRecord record;
      PSID sid = readEntry(entry, record);
      record.account = accountOf(server, sid, path);
      records.push_back(std::move(record));
    });
    return records;
  }

  void write(const std::string& path, const std::vector<AccessRecord>& records, bool handDown) override {
    PACL former = nullptr;
    const LocalDescriptor descriptor = listOf(path, "written", former);
    ListBuilder builder;
    addOwn(builder, path, records);
    // Windows adds what the parent hands down by itself when it hands down further.
    if (!handDown) addInherited(builder, former);
    if (builder.isTooLong()) fail(path, "written", "it would be longer than 64 KB");
    if (handDown) {
      setAndHandDown(path, builder.list());
    } else {
      set(path, builder.list());
    }
  }

 private:
  [[nodiscard]] std::wstring nameOf(const std::string& path) const { return access_.prefix + wideText(path); }

  LocalDescriptor listOf(const std::string& path, const char* undone, PACL& list) const {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    require(::GetNamedSecurityInfoW(nameOf(path).c_str(), access_.kind, DACL_SECURITY_INFORMATION, nullptr,
                                    nullptr, &list, nullptr, &descriptor),
            path, undone);
    return LocalDescriptor(descriptor);
  }

  template <typename Visit>
  static void forEachEntry(PACL list, Visit&& visit) {
    for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
      void* entry = nullptr;
      if (::GetAce(list, i, &entry)) visit(static_cast<const ACE_HEADER*>(entry));
    }
  }

  // In the order that Windows expects: what denies stands before what allows.
  static void addOwn(ListBuilder& builder, const std::string& path,
                     const std::vector<AccessRecord>& records) {
    const std::wstring server = serverOf(path);
    for (const bool denying : {true, false}) {
      for (const AccessRecord& record : records) {
        const std::int32_t type = entryTypeOf(record);
        if (!isKnownEntryType(type)) {
          fail(path, "written", "an entry has the unknown type " + std::to_string(type));
        }
        if (deniesAccess(type) != denying) continue;
        const std::vector<std::uint8_t> entry = entryOf(record, sidOf(server, record.account, path));
        builder.add(entry.data(), entry.size());
      }
    }
  }

  static void addInherited(ListBuilder& builder, PACL former) {
    forEachEntry(former, [&](const ACE_HEADER* entry) {
      if ((entry->AceFlags & INHERITED_ACE) != 0) builder.add(entry, entry->AceSize);
    });
  }

  void setAndHandDown(const std::string& path, PACL list) const {
    std::wstring name = nameOf(path);
    require(::SetNamedSecurityInfoW(name.data(), access_.kind,
                                    DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION,
                                    nullptr, nullptr, list, nullptr),
            path, "written");
  }

  // Of this object alone: the calls that know of inheritance would walk through all that lies in it.
  void set(const std::string& path, PACL list) const {
    SECURITY_DESCRIPTOR descriptor{};
    ::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    ::SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
    constexpr SECURITY_DESCRIPTOR_CONTROL kKeepInheriting = SE_DACL_AUTO_INHERIT_REQ | SE_DACL_AUTO_INHERITED;
    ::SetSecurityDescriptorControl(&descriptor, kKeepInheriting, kKeepInheriting);
    if (access_.kind == SE_FILE_OBJECT) {
      const BOOL done = ::SetFileSecurityW(wideText(path).c_str(), DACL_SECURITY_INFORMATION, &descriptor);
      require(done ? ERROR_SUCCESS : ::GetLastError(), path, "written");
      return;
    }
    HKEY key = nullptr;
    require(
        static_cast<DWORD>(::RegOpenKeyExW(HKEY_CURRENT_USER, wideText(path).c_str(), 0, WRITE_DAC, &key)),
        path, "written");
    const LSTATUS result = ::RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, &descriptor);
    ::RegCloseKey(key);
    require(static_cast<DWORD>(result), path, "written");
  }

  Access access_;
};

}  // namespace

std::unique_ptr<SecurityStore> makeFileSecurity() {
  return std::make_unique<WindowsSecurity>(Access{SE_FILE_OBJECT, L""});
}

std::unique_ptr<SecurityStore> makeKeySecurity() {
  return std::make_unique<WindowsSecurity>(Access{SE_REGISTRY_KEY, L"CURRENT_USER\\"});
}

}  // namespace trelvin
