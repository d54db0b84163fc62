#include "core/ini_settings.h"

#include <cstdint>
#include <optional>

#include "core/err.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/platform.h"

namespace trelvin {

namespace {

constexpr std::uint32_t kBufferSize = 50;

}  // namespace

std::string returnIniSetting(std::string_view section, std::string_view key) {
  std::string buffer(kBufferSize, ' ');
  std::uint32_t count = 0;
  // The file's own path is the default, which tells a missing key from a present one.
  const bool wasRead = resumed("returnIniSetting Error ", [&] {
    count = platform().profile->getString(section, key, run.sBackupJob, buffer, kBufferSize, run.sBackupJob);
  });
  if (!wasRead || count == 0) return {};
  const bool isMissing =
      count == characterCount(run.sBackupJob) && buffer.find(run.sBackupJob) != std::string::npos;
  if (isMissing) return {};
  // Behind the value stands the NUL that the call wrote; the blanks behind that one are the buffer's own.
  const std::string_view value = trimmed(buffer);
  return std::string(trimmed(firstCharacters(value, characterCount(value) - 1)));
}

bool saveIniSetting(std::string_view section, std::string_view key, std::string_view value) {
  bool result = false;
  resumed("saveIniSetting Error ", [&] {
    const std::optional<std::string_view> written = value.empty() ? std::nullopt : std::optional(value);
    result = platform().profile->writeString(section, key, written, run.sBackupJob);
  });
  return result;
}

}  // namespace trelvin
