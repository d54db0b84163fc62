#include "platform/windows/accounts.h"

#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

// Longer than any name of an account or of a domain.
constexpr std::size_t kNameSize = 512;

// The calls want no server's name at all for this machine.
class Server {
 public:
  explicit Server(const std::string& name) : name_(wideText(name)) {}
  [[nodiscard]] const wchar_t* orThisMachine() const { return name_.empty() ? nullptr : name_.c_str(); }

 private:
  std::wstring name_;
};

class ServersAccounts final : public Accounts {
 public:
  // Only for a buffer that is too small do the calls promise what they leave in the sizes; how long a result
  // is, it tells itself.
  DWORD findName(const std::string& server, PSID sid, std::string& name) override {
    std::wstring account(kNameSize, L'\0');
    std::wstring domain(kNameSize, L'\0');
    auto accountSize = static_cast<DWORD>(account.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use{};
    if (!::LookupAccountSidW(Server(server).orThisMachine(), sid, account.data(), &accountSize, domain.data(),
                             &domainSize, &use)) {
      return ::GetLastError();
    }
    const std::string ofDomain = utf8Text(domain.c_str());
    name = (ofDomain.empty() ? ofDomain : ofDomain + "\\") + utf8Text(account.c_str());
    return ERROR_SUCCESS;
  }

  DWORD findSid(const std::string& server, const std::string& name, Sid& sid) override {
    // The call would take it for the domain BUILTIN.
    if (name.empty()) return ERROR_NONE_MAPPED;
    sid.resize(SECURITY_MAX_SID_SIZE);
    std::wstring domain(kNameSize, L'\0');
    auto sidSize = static_cast<DWORD>(sid.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use{};
    if (!::LookupAccountNameW(Server(server).orThisMachine(), wideText(name).c_str(), sid.data(), &sidSize,
                              domain.data(), &domainSize, &use)) {
      return ::GetLastError();
    }
    sid.resize(::GetLengthSid(sid.data()));
    return ERROR_SUCCESS;
  }
};

}  // namespace

std::unique_ptr<Accounts> makeAccounts() {
  return std::make_unique<ServersAccounts>();
}

}  // namespace trelvin
