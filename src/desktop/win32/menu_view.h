// The menus of a window.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desktop/desk.h"
#include "desktop/layout.h"
#include "platform/windows/windows_api.h"

namespace trelvin::desktop {

class MenuView {
 public:
  // Fails for a layout that names what is no menu entry.
  MenuView(const Form& form, const std::vector<Menu>& menus, HWND window);
  MenuView(const MenuView&) = delete;
  MenuView& operator=(const MenuView&) = delete;
  ~MenuView();

  // Makes the menus anew if any entry of them has changed.
  void draw();
  // Whether the number is that of an entry; its click is noted then.
  bool click(int number, Touches& touches) const;

 private:
  struct Entry {
    MenuEntry* entry;  // null for a line
    int number;
  };
  struct Group {
    Entry title;
    std::vector<Entry> entries;
  };
  struct Drawn {
    std::string caption;
    bool enabled;
    bool visible;
    bool operator==(const Drawn&) const = default;
  };
  [[nodiscard]] std::vector<Drawn> state() const;
  [[nodiscard]] static HMENU popupOf(const Group& group);

  HWND window_;
  HMENU bar_ = nullptr;
  std::vector<Group> groups_;
  std::vector<Drawn> drawn_;
};

}  // namespace trelvin::desktop
