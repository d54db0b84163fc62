#include "platform/windows/adsi/com.h"

#include <cstdint>
#include <utility>

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

Failure numberedFailure(std::int32_t number) {
  // The runtime's own numbers are positive; to Windows they would mean something else.
  std::string text = number < 0 ? systemMessage(static_cast<std::uint32_t>(number)) : std::string();
  return text.empty() ? Failure(number) : Failure(number, std::move(text));
}

void requireSuccess(HRESULT result) {
  if (FAILED(result)) throw numberedFailure(result);
}

// A thread that is in an apartment of another kind already works as well, through proxies.
Apartment::Apartment() : entered_(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {
  if (entered_ != RPC_E_CHANGED_MODE) requireSuccess(entered_);
}

Apartment::~Apartment() {
  if (entered_ != RPC_E_CHANGED_MODE) ::CoUninitialize();
}

}  // namespace trelvin
