// The controls of a window as plain state: what the logic reads and writes, whether or not anything is drawn.
// Setting a control from code runs its event routine where the platform's own control would run it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ntfs.h"
#include "platform/socket.h"

namespace trelvin {

using Event = std::function<void()>;
using KeyEvent = std::function<void(std::int32_t key)>;

// The keys that take an entry out of a list: Backspace comes as a character with the key press, Delete, which
// types none, as a key that is let go.
namespace key {
constexpr std::int32_t kBackspace = 8;
constexpr std::int32_t kDelete = 46;
}  // namespace key

class Form;

// What all controls have. A control registers with its form, so that a view or a test finds it by its name.
class Control {
 public:
  Control(Form& form, std::string name, std::string caption = {}, std::string tooltip = {});
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;

  const std::string name;
  std::string caption;
  std::string tooltip;
  bool enabled = true;
  bool visible = true;
};

// A window: its controls by name, in the order in which they were made.
class Form {
 public:
  Form() = default;
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form() = default;

  [[nodiscard]] const std::vector<Control*>& controls() const { return controls_; }
  // The first control of that name, in any case; null when there is none.
  [[nodiscard]] Control* control(std::string_view name) const;

  std::string caption;
  bool loaded = false;
  bool visible = false;
  // Of a modal form: the one that takes no touch as long as this one is visible.
  Form* owner = nullptr;

 private:
  friend class Control;
  std::vector<Control*> controls_;
};

// A control without state of its own beyond the common one: frames, and workers that are never drawn.
class Frame : public Control {
 public:
  using Control::Control;
};

class Label : public Control {
 public:
  using Control::Control;
};

class Button : public Control {
 public:
  using Control::Control;
  Event onClick;
};

class MenuEntry : public Control {
 public:
  using Control::Control;
  Event onClick;
};

class TextBox : public Control {
 public:
  using Control::Control;
  std::string text;
};

class CheckBox : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool value() const { return value_; }
  // Runs the click when the value changes.
  void setValue(bool value);
  Event onClick;

 private:
  bool value_ = false;
};

// Options of one group exclude each other: setting one clears the others, without a click of theirs.
class OptionButton : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool value() const { return value_; }
  // Runs the click when the option was off and goes on; switching off runs nothing.
  void setValue(bool value);
  // Makes the options given into one group.
  static void group(std::initializer_list<OptionButton*> members);
  Event onClick;

 private:
  bool value_ = false;
  std::vector<OptionButton*> others_;
};

// A list box or a drop-down. Entries keep the order of insertion unless the list is sorted.
class ListControl : public Control {
 public:
  enum class Selection { kSingle, kMultiple };
  ListControl(Form& form, std::string name, Selection selection = Selection::kSingle,
              std::string tooltip = {});

  bool sorted = false;

  [[nodiscard]] std::int32_t listCount() const { return static_cast<std::int32_t>(entries_.size()); }
  // The empty text at or past the end; fails with 381 for a negative index.
  [[nodiscard]] const std::string& list(std::int32_t index) const;
  // Fails with 381 where there is no entry.
  void setList(std::int32_t index, std::string text);

  // A sorted list puts the entry where it belongs, behind equal ones.
  void addItem(std::string text);
  // Fails with 5 where there is no entry.
  void removeItem(std::int32_t index);
  void clear();
  // The entries become these, in this order, and none is selected. Of a sorted list the caller knows that
  // they are in order.
  void assign(const std::vector<std::string>& texts);
  // Shows what has changed; the state is the same before and after.
  void refresh();

  // Entry in hand, -1 for none. In a single selection it is the selected entry.
  [[nodiscard]] std::int32_t listIndex() const { return listIndex_; }
  // Fails with 380 where there is no entry; -1 takes the selection away. In a single selection a change runs
  // the click.
  void setListIndex(std::int32_t index);
  // False at or past the end; fails with 381 for a negative index.
  [[nodiscard]] bool selected(std::int32_t index) const;
  // Fails with 381 where there is no entry. Runs the click when the selection changes; the entry becomes the
  // one in hand.
  void setSelected(std::int32_t index, bool isSelected);
  [[nodiscard]] std::int32_t selCount() const { return selCount_; }
  // What a person's touch does: just these entries are selected and that one is in hand, and the click runs
  // once if that changed anything. Entries that aren't there are passed over; a single selection takes the
  // one in hand.
  void choose(const std::vector<std::int32_t>& chosen, std::int32_t inHand);
  [[nodiscard]] bool isMultiple() const { return selection_ == Selection::kMultiple; }
  // The entry in hand of a drop-down; empty when there is none.
  [[nodiscard]] const std::string& text() const;

