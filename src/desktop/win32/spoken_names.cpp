#include "desktop/win32/spoken_names.h"

#include <initguid.h>
#include <oleacc.h>

#include <utility>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

constexpr auto kClient = static_cast<DWORD>(OBJID_CLIENT);

class SystemAnnotations final : public Annotations {
 public:
  void setName(HWND window, const std::string& name) override { set(window, PROPID_ACC_NAME, name); }
  void setDescription(HWND window, const std::string& description) override {
    set(window, PROPID_ACC_DESCRIPTION, description);
  }
  void clear(HWND window) override {
    MSAAPROPID both[] = {PROPID_ACC_NAME, PROPID_ACC_DESCRIPTION};
    withService(
        [&](IAccPropServices& service) { service.ClearHwndProps(window, kClient, CHILDID_SELF, both, 2); });
  }

 private:
  static void set(HWND window, MSAAPROPID property, const std::string& text) {
    withService([&](IAccPropServices& service) {
      if (text.empty()) {
        service.ClearHwndProps(window, kClient, CHILDID_SELF, &property, 1);
      } else {
        service.SetHwndPropStr(window, kClient, CHILDID_SELF, property, wideText(text).c_str());
      }
    });
  }
  // Held for no longer than a call, so that it never outlives COM.
  static void withService(const std::function<void(IAccPropServices&)>& use) {
    IAccPropServices* service = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&service)))) {
      return;
    }
    use(*service);
    service->Release();
  }
};

}  // namespace

std::shared_ptr<Annotations> makeAnnotations() {
  return std::make_shared<SystemAnnotations>();
}

SpokenNames::SpokenNames(const Form& form, const WindowLayout& layout,
                         const std::function<HWND(const Control&)>& windowOf,
                         std::shared_ptr<Annotations> annotations)
    : annotations_(std::move(annotations)) {
  for (const std::string& name : tabOrder(form, layout)) {
    const Control& control = *form.control(name);
    const HWND window = windowOf(control);
    if (window == nullptr) continue;
    if (!carriesItsName(control)) annotations_->setName(window, spokenName(form, layout, name));
    controls_.push_back({window, &control, {}});
  }
  draw();
}

SpokenNames::~SpokenNames() {
  for (const Spoken& each : controls_) annotations_->clear(each.window);
}

void SpokenNames::draw() {
  for (Spoken& each : controls_) {
    if (each.drawnTip == each.control->tooltip) continue;
    each.drawnTip = each.control->tooltip;
    annotations_->setDescription(each.window, each.drawnTip);
  }
}

}  // namespace trelvin::desktop
