#include "windows/provider/native_path.h"

#include "core/err.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_api.h"

namespace trelvin::test {

std::string nativePath(const std::string& path) {
  using UnixFileName = char* (*)(const wchar_t* path);
  const FARPROC found = ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
  if (found == nullptr) throw Failure(error_number::kServerUnavailable, "This is no emulated Windows.");
  char* const native = reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(found))(wideText(path).c_str());
  if (native == nullptr) throw Failure(error_number::kPathNotFound);
  std::string result = native;
  ::HeapFree(::GetProcessHeap(), 0, native);
  return result;
}

}  // namespace trelvin::test
