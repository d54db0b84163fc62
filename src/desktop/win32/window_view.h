// A window after its layout: the controls, their places, and the form that they show.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desktop/desktop.h"
#include "desktop/placing.h"
#include "desktop/win32/control_view.h"
#include "desktop/win32/menu_view.h"
#include "desktop/win32/pane.h"
#include "desktop/win32/spoken_names.h"

namespace trelvin::desktop {

class WindowView final : public DrawnWindow, private Measures {
 public:
  // Comes up in front of its owner, if it has one. A person's wish to take the window away is passed on as a
  // touch; the window itself stays.
  WindowView(const Window& window, HWND owner, Desk& desk, std::shared_ptr<Annotations> annotations,
             std::function<void()> onClose);
  ~WindowView() override;

  void draw() override;
  void show();

  [[nodiscard]] HWND handle() const { return handle_; }
  // Whether a message was for the keys of this window, and has been dealt with.
  bool takeKey(MSG& message);

 private:
  // Words that the form has no control for.
  struct Words {
    HWND handle;
    std::string caption;
    const ControlView* view;
  };
  struct Ticker {
    Timer* timer;
    Ticks ticks;
    std::int32_t drawnInterval;  // 0 while it doesn't tick
  };
  struct Option {
    const OptionButton* option;
    ControlView* view;
  };

  static LRESULT CALLBACK procedure(HWND handle, UINT message, WPARAM first, LPARAM second);
  LRESULT receive(UINT message, WPARAM first, LPARAM second);
  void hearCommand(WPARAM first, LPARAM second);
  void hearNotify(const NMHDR& notification);
  void hearTimer(WPARAM number);
  void hearSize(WPARAM kind);
  void hearActivation(bool isActive);
  void hearDotsChange(int dots, const RECT& room);
  void hearPointer(POINT place);
  void renewFonts(int dots);

  template <typename Kind>
  Kind& controlOf(const std::string& name) const;
  [[nodiscard]] ControlView* viewOf(int number) const;
  [[nodiscard]] ControlView* viewInHand() const;

  void makeViews(const Place& place, const std::vector<const Control*>& frames);
  ControlView& makeView(const Place& place, const std::vector<const Control*>& frames, HWND parent);
  void makeWords(const Place& place);
  void noteOption(OptionButton& option, ControlView& view, bool startsGroup);
  void makeBars();
  void makeTimers();

  [[nodiscard]] int leastWidth(const Place& place) const override;
  [[nodiscard]] int leastHeight(const Place& place, int width) const override;
  [[nodiscard]] Extent words(const Place& place) const override;
  [[nodiscard]] Insets insets(const Place& place) const override;
  [[nodiscard]] int spacing() const override;
  [[nodiscard]] int indentation() const override;

  void drawWords();
  void drawTimers();
  void drawTabStops();
  void drawSize();
  void keepFocus();
  void fit();
  void place();
  void placeBars();
  [[nodiscard]] int heightOfBars() const;
  [[nodiscard]] int widthOfTitle() const;
  void measureFrame();
  [[nodiscard]] Extent leastExtent() const;
  void resize(Extent whole);
  void centre();
  [[nodiscard]] FormSize ownSize() const;

  bool pressReturn();
  bool pressEscape();
  bool pressArrow(WPARAM key);
  bool pressAccessKey(WPARAM character);
  void press(const std::string& button);
  void moveFocus(WPARAM first, LPARAM second);

  Form& form_;
  WindowLayout layout_;
  std::function<FormSize()> size_;
  std::function<void(FormSize)> afterResize_;
  std::function<void(std::int32_t)> afterStateChange_;
  Desk& desk_;
  std::function<void()> onClose_;
  FormSize wantedSize_;
  std::string drawnCaption_;
  std::string drawnTip_;
  HWND handle_;
  std::unique_ptr<Pane> pane_;
  std::unique_ptr<MenuView> menus_;
  std::unique_ptr<SpokenNames> spokenNames_;
  std::vector<std::unique_ptr<ControlView>> views_;  // a frame before what it holds
  std::map<int, ControlView*> viewsByNumber_;
  std::map<const Place*, ControlView*> viewsByPlace_;
  std::map<const Place*, Words> words_;
  std::map<const ControlView*, std::string> returnPresses_;
  std::vector<std::vector<Option>> optionGroups_;
  std::vector<Ticker> tickers_;
  Place statusPlace_;
  Place progressPlace_;
  Extent leastBody_;
  Extent frame_;
  bool isLastAnOption_ = false;
  HWND focus_ = nullptr;  // where it was when the window was left
};

}  // namespace trelvin::desktop
