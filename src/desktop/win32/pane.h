// What the views of one window have in common: the window, and how things look on the screen that it is on.
#pragma once

#include <string>
#include <string_view>

#include "desktop/desk.h"
#include "desktop/placing.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

// A font that Windows keeps for us.
class Font {
 public:
  Font() = default;
  explicit Font(const LOGFONTW& face) : handle_(CreateFontIndirectW(&face)) {}
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  Font(Font&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  Font& operator=(Font&& other) noexcept;
  ~Font();

  [[nodiscard]] HFONT handle() const { return handle_; }

 private:
  HFONT handle_ = nullptr;
};

// Of the screen that a window is on; of the first screen for none, and where all screens have one.
int dotsPerInch(HWND window);

// Lengths in the program are those of a screen with 96 dots for each inch.
inline constexpr int kUsualDotsPerInch = 96;

class Pane {
 public:
  Pane(HWND window, Desk& desk);
  Pane(const Pane&) = delete;
  Pane& operator=(const Pane&) = delete;

  // Takes the fonts that the user has chosen, at the size of the screen.
  void renewFonts(int dots);

  [[nodiscard]] HWND window() const { return window_; }
  [[nodiscard]] Touches& touches() const { return desk_.touches; }
  [[nodiscard]] Desk& desk() const { return desk_; }
  [[nodiscard]] HFONT font() const { return font_.handle(); }
  [[nodiscard]] HFONT titleFont() const { return titleFont_.handle(); }
  [[nodiscard]] int dots() const { return dots_; }
  // Pixels of this screen for those of a usual one, and back.
  [[nodiscard]] int pixels(int usual) const { return MulDiv(usual, dots_, kUsualDotsPerInch); }
  [[nodiscard]] int usual(int pixels) const { return MulDiv(pixels, kUsualDotsPerInch, dots_); }

  // One of Windows' own measures, SM_..., on this screen.
  [[nodiscard]] int systemPixels(int measure) const;

  [[nodiscard]] int lineHeight() const { return lineHeight_; }
  [[nodiscard]] int characterWidth() const { return characterWidth_; }
  // Of a caption, where "&" is in front of an access key, broken at spaces beyond the width.
  [[nodiscard]] Extent captionExtent(std::string_view caption, HFONT font, int width) const;
  // Of a text as it stands, in one line.
  [[nodiscard]] int textWidth(std::string_view text) const;

  // Shows a text next to the pointer once that rests over the window given; the empty text shows nothing.
  void setTip(HWND window, const std::wstring& text) const;

  // Something has come to need more or less room.
  bool isOutOfPlace = true;

 private:
  HWND window_;
  HWND tips_;
  Desk& desk_;
  Font font_;
  Font titleFont_;
  int dots_ = kUsualDotsPerInch;
  int lineHeight_ = 0;
  int characterWidth_ = 0;
};

}  // namespace trelvin::desktop
