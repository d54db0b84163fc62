#include "window/controls.h"

#include <algorithm>
#include <utility>

#include "core/err.h"
#include "core/text.h"

namespace trelvin {

namespace {

constexpr std::int32_t kNoSuchArrayMember = 340;
constexpr std::int32_t kIndexOutOfBounds = 35600;

void run(const Event& event) {
  if (event) event();
}

}  // namespace

Control::Control(Form& form, std::string controlName, std::string controlCaption, std::string controlTooltip)
    : name(std::move(controlName)), caption(std::move(controlCaption)), tooltip(std::move(controlTooltip)) {
  form.controls_.push_back(this);
}

Control* Form::control(std::string_view name) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(),
                                  [&](const Control* each) { return equalsIgnoringCase(each->name, name); });
  return found == controls_.end() ? nullptr : *found;
}

void CheckBox::setValue(bool value) {
  if (value == value_) return;
  value_ = value;
  run(onClick);
}

void OptionButton::setValue(bool value) {
  if (value == value_) return;
  value_ = value;
  if (!value) return;
  for (OptionButton* other : others_) other->value_ = false;
  run(onClick);
}

void OptionButton::group(std::initializer_list<OptionButton*> members) {
  for (OptionButton* member : members) {
    member->others_.assign(members);
    std::erase(member->others_, member);
  }
}

ListControl::ListControl(Form& form, std::string listName, Selection selection, std::string listTooltip)
    : Control(form, std::move(listName), {}, std::move(listTooltip)), selection_(selection) {}

const std::string& ListControl::list(std::int32_t index) const {
  static const std::string kNothing;
  if (index < 0) throw Failure(error_number::kInvalidPropertyArrayIndex);
  return has(index) ? entries_[static_cast<std::size_t>(index)].text : kNothing;
}

void ListControl::setList(std::int32_t index, std::string text) {
  if (!has(index)) throw Failure(error_number::kInvalidPropertyArrayIndex);
  entries_[static_cast<std::size_t>(index)].text = std::move(text);
  noteRewrite();
}

void ListControl::addItem(std::string text) {
  auto place = entries_.end();
  if (sorted) {
    place = std::upper_bound(
        entries_.begin(), entries_.end(), text,
        [](const std::string& added, const Entry& entry) { return sortsBefore(added, entry.text); });
  }
  if (place - entries_.begin() <= listIndex_) ++listIndex_;
  ++revision_;
  if (place != entries_.end()) ++rewrites_;
  place = entries_.insert(place, Entry{std::move(text), false});
  if (onAddItem) onAddItem(place->text);
}

void ListControl::removeItem(std::int32_t index) {
  if (!has(index)) throw Failure(error_number::kInvalidProcedureCall);
  const auto place = entries_.begin() + index;
  if (place->selected) --selCount_;
  entries_.erase(place);
  if (listIndex_ == index) {
    listIndex_ = -1;
  } else if (listIndex_ > index) {
    --listIndex_;
  }
  noteRewrite();
}

void ListControl::clear() {
  entries_.clear();
  listIndex_ = -1;
  selCount_ = 0;
  noteRewrite();
}

void ListControl::assign(const std::vector<std::string>& texts) {
  clear();
  entries_.reserve(texts.size());
  for (const std::string& text : texts) entries_.push_back({text, false});
}

void ListControl::refresh() {
  run(onRefresh);
}

void StatusBar::refresh() {
  run(onRefresh);
}

void ListControl::setListIndex(std::int32_t index) {
  if (index < -1 || index >= listCount()) throw Failure(error_number::kInvalidPropertyValue);
  if (index == listIndex_) return;
  ++revision_;
  if (isMultiple()) {
    listIndex_ = index;
    return;
  }
  if (has(listIndex_)) entries_[static_cast<std::size_t>(listIndex_)].selected = false;
  listIndex_ = index;
  selCount_ = index < 0 ? 0 : 1;
  if (index >= 0) entries_[static_cast<std::size_t>(index)].selected = true;
  run(onClick);
}

bool ListControl::selected(std::int32_t index) const {
  if (index < 0) throw Failure(error_number::kInvalidPropertyArrayIndex);
  return has(index) && entries_[static_cast<std::size_t>(index)].selected;
}

