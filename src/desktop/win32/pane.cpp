#include "desktop/win32/pane.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

// Newer than the oldest Windows that the program runs on, so that it is asked for by its name.
template <typename Routine>
Routine userRoutine(const char* name) {
  return reinterpret_cast<Routine>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

// Draws and measures in a window, with a font of ours.
class Measuring {
 public:
  Measuring(HWND window, HFONT font)
      : window_(window), context_(GetDC(window)), former_(SelectObject(context_, font)) {}
  Measuring(const Measuring&) = delete;
  Measuring& operator=(const Measuring&) = delete;
  ~Measuring() {
    SelectObject(context_, former_);
    ReleaseDC(window_, context_);
  }
  [[nodiscard]] HDC context() const { return context_; }

 private:
  HWND window_;
  HDC context_;
  HGDIOBJ former_;
};

// The font of message boxes.
LOGFONTW messageFont(int dots) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  using ForDots = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
  const auto forDots = userRoutine<ForDots>("SystemParametersInfoForDpi");
  const bool isKnown = forDots != nullptr && forDots(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                                     static_cast<UINT>(dots)) != FALSE;
  if (!isKnown) {
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    metrics.lfMessageFont.lfHeight = MulDiv(metrics.lfMessageFont.lfHeight, dots, dotsPerInch(nullptr));
  }
  return metrics.lfMessageFont;
}

LOGFONTW enlarged(LOGFONTW face) {
  face.lfHeight = face.lfHeight * 18 / 10;
  return face;
}

}  // namespace

Font& Font::operator=(Font&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Font::~Font() {
  if (handle_ != nullptr) DeleteObject(handle_);
}

int dotsPerInch(HWND window) {
  using OfWindow = UINT(WINAPI*)(HWND);
  const auto ofWindow = userRoutine<OfWindow>("GetDpiForWindow");
  if (window != nullptr && ofWindow != nullptr) return static_cast<int>(ofWindow(window));
  const HDC screen = GetDC(nullptr);
  const int dots = GetDeviceCaps(screen, LOGPIXELSX);
  ReleaseDC(nullptr, screen);
  return dots;
}

Pane::Pane(HWND window, Desk& desk)
    : window_(window),
      tips_(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                            CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window, nullptr,
                            GetModuleHandleW(nullptr), nullptr)),
      desk_(desk) {
  renewFonts(dotsPerInch(window));
}

void Pane::renewFonts(int dots) {
  dots_ = dots;
  const LOGFONTW face = messageFont(dots);
  font_ = Font(face);
  titleFont_ = Font(enlarged(face));
  const Measuring measuring(window_, font());
  TEXTMETRICW metrics{};
  GetTextMetricsW(measuring.context(), &metrics);
  lineHeight_ = static_cast<int>(metrics.tmHeight);
  characterWidth_ = static_cast<int>(metrics.tmAveCharWidth);
  SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, pixels(400));
}

int Pane::systemPixels(int measure) const {
  using ForDots = int(WINAPI*)(int, UINT);
  const auto forDots = userRoutine<ForDots>("GetSystemMetricsForDpi");
  return forDots != nullptr ? forDots(measure, static_cast<UINT>(dots_)) : GetSystemMetrics(measure);
}

Extent Pane::captionExtent(std::string_view caption, HFONT font, int width) const {
  const Measuring measuring(window_, font);
  RECT room{0, 0, width, 0};
  const std::wstring text = wideText(caption);
  DrawTextW(measuring.context(), text.c_str(), static_cast<int>(text.size()), &room,
            DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS);
  return {static_cast<int>(room.right), std::max(static_cast<int>(room.bottom), lineHeight_)};
}

int Pane::textWidth(std::string_view text) const {
  const Measuring measuring(window_, font());
  SIZE size{};
  const std::wstring wide = wideText(text);
  GetTextExtentPoint32W(measuring.context(), wide.c_str(), static_cast<int>(wide.size()), &size);
  return static_cast<int>(size.cx);
}

void Pane::setTip(HWND window, const std::wstring& text) const {
  TTTOOLINFOW tool{};
  // The size that every version of the control takes.
  tool.cbSize = TTTOOLINFOW_V2_SIZE;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = window_;
  tool.uId = reinterpret_cast<UINT_PTR>(window);
  std::wstring shown = text;
  tool.lpszText = shown.data();
  SendMessageW(tips_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  if (!text.empty()) SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace trelvin::desktop
