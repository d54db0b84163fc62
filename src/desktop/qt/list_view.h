// Views of a list control: as a box with its entries below each other, and as a drop-down.
#pragma once

#include <QAbstractListModel>
#include <QComboBox>
#include <QListView>
#include <cstdint>

#include "desktop/qt/control_view.h"

namespace trelvin::desktop {

// Lets Qt read the entries out of the control itself, so that ten thousand of them are never copied.
class EntriesModel : public QAbstractListModel {
 public:
  EntriesModel(const ListControl& list, bool hasMarks) : list_(list), hasMarks_(hasMarks) {}

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

  enum class Change { kNone, kAppended, kRewritten };
  // Tells Qt which entries have come or changed since the last call.
  Change update();

 private:
  const ListControl& list_;
  bool hasMarks_;
  std::int32_t told_ = 0;
  std::uint64_t rewrites_ = 0;
};

class ListBoxView final : public WidgetView {
 public:
  ListBoxView(ListControl& list, const Place& place, QWidget& parent, Desk& desk);
  ~ListBoxView() override;
  void draw() override;

 private:
  class Box;
  ListBoxView(ListControl& list, const Place& place, Desk& desk, Box& box);
  void passChoiceOn();
  bool drawEntries();  // whether any was written anew that had been there
  void drawSelection();

  ListControl& list_;
  Touches& touches_;
  EntriesModel model_;
  Box& box_;
  std::uint64_t revision_ = 0;
  std::int32_t inHand_ = -1;
  bool isDrawing_ = false;
};

class DropDownView final : public WidgetView {
 public:
  DropDownView(ListControl& list, const Place& place, QWidget& parent, Desk& desk);
  ~DropDownView() override;
  void draw() override;

 private:
  class Box;
  DropDownView(ListControl& list, const Place& place, Desk& desk, Box& box);

  ListControl& list_;
  EntriesModel model_;
  Box& box_;
};

}  // namespace trelvin::desktop
