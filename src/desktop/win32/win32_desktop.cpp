#include "desktop/win32/win32_desktop.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "platform/platform.h"

namespace trelvin::desktop {

namespace {

constexpr const wchar_t* kPulseClass = L"TrelvinPulse";
constexpr UINT kPulseMilliseconds = 50;

HWND makePulseWindow(WNDPROC procedure, void* owner) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.lpfnWndProc = procedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.lpszClassName = kPulseClass;
  RegisterClassExW(&description);
  const HWND window = CreateWindowExW(0, kPulseClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      GetModuleHandleW(nullptr), nullptr);
  SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owner));
  return window;
}

void loadControls() {
  INITCOMMONCONTROLSEX wanted{};
  wanted.dwSize = sizeof wanted;
  wanted.dwICC = ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES;
  InitCommonControlsEx(&wanted);
}

class ProgressForm final : public Form {
 public:
  Label lblProgress{*this, "lblProgress"};
  ProgressBar barProgress{*this, "barProgress"};
};

WindowLayout progressLayout() {
  return {.body = {.kind = Place::Kind::kColumn,
                   .places = {{.control = "lblProgress"}, {.control = "barProgress"}}},
          .isFixed = true};
}

}  // namespace

struct Win32Desktop::Progress {
  ProgressForm form;
  std::unique_ptr<WindowView> view;
};

// Takes a box of ours away from the front before it is gone, so that the focus comes back to its owner.
class Win32Desktop::InFront {
 public:
  InFront(Win32Desktop& desktop, WindowView& box) : desktop_(desktop) {
    desktop_.boxes_.push_back(&box);
    desktop_.switchWindows();
  }
  InFront(const InFront&) = delete;
  InFront& operator=(const InFront&) = delete;
  ~InFront() {
    desktop_.boxes_.pop_back();
    desktop_.switchWindows();
  }

 private:
  Win32Desktop& desktop_;
};

Win32Desktop::Win32Desktop(std::vector<Window> windows, std::shared_ptr<Annotations> annotations)
    : Desktop(std::move(windows)),
      annotations_(std::move(annotations)),
      pulse_(makePulseWindow(pulseProcedure, this)) {
  loadControls();
  desk().endSession = [this] { keepFailure([this] { endSession(); }); };
}

Win32Desktop::~Win32Desktop() {
  DestroyWindow(pulse_);
}

std::vector<WindowView*> Win32Desktop::views() const {
  std::vector<WindowView*> views;
  for (const Shown& each : shown()) {
    if (each.view) views.push_back(static_cast<WindowView*>(each.view.get()));
  }
  return views;
}

std::unique_ptr<DrawnWindow> Win32Desktop::open(const Window& window, std::function<void()> onClose) {
  HWND owner = nullptr;
  for (const Shown& each : shown()) {
    const bool isOwner = each.view != nullptr && each.window.form == window.form->owner;
    if (isOwner) owner = static_cast<WindowView&>(*each.view).handle();
  }
  auto view = std::make_unique<WindowView>(window, owner, desk(), annotations_, std::move(onClose));
  view->show();
  return view;
}

void Win32Desktop::draw() {
  Desktop::draw();
  for (WindowView* box : boxes_) box->draw();
  if (boxesOfWindows_ == 0) switchWindows();
}

void Win32Desktop::switchWindows() {
  const bool isModalUp = std::any_of(shown().begin(), shown().end(), [](const Shown& each) {
    return each.view != nullptr && each.window.form->owner != nullptr;
  });
  for (const Shown& each : shown()) {
    if (!each.view) continue;
    const bool isInFront = boxes_.empty() && (!isModalUp || each.window.form->owner != nullptr);
    const HWND window = static_cast<WindowView&>(*each.view).handle();
    if ((IsWindowEnabled(window) != FALSE) != isInFront) EnableWindow(window, isInFront ? TRUE : FALSE);
  }
  for (WindowView* box : boxes_) EnableWindow(box->handle(), box == boxes_.back() ? TRUE : FALSE);
}

void Win32Desktop::hear(bool mayWait) {
  HANDLE sockets = nullptr;
  if (platform().sockets) sockets = reinterpret_cast<HANDLE>(platform().sockets->handle());
  const DWORD count = sockets == nullptr || areSocketsNoted_ ? 0 : 1;
  const DWORD heard =
      MsgWaitForMultipleObjectsEx(count, &sockets, mayWait ? INFINITE : 0, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  if (count == 1 && heard == WAIT_OBJECT_0) hearSockets();
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) hearMessage(message);
  passFailureOn();
}