  Event onClick;
  Event onDblClick;
  KeyEvent onKeyPress;                                // with the character's code
  KeyEvent onKeyUp;                                   // with the key's code
  std::function<void(const std::string&)> onAddItem;  // a view or a mirror that wants to see entries come
  Event onRefresh;

  // Tells a view whether what it has drawn still stands: the first number grows with every change of entries
  // or selection, the second only when entries change that were there before, not when one is put at the end.
  [[nodiscard]] std::uint64_t revision() const { return revision_; }
  [[nodiscard]] std::uint64_t rewrites() const { return rewrites_; }

 private:
  struct Entry {
    std::string text;
    bool selected = false;
  };
  [[nodiscard]] bool has(std::int32_t index) const { return index >= 0 && index < listCount(); }
  void noteRewrite();
  bool select(const std::vector<std::int32_t>& chosen);

  Selection selection_;
  std::vector<Entry> entries_;
  std::int32_t listIndex_ = -1;
  std::int32_t selCount_ = 0;
  std::uint64_t revision_ = 0;
  std::uint64_t rewrites_ = 0;
};

// A control array; its members are counted from 0. The per-site lists have the one member 0.
template <typename Member>
class ControlArray {
 public:
  template <typename... Settings>
  ControlArray(Form& form, const std::string& name, const Settings&... settings)
      : member_(form, name, settings...) {}
  [[nodiscard]] static std::int32_t count() { return 1; }
  // Fails with 340 for a member that doesn't exist.
  Member& operator()(std::int32_t index);
  const Member& operator()(std::int32_t index) const;

 private:
  Member member_;
};

// Tabs are counted from 1.
class TabStrip : public Control {
 public:
  struct Tab {
    std::string caption;
    std::string tooltip;
  };
  TabStrip(Form& form, std::string name, std::vector<Tab> tabs);

  [[nodiscard]] std::int32_t tabCount() const { return static_cast<std::int32_t>(tabs_.size()); }
  [[nodiscard]] std::int32_t selectedTab() const { return selected_; }
  [[nodiscard]] const Tab& tab(std::int32_t index) const;  // fails with 35600 where there is no tab
  // Runs the click when the tab was not selected; fails with 35600 where there is no tab.
  void select(std::int32_t index);
  // Position from 1 to one behind the last; fails with 35600 for another.
  void add(std::int32_t index, Tab tab);
  // The first tab takes over when the selected one goes; no click.
  void remove(std::int32_t index);

  Event onClick;

 private:
  std::vector<Tab> tabs_;
  std::int32_t selected_ = 1;
};

class StatusBar : public Control {
 public:
  using Control::Control;
  std::string panel;  // the first panel, the only one in use
  // Shows what has changed; the state is the same before and after.
  void refresh();
  Event onRefresh;
};

// Fails with 380 for a maximum that is not above 0, and for a value outside of 0 to the maximum.
class ProgressBar : public Control {
 public:
  using Control::Control;
  [[nodiscard]] double max() const { return max_; }
  [[nodiscard]] double value() const { return value_; }
  // A value beyond the new maximum is drawn back to it.
  void setMax(double max);
  void setValue(double value);

  // Place within the form, as offsets from its right and bottom edges.
  std::int32_t left = 0;
  std::int32_t top = 0;

 private:
  double max_ = 100;
  double value_ = 0;
};

class Timer : public Control {
 public:
  Timer(Form& form, std::string name, std::int32_t milliseconds);
  std::int32_t interval;
  Event onTimer;
};

// The socket of the update check: one conversation at a time, with the host and the port that are set when it
// connects. State numbers and failures are those of platform/socket.h. Until it is placed on a window it is
// closed and can't connect, which fails with 91.
class SocketControl : public Control {
 public:
  using Control::Control;
  // Gets the socket of this machine that it stands on. A former one is closed.
  void place(Sockets& sockets);

  [[nodiscard]] std::int32_t state() const { return socket_ ? socket_->state() : kSocketClosed; }
  void connect();
  void close();
  void sendData(std::string_view text);
  std::string getData();

  std::string remoteHost;
  std::int32_t remotePort = 0;

  Event onConnect;
  std::function<void(std::int32_t bytesTotal)> onDataArrival;
  Event onClose;
  std::function<void(std::int32_t number, const std::string& description)> onError;

 private:
  std::unique_ptr<Socket> socket_;
};

// The place of the control that reads and writes access lists.
class NtfsControlHost : public Control {
 public:
  using Control::Control;
  std::unique_ptr<NtfsControl> object;
};

}  // namespace trelvin
