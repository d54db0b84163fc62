// One small view for each kind of control. None of them knows a single control.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/layout.h"
#include "desktop/win32/pane.h"
#include "window/controls.h"

namespace trelvin::desktop {

// What a view of a control is made from.
struct Setting {
  const Form& form;
  const Place& place;
  Pane& pane;
  HWND parent;
  // Those around the control, which hide it and switch it off with themselves.
  std::vector<const Control*> frames{};
  bool startsGroup = true;   // the arrow keys go from one option of a group to the next
  bool isDefault = false;    // the button that the Return key presses
  int charactersOfText = 0;  // that a line of a text gets at the least, if it has as many
};

// The number by which Windows knows a control or a menu entry of a form.
int numberOf(const Form& form, const Control& control);

// A text for Windows that may hold "&" for itself.
std::string withoutKeys(std::string_view text);

// Draws one control and passes on what a person does to it. It keeps no state of the control but what it has
// drawn last, so that drawing what has not changed costs next to nothing.
class ControlView {
 public:
  ControlView(Control& control, const Setting& setting, const wchar_t* windowClass, DWORD style,
              DWORD extendedStyle = 0);
  ControlView(const ControlView&) = delete;
  ControlView& operator=(const ControlView&) = delete;
  virtual ~ControlView();

  // Brings over what has changed in the control since the last call.
  virtual void draw();
  // The pane has got another font.
  virtual void renewFont();
  virtual void moveTo(const Rectangle& room);

  [[nodiscard]] HWND handle() const { return handle_; }
  [[nodiscard]] bool canBeReached() const;  // seen and not switched off
  [[nodiscard]] bool canBeSeen() const;
  [[nodiscard]] virtual int leastWidth() const { return 0; }
  [[nodiscard]] virtual int leastHeight(int /*width*/) const { return 0; }

  // What Windows tells the window about its controls.
  virtual void hearCommand(int /*notification*/) {}
  virtual void hearNotify(const NMHDR& /*notification*/) {}
  virtual void drawEntry(const DRAWITEMSTRUCT& /*entry*/) {}

  // Whether the Return key means something to this control.
  virtual bool pressReturn() { return false; }
  // Whether it takes a key with Alt that Windows doesn't know of.
  virtual bool pressAccessKey(char /*letter*/) { return false; }
  // A drop-down that is open takes Return and Escape for itself.
  [[nodiscard]] virtual bool isOpen() const { return false; }
  // What is told about the place at which the pointer rests.
  [[nodiscard]] virtual std::string tipAt(POINT place) const;

 protected:
  [[nodiscard]] Pane& pane() const { return pane_; }
  LRESULT send(UINT message, WPARAM first = 0, LPARAM second = 0) const {
    return SendMessageW(handle_, message, first, second);
  }
  // A message for the control itself, before it gets it. A result keeps it from the control.
  virtual std::optional<LRESULT> receive(UINT message, WPARAM first, LPARAM second);
  // The caption as it is drawn, if that has changed since the last call.
  std::optional<std::string> newCaption();

 private:
  static LRESULT CALLBACK procedure(HWND handle, UINT message, WPARAM first, LPARAM second, UINT_PTR number,
                                    DWORD_PTR view);

  Control& control_;
  Pane& pane_;
  HWND handle_;
  std::vector<const Control*> frames_;
  std::string accessKeys_;
  std::optional<std::string> drawnCaption_;
  std::string drawnTip_;
};

// A view of the kind of control that it is; null for a kind that is never drawn.
std::unique_ptr<ControlView> makeControlView(Control& control, const Setting& setting);

}  // namespace trelvin::desktop