void ListControl::setSelected(std::int32_t index, bool isSelected) {
  if (!has(index)) throw Failure(error_number::kInvalidPropertyArrayIndex);
  if (!isMultiple()) {
    if (isSelected || index == listIndex_) setListIndex(isSelected ? index : -1);
    return;
  }
  Entry& entry = entries_[static_cast<std::size_t>(index)];
  if (entry.selected == isSelected) return;
  entry.selected = isSelected;
  selCount_ += isSelected ? 1 : -1;
  listIndex_ = index;
  ++revision_;
  run(onClick);
}

void ListControl::noteRewrite() {
  ++revision_;
  ++rewrites_;
}

// Returns whether that changed anything.
bool ListControl::select(const std::vector<std::int32_t>& chosen) {
  std::vector<bool> wanted(entries_.size());
  for (const std::int32_t index : chosen) {
    if (has(index)) wanted[static_cast<std::size_t>(index)] = true;
  }
  bool changed = false;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].selected == wanted[i]) continue;
    entries_[i].selected = wanted[i];
    selCount_ += wanted[i] ? 1 : -1;
    changed = true;
  }
  return changed;
}

void ListControl::choose(const std::vector<std::int32_t>& chosen, std::int32_t inHand) {
  if (!isMultiple()) {
    if (has(inHand)) setListIndex(inHand);
    return;
  }
  const bool changed = select(chosen);
  const std::int32_t former = std::exchange(listIndex_, has(inHand) ? inHand : -1);
  if (!changed && former == listIndex_) return;
  ++revision_;
  if (changed) run(onClick);
}

const std::string& ListControl::text() const {
  static const std::string kNothing;
  return has(listIndex_) ? entries_[static_cast<std::size_t>(listIndex_)].text : kNothing;
}

template <typename Member>
Member& ControlArray<Member>::operator()(std::int32_t index) {
  return const_cast<Member&>(std::as_const(*this)(index));
}

template <typename Member>
const Member& ControlArray<Member>::operator()(std::int32_t index) const {
  if (index != 0) {
    throw Failure(kNoSuchArrayMember, "Control array element '" + std::to_string(index) + "' doesn't exist");
  }
  return member_;
}

template class ControlArray<ListControl>;
template class ControlArray<Frame>;

TabStrip::TabStrip(Form& form, std::string stripName, std::vector<Tab> tabs)
    : Control(form, std::move(stripName)), tabs_(std::move(tabs)) {}

const TabStrip::Tab& TabStrip::tab(std::int32_t index) const {
  if (index < 1 || index > tabCount()) throw Failure(kIndexOutOfBounds, "Index out of bounds");
  return tabs_[static_cast<std::size_t>(index - 1)];
}

void TabStrip::select(std::int32_t index) {
  static_cast<void>(tab(index));
  if (index == selected_) return;
  selected_ = index;
  run(onClick);
}

void TabStrip::add(std::int32_t index, Tab added) {
  if (index < 1 || index > tabCount() + 1) throw Failure(kIndexOutOfBounds, "Index out of bounds");
  tabs_.insert(tabs_.begin() + (index - 1), std::move(added));
  if (index <= selected_ && tabCount() > 1) ++selected_;
}

void TabStrip::remove(std::int32_t index) {
  static_cast<void>(tab(index));
  tabs_.erase(tabs_.begin() + (index - 1));
  if (index == selected_) {
    selected_ = 1;
  } else if (index < selected_) {
    --selected_;
  }
}

void ProgressBar::setMax(double max) {
  if (max <= 0) throw Failure(error_number::kInvalidPropertyValue);
  max_ = max;
  value_ = std::min(value_, max_);
}

void ProgressBar::setValue(double value) {
  if (value < 0 || value > max_) throw Failure(error_number::kInvalidPropertyValue);
  value_ = value;
}

Timer::Timer(Form& form, std::string timerName, std::int32_t milliseconds)
    : Control(form, std::move(timerName)), interval(milliseconds) {
  enabled = false;
}

void SocketControl::place(Sockets& sockets) {
  socket_ = sockets.create({.connect = [this] { run(onConnect); },
                            .dataArrival =
                                [this](std::int32_t bytesTotal) {
                                  if (onDataArrival) onDataArrival(bytesTotal);
                                },
                            .close = [this] { run(onClose); },
                            .error =
                                [this](std::int32_t number, const std::string& description) {
                                  if (onError) onError(number, description);
                                }});
}

void SocketControl::connect() {
  bound(socket_).connect(remoteHost, remotePort);
}

void SocketControl::close() {
  if (socket_) socket_->close();
}

void SocketControl::sendData(std::string_view text) {
  bound(socket_).sendData(text);
}

std::string SocketControl::getData() {
  return bound(socket_).getData();
}

}  // namespace trelvin
