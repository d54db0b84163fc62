// What screen readers say of a window's controls.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/layout.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

// Windows' service for what it can't find out about a control itself.
class Annotations {
 public:
  Annotations() = default;
  Annotations(const Annotations&) = delete;
  Annotations& operator=(const Annotations&) = delete;
  virtual ~Annotations() = default;

  // They count instead of what Windows finds, until they are set anew; no later text of the control changes
  // them. The empty text takes one away again.
  virtual void setName(HWND window, const std::string& name) = 0;
  virtual void setDescription(HWND window, const std::string& description) = 0;
  // Takes both away, as it has to be done before the control goes.
  virtual void clear(HWND window) = 0;
};

// A Windows that has no such service leaves controls with what it finds itself. COM has to be up when they
// are set.
std::shared_ptr<Annotations> makeAnnotations();

// Gives each control that the Tab key reaches its tooltip as its description, and a name to those that don't
// carry it themselves: a button that comes to read "Abort" is called so by Windows.
class SpokenNames {
 public:
  // A control for which there is no window is left out.
  SpokenNames(const Form& form, const WindowLayout& layout,
              const std::function<HWND(const Control&)>& windowOf, std::shared_ptr<Annotations> annotations);
  SpokenNames(const SpokenNames&) = delete;
  SpokenNames& operator=(const SpokenNames&) = delete;
  // To go before the controls do.
  ~SpokenNames();

  // Brings over the tooltips that have changed since the last call.
  void draw();

 private:
  struct Spoken {
    HWND window;
    const Control* control;
    std::string drawnTip;
  };
  std::vector<Spoken> controls_;
  std::shared_ptr<Annotations> annotations_;
};

}  // namespace trelvin::desktop
