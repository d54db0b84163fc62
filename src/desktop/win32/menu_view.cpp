#include "desktop/win32/menu_view.h"

#include <stdexcept>
#include <utility>

#include "desktop/win32/control_view.h"
#include "platform/windows/wide_text.h"

namespace trelvin::desktop {

namespace {

UINT reachOf(const MenuEntry& entry) {
  return entry.enabled ? MF_ENABLED : MF_GRAYED;
}

MenuEntry& entryOf(const Form& form, const std::string& name) {
  auto* const entry = dynamic_cast<MenuEntry*>(form.control(name));
  if (entry == nullptr) throw std::logic_error("the layout names a menu entry that is not there: " + name);
  return *entry;
}

}  // namespace

MenuView::MenuView(const Form& form, const std::vector<Menu>& menus, HWND window) : window_(window) {
  for (const Menu& menu : menus) {
    MenuEntry& title = entryOf(form, menu.control);
    Group group{{&title, numberOf(form, title)}, {}};
    for (const std::string& name : menu.entries) {
      MenuEntry* const entry = name.empty() ? nullptr : &entryOf(form, name);
      group.entries.push_back({entry, entry == nullptr ? 0 : numberOf(form, *entry)});
    }
    groups_.push_back(std::move(group));
  }
}

MenuView::~MenuView() {
  SetMenu(window_, nullptr);
  if (bar_ != nullptr) DestroyMenu(bar_);
}

std::vector<MenuView::Drawn> MenuView::state() const {
  std::vector<Drawn> drawn;
  const auto add = [&](const Entry& each) {
    if (each.entry == nullptr) return;
    drawn.push_back({each.entry->caption, each.entry->enabled, each.entry->visible});
  };
  for (const Group& group : groups_) {
    add(group.title);
    for (const Entry& each : group.entries) add(each);
  }
  return drawn;
}

HMENU MenuView::popupOf(const Group& group) {
  const HMENU popup = CreatePopupMenu();
  for (const Entry& each : group.entries) {
    if (each.entry == nullptr) {
      AppendMenuW(popup, MF_SEPARATOR, 0, nullptr);
    } else if (each.entry->visible) {
      AppendMenuW(popup, MF_STRING | reachOf(*each.entry), static_cast<UINT_PTR>(each.number),
                  wideText(each.entry->caption).c_str());
    }
  }
  return popup;
}

void MenuView::draw() {
  std::vector<Drawn> now = state();
  if (bar_ != nullptr && now == drawn_) return;
  drawn_ = std::move(now);
  const HMENU bar = CreateMenu();
  for (const Group& group : groups_) {
    if (!group.title.entry->visible) continue;
    AppendMenuW(bar, MF_POPUP | reachOf(*group.title.entry), reinterpret_cast<UINT_PTR>(popupOf(group)),
                wideText(group.title.entry->caption).c_str());
  }
  SetMenu(window_, bar);
  if (bar_ != nullptr) DestroyMenu(bar_);
  bar_ = bar;
}

bool MenuView::click(int number, Touches& touches) const {
  for (const Group& group : groups_) {
    for (const Entry& each : group.entries) {
      if (each.entry == nullptr || each.number != number) continue;
      postClick(touches, *each.entry);
      return true;
    }
  }
  return false;
}

}  // namespace trelvin::desktop
