// Who stands behind an identifier of an access list, and the other way round.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/windows/windows_api.h"

namespace trelvin {

// An account's identifier, byte for byte.
using Sid = std::vector<std::uint8_t>;

// What a server knows about accounts; an empty server is this machine. The results are the system's number, 0
// when the account is known.
class Accounts {
 public:
  Accounts() = default;
  Accounts(const Accounts&) = delete;
  Accounts& operator=(const Accounts&) = delete;
  virtual ~Accounts() = default;

  // DOMAIN\name, or the name alone of one that is in no domain. UTF-8.
  virtual DWORD findName(const std::string& server, PSID sid, std::string& name) = 0;
  virtual DWORD findSid(const std::string& server, const std::string& name, Sid& sid) = 0;
};

// Asks the server each time.
std::unique_ptr<Accounts> makeAccounts();

}  // namespace trelvin
