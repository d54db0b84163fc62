// Views of a list control: as a box with its entries below each other, and as a drop-down.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desktop/win32/control_view.h"

namespace trelvin::desktop {

// What both do with the entries: Windows keeps a copy of them, for its search by letters and for screen
// readers.
class EntriesView : public ControlView {
 public:
  // Windows' messages of the kind of list.
  struct Messages {
    UINT clear;
    UINT add;
  };
  EntriesView(ListControl& list, const Setting& setting, const wchar_t* windowClass, DWORD style,
              DWORD extendedStyle, Messages messages);

 protected:
  [[nodiscard]] ListControl& list() const { return list_; }
  // Brings over the entries that have come or changed. Whether any was written anew that had been there.
  bool drawEntries();
  std::optional<LRESULT> receive(UINT message, WPARAM first, LPARAM second) override;

 private:
  ListControl& list_;
  Messages messages_;
  std::int32_t drawnCount_ = 0;
  std::uint64_t rewrites_ = 0;
};

class ListBoxView final : public EntriesView {
 public:
  ListBoxView(ListControl& list, const Setting& setting);
  ~ListBoxView() override;
  void draw() override;
  void renewFont() override;
  [[nodiscard]] int leastWidth() const override;
  [[nodiscard]] int leastHeight(int width) const override;
  void hearCommand(int notification) override;
  void drawEntry(const DRAWITEMSTRUCT& entry) override;
  bool pressReturn() override;
  [[nodiscard]] std::string tipAt(POINT place) const override;

 protected:
  std::optional<LRESULT> receive(UINT message, WPARAM first, LPARAM second) override;

 private:
  [[nodiscard]] int entryHeight() const;
  void refresh();
  void drawSelection();
  [[nodiscard]] std::vector<std::int32_t> drawnSelection() const;
  void drawText(const DRAWITEMSTRUCT& entry, const std::string& text) const;
  void drawMark(const DRAWITEMSTRUCT& entry, RECT place) const;
  void passChoiceOn();

  int lines_;
  int characters_;
  bool hasMarks_;
  std::uint64_t revision_ = 0;
  std::int32_t inHand_ = -1;
};

class DropDownView final : public EntriesView {
 public:
  DropDownView(ListControl& list, const Setting& setting);
  void draw() override;
  [[nodiscard]] int leastWidth() const override;
  [[nodiscard]] int leastHeight(int width) const override;
  void moveTo(const Rectangle& room) override;
  void hearCommand(int notification) override;
  [[nodiscard]] bool isOpen() const override;

 protected:
  std::optional<LRESULT> receive(UINT message, WPARAM first, LPARAM second) override;
};

}  // namespace trelvin::desktop
