#include "desktop/qt/list_view.h"

#include <QItemSelection>
#include <QKeyEvent>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStyleOption>
#include <algorithm>
#include <map>
#include <vector>

#include "desktop/qt/texts.h"

namespace trelvin::desktop {

namespace {

// The platform's codes of keys that give no character; letters and digits have their own.
std::int32_t codeOfKey(const QKeyEvent& event) {
  static const std::map<int, std::int32_t> codes{
      {Qt::Key_Backspace, 8}, {Qt::Key_Tab, 9},    {Qt::Key_Return, 13}, {Qt::Key_Enter, 13},
      {Qt::Key_Escape, 27},   {Qt::Key_Space, 32}, {Qt::Key_PageUp, 33}, {Qt::Key_PageDown, 34},
      {Qt::Key_End, 35},      {Qt::Key_Home, 36},  {Qt::Key_Left, 37},   {Qt::Key_Up, 38},
      {Qt::Key_Right, 39},    {Qt::Key_Down, 40},  {Qt::Key_Insert, 45}, {Qt::Key_Delete, 46}};
  const auto found = codes.find(event.key());
  if (found != codes.end()) return found->second;
  return event.key() < 0x80 ? event.key() : 0;
}

// Backspace comes as the character 8 on every window system. Delete gives a character on some, which the
// platform's own controls never see.
std::int32_t codeOfCharacter(const QKeyEvent& event) {
  if (event.key() == Qt::Key_Backspace) return 8;
  if (event.key() == Qt::Key_Delete || event.text().isEmpty()) return 0;
  return event.text().front().unicode();
}

// Notes keys for the list's routines. What the key does to the list itself is Qt's affair.
void passKeyPress(ListControl& list, const QKeyEvent& event, Touches& touches) {
  postKeyPress(touches, list, codeOfCharacter(event));
}

// A key that is held down sends releases too, but it comes up only once.
void passKeyUp(ListControl& list, const QKeyEvent& event, Touches& touches) {
  if (!event.isAutoRepeat()) postKeyUp(touches, list, codeOfKey(event));
}

// Some styles draw the outline of a mark in a shade of the window's colour, which dark colours swallow.
class MarkStyle final : public QProxyStyle {
 public:
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (element != PE_IndicatorItemViewItemCheck) return;
    painter->save();
    painter->setPen(option->palette.color(QPalette::PlaceholderText));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
  }
};

QItemSelection selectionOf(const ListControl& list, const QAbstractItemModel& model) {
  QItemSelection selection;
  if (list.selCount() == 0) return selection;
  if (!list.isMultiple()) {
    selection.select(model.index(list.listIndex(), 0), model.index(list.listIndex(), 0));
    return selection;
  }
  for (std::int32_t i = 0; i < list.listCount(); ++i) {
    if (!list.selected(i)) continue;
    const std::int32_t first = i;
    while (list.selected(i + 1)) ++i;
    selection.select(model.index(first, 0), model.index(i, 0));
  }
  return selection;
}

}  // namespace

int EntriesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : told_;
}

QVariant EntriesModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:  // a path that is cut off can be read as a whole
      return toQt(list_.list(index.row()));
    case Qt::CheckStateRole:
      if (hasMarks_) return static_cast<int>(list_.selected(index.row()) ? Qt::Checked : Qt::Unchecked);
      return {};
    default:
      return {};
  }
}

EntriesModel::Change EntriesModel::update() {
  const std::int32_t count = list_.listCount();
  if (rewrites_ != list_.rewrites()) {
    beginResetModel();
    rewrites_ = list_.rewrites();
    told_ = count;
    endResetModel();
    return Change::kRewritten;
  }
  if (told_ == count) return Change::kNone;
  beginInsertRows({}, told_, count - 1);
  told_ = count;
  endInsertRows();
  return Change::kAppended;
}

// A list that hears the Return key as a double-click, so that no mouse is needed, and passes keys on.
class ListBoxView::Box : public QListView {
 public:
  Box(ListControl& list, const Place& place, QWidget& parent, Desk& desk)
      : QListView(&parent), list_(list), touches_(desk.touches), place_(place) {}

  [[nodiscard]] QSize minimumSizeHint() const override {
    const int frame = 2 * frameWidth();
    return {fontMetrics().averageCharWidth() * place_.characters + frame,
            (fontMetrics().height() + 2) * place_.lines + frame};
  }
  [[nodiscard]] QSize sizeHint() const override { return minimumSizeHint(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    passKeyPress(list_, *event, touches_);
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && list_.onDblClick) {
      postDoubleClick(touches_, list_);
      return;
    }
    QListView::keyPressEvent(event);
  }
  void keyReleaseEvent(QKeyEvent* event) override {
    passKeyUp(list_, *event, touches_);
    QListView::keyReleaseEvent(event);
  }

 private:
  ListControl& list_;
  Touches& touches_;
  Place place_;
};

ListBoxView::ListBoxView(ListControl& list, const Place& place, QWidget& parent, Desk& desk)
    : ListBoxView(list, place, desk, *new Box(list, place, parent, desk)) {}

