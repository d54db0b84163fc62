#include "desktop/win32/spoken_names.h"

#include <initguid.h>
#include <oleacc.h>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

void nameForHearing(const Form& form, const WindowLayout& layout,
                    const std::function<HWND(const Control&)>& windowOf) {
  IAccPropServices* services = nullptr;
  if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                              reinterpret_cast<void**>(&services)))) {
    return;
  }
  for (const std::string& name : tabOrder(form, layout)) {
    const Control& control = *form.control(name);
    const HWND window = windowOf(control);
    if (window == nullptr) continue;
    const auto client = static_cast<DWORD>(OBJID_CLIENT);
    services->SetHwndPropStr(window, client, CHILDID_SELF, PROPID_ACC_NAME,
                             wideText(spokenName(form, layout, name)).c_str());
    services->SetHwndPropStr(window, client, CHILDID_SELF, PROPID_ACC_DESCRIPTION,
                             wideText(control.tooltip).c_str());
  }
  services->Release();
}

}  // namespace trelvin::desktop
