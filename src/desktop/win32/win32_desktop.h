// The desktop under Windows' own controls.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "desktop/desktop.h"
#include "desktop/win32/spoken_names.h"
#include "desktop/win32/window_view.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

class Win32Desktop final : public Desktop {
 public:
  explicit Win32Desktop(std::vector<Window> windows,
                        std::shared_ptr<Annotations> annotations = makeAnnotations());
  ~Win32Desktop() override;

  // Shows one of Windows' own boxes, which waits for its answer by itself, and gives that back. The windows
  // behind it take no touch; their timers tick. The box gets the window that it belongs to, null when none is
  // up.
  int showBox(const std::function<int(HWND owner)>& box);
  // Shows a window of our own as a box, until its form is no longer visible.
  void showWindow(Form& form, const WindowLayout& layout, const std::function<void()>& onClose);
  // Shows how far a long piece of work has got, until the next yield. Clicks wait for that too.
  void showProgress(std::string_view title, std::uint64_t done, std::uint64_t found);

  // The window that a box belongs to; null when none is up.
  [[nodiscard]] HWND activeWindow() const;

 protected:
  void draw() override;

 private:
  class InFront;
  struct Progress;
  static LRESULT CALLBACK pulseProcedure(HWND handle, UINT message, WPARAM first, LPARAM second);
  std::unique_ptr<DrawnWindow> open(const Window& window, std::function<void()> onClose) override;
  void hear(bool mayWait) override;
  void dropProgress() override;
  void hearSockets();
  void hearMessage(MSG& message);
  void pulse();
  void keepFailure(const std::function<void()>& work);
  void passFailureOn();
  [[nodiscard]] std::vector<WindowView*> views() const;
  // Windows behind others that want an answer first are switched off.
  void switchWindows();

  std::shared_ptr<Annotations> annotations_;
  HWND pulse_;  // a window that is never seen, for a tick while one of Windows' own boxes waits
  std::vector<WindowView*> boxes_;  // of our own, the last one in front
  HWND boxOwner_ = nullptr;
  int boxesOfWindows_ = 0;
  bool areSocketsNoted_ = false;
  std::exception_ptr failure_;
  std::unique_ptr<Progress> progress_;
};

}  // namespace trelvin::desktop
