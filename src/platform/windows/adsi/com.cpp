#include "platform/windows/adsi/com.h"

#include "core/err.h"
#include "platform/windows/wide_text.h"

namespace trelvin {

namespace {

BSTR allocated(std::string_view utf8) {
  const std::wstring wide = wideText(utf8);
  const BSTR text = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (text == nullptr) throw Failure(error_number::kOutOfMemory);
  return text;
}

}  // namespace

Bstr::Bstr(std::string_view utf8) : text_(allocated(utf8)) {}

void requireSuccess(HRESULT result) {
  if (FAILED(result)) throw Failure(result, systemText(static_cast<std::uint32_t>(result)));
}

// A thread that is in an apartment of another kind already works as well, through proxies.
Apartment::Apartment() : entered_(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {
  if (entered_ != RPC_E_CHANGED_MODE) requireSuccess(entered_);
}

Apartment::~Apartment() {
  if (entered_ != RPC_E_CHANGED_MODE) ::CoUninitialize();
}

}  // namespace trelvin