ListBoxView::ListBoxView(ListControl& list, const Place& place, Desk& desk, Box& box)
    : WidgetView(list, place, box),
      list_(list),
      touches_(desk.touches),
      model_(list, place.hasMarks),
      box_(box) {
  box_.setModel(&model_);
  if (place.hasMarks) {
    auto* const style = new MarkStyle;
    style->setParent(&box_);
    box_.setStyle(style);
  }
  box_.setUniformItemSizes(true);
  box_.setTextElideMode(Qt::ElideMiddle);
  box_.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  box_.setEditTriggers(QAbstractItemView::NoEditTriggers);
  box_.setSelectionMode(!list.isMultiple() ? QAbstractItemView::SingleSelection
                        : place.hasMarks   ? QAbstractItemView::MultiSelection
                                           : QAbstractItemView::ExtendedSelection);
  QObject::connect(box_.selectionModel(), &QItemSelectionModel::selectionChanged, &box_,
                   [this] { passChoiceOn(); });
  QObject::connect(&box_, &QListView::doubleClicked, &box_, [this] { postDoubleClick(touches_, list_); });
  list_.onRefresh = [this, &desk] {
    if (!desk.pace.isDue()) return;
    desk.redraw();  // with what has changed before it, such as the button of the run
    box_.viewport()->repaint();
    desk.pace.noteDrawn();
  };
}

ListBoxView::~ListBoxView() {
  list_.onRefresh = nullptr;
  delete &box_;  // before the model that it shows
}

void ListBoxView::passChoiceOn() {
  if (isDrawing_) return;
  std::vector<std::int32_t> chosen;
  for (const QModelIndex& index : box_.selectionModel()->selectedRows()) chosen.push_back(index.row());
  postChoice(touches_, list_, std::move(chosen), box_.currentIndex().row());
}

void ListBoxView::draw() {
  WidgetView::draw();
  if (revision_ == list_.revision()) return;
  isDrawing_ = true;
  // Marks that have come since would be wiped out.
  if (drawEntries() || !touches_.areWaitingFor(list_)) {
    drawSelection();
    revision_ = list_.revision();
  }
  isDrawing_ = false;
}

bool ListBoxView::drawEntries() {
  const int current = box_.currentIndex().row();
  const int scrolled = box_.verticalScrollBar()->value();
  if (model_.update() != EntriesModel::Change::kRewritten) return false;
  inHand_ = -1;
  // The place in the list stays where the person had it.
  const int place = std::min(current, model_.rowCount() - 1);
  if (place >= 0) box_.selectionModel()->setCurrentIndex(model_.index(place), QItemSelectionModel::NoUpdate);
  box_.verticalScrollBar()->setValue(scrolled);
  return true;
}

void ListBoxView::drawSelection() {
  QItemSelectionModel& drawn = *box_.selectionModel();
  if (list_.selCount() > 0 || drawn.hasSelection()) {
    drawn.select(selectionOf(list_, model_), QItemSelectionModel::ClearAndSelect);
    box_.viewport()->update();
  }
  if (inHand_ == list_.listIndex()) return;
  inHand_ = list_.listIndex();
  if (inHand_ < 0) return;
  drawn.setCurrentIndex(model_.index(inHand_), QItemSelectionModel::NoUpdate);
  box_.scrollTo(model_.index(inHand_));
}

// The wheel turns pages; an IIS version that changes under a passing pointer would be noticed too late.
class DropDownView::Box : public QComboBox {
 public:
  Box(ListControl& list, QWidget& parent, Desk& desk)
      : QComboBox(&parent), list_(list), touches_(desk.touches) {
    setFocusPolicy(Qt::StrongFocus);
  }

 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
  void keyPressEvent(QKeyEvent* event) override {
    passKeyPress(list_, *event, touches_);
    QComboBox::keyPressEvent(event);
  }
  void keyReleaseEvent(QKeyEvent* event) override {
    passKeyUp(list_, *event, touches_);
    QComboBox::keyReleaseEvent(event);
  }

 private:
  ListControl& list_;
  Touches& touches_;
};

DropDownView::DropDownView(ListControl& list, const Place& place, QWidget& parent, Desk& desk)
    : DropDownView(list, place, desk, *new Box(list, parent, desk)) {}

DropDownView::DropDownView(ListControl& list, const Place& place, Desk& desk, Box& box)
    : WidgetView(list, place, box), list_(list), model_(list, false), box_(box) {
  box_.setModel(&model_);
  QObject::connect(&box_, &QComboBox::activated, &box_, [&list, &desk](int index) {
    desk.touches.post(list, [&list, index] { list.choose({index}, index); });
  });
}

DropDownView::~DropDownView() {
  delete &box_;  // before the model that it shows
}

void DropDownView::draw() {
  WidgetView::draw();
  if (model_.update() == EntriesModel::Change::kRewritten) box_.setCurrentIndex(-1);
  if (box_.currentIndex() != list_.listIndex()) box_.setCurrentIndex(list_.listIndex());
}

}  // namespace trelvin::desktop
