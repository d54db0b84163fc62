// One small view for each kind of control. None of them knows a single control.
#pragma once

#include <QAction>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "desktop/desk.h"
#include "desktop/layout.h"
#include "window/controls.h"

namespace trelvin::desktop {

// Draws one control and passes on what a person does to it. It keeps no state of the control but what it has
// drawn last, so that drawing what has not changed costs next to nothing.
class ControlView {
 public:
  ControlView() = default;
  ControlView(const ControlView&) = delete;
  ControlView& operator=(const ControlView&) = delete;
  virtual ~ControlView() = default;

  // Brings over what has changed in the control since the last call.
  virtual void draw() = 0;
  // Null for what has no place in the window.
  [[nodiscard]] virtual QWidget* widget() const { return nullptr; }
};

// What every control with a widget has. The widget belongs to its parent widget.
class WidgetView : public ControlView {
 public:
  WidgetView(Control& control, const Place& place, QWidget& widget);
  void draw() override;
  [[nodiscard]] QWidget* widget() const override { return &widget_; }

 protected:
  // The caption as it is drawn, if that has changed since the last call.
  std::optional<QString> newCaption();

 private:
  Control& control_;
  QWidget& widget_;
  std::string accessKeys_;
  std::optional<std::string> drawnCaption_;
  std::string drawnTooltip_;
};

// A view of the kind of control that it is, with its widget below the parent; null for a kind that is never
// drawn.
std::unique_ptr<ControlView> makeControlView(Control& control, const Place& place, QWidget& parent,
                                             Desk& desk);
// A menu's title or one of its entries.
std::unique_ptr<ControlView> makeMenuView(MenuEntry& entry, QAction& action, Desk& desk);
// Ticks while the timer is enabled.
std::unique_ptr<ControlView> makeTimerView(Timer& timer, QWidget& parent, Desk& desk);

}  // namespace trelvin::desktop