// What comes over the net is carried out in its turn, like a touch. Once is enough until its turn comes; what
// an event of a socket yields to hears of the others.
void Win32Desktop::hearSockets() {
  if (std::exchange(areSocketsNoted_, true)) return;
  desk().touches.postAlways([this] {
    areSocketsNoted_ = false;
    platform().sockets->dispatch();
  });
}

void Win32Desktop::hearMessage(MSG& message) {
  const bool isKey = message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST;
  if (isKey) {
    for (WindowView* box : boxes_) {
      if (box->takeKey(message)) return;
    }
    for (WindowView* view : views()) {
      if (view->takeKey(message)) return;
    }
  }
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

HWND Win32Desktop::activeWindow() const {
  if (!boxes_.empty()) return boxes_.back()->handle();
  const std::vector<WindowView*> up = views();
  const HWND active = GetActiveWindow();
  const bool isOurs =
      std::any_of(up.begin(), up.end(), [&](const WindowView* each) { return each->handle() == active; });
  if (isOurs) return active;
  return up.empty() ? nullptr : up.back()->handle();
}

int Win32Desktop::showBox(const std::function<int(HWND owner)>& box) {
  beginBox();
  const HWND owner = GetLastActivePopup(activeWindow());
  if (boxesOfWindows_++ == 0) SetTimer(pulse_, 1, kPulseMilliseconds, nullptr);
  const HWND formerOwner = std::exchange(boxOwner_, owner);
  for (const WindowView* each : views()) {
    if (each->handle() != owner) EnableWindow(each->handle(), FALSE);
  }
  const int answer = box(owner);
  boxOwner_ = formerOwner;
  if (--boxesOfWindows_ == 0) {
    KillTimer(pulse_, 1);
    switchWindows();
  }
  endBox();
  passFailureOn();
  return answer;
}

void Win32Desktop::showWindow(Form& form, const WindowLayout& layout, const std::function<void()>& onClose) {
  beginBox();
  form.visible = true;
  WindowView view({.form = &form, .layout = layout}, activeWindow(), desk(), annotations_, onClose);
  const InFront inFront(*this, view);
  view.show();
  while (form.visible) {
    hear(true);
    runNestedTouches();
    draw();
  }
  endBox();
}

LRESULT CALLBACK Win32Desktop::pulseProcedure(HWND handle, UINT message, WPARAM first, LPARAM second) {
  auto* const desktop = reinterpret_cast<Win32Desktop*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
  if (message == WM_TIMER && desktop != nullptr) desktop->pulse();
  return message == WM_TIMER ? 0 : DefWindowProcW(handle, message, first, second);
}

void Win32Desktop::pulse() {
  keepFailure([this] {
    const bool haveSocketsWork =
        platform().sockets &&
        WaitForSingleObject(reinterpret_cast<HANDLE>(platform().sockets->handle()), 0) == WAIT_OBJECT_0;
    if (haveSocketsWork) hearSockets();
    runNestedTouches();
    draw();
  });
}

// For what Windows calls from within a call of ours, maybe from within its box. What fails here can't go
// through that; it takes the box away and goes on behind it.
void Win32Desktop::keepFailure(const std::function<void()>& work) {
  if (failure_) return;
  try {
    work();
  } catch (...) {
    failure_ = std::current_exception();
    if (boxOwner_ != nullptr) EndDialog(GetLastActivePopup(boxOwner_), IDCANCEL);
  }
}

void Win32Desktop::passFailureOn() {
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void Win32Desktop::showProgress(std::string_view title, std::uint64_t done, std::uint64_t found) {
  draw();
  const bool isNew = !progress_;
  if (isNew) progress_ = std::make_unique<Progress>();
  ProgressForm& form = progress_->form;
  form.caption = title;
  form.lblProgress.caption = progressText(done, found);
  form.barProgress.setMax(kProgressSteps);
  form.barProgress.setValue(progressSteps(done, found));
  if (isNew) {
    progress_->view = std::make_unique<WindowView>(Window{.form = &form, .layout = progressLayout()},
                                                   activeWindow(), desk(), annotations_, [] {});
    progress_->view->show();
  } else {
    progress_->view->draw();
  }
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE | PM_QS_PAINT | PM_QS_SENDMESSAGE) != FALSE)
    DispatchMessageW(&message);
  passFailureOn();
}

void Win32Desktop::dropProgress() {
  progress_.reset();
}

}  // namespace trelvin::desktop
