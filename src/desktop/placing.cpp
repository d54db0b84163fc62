#include "desktop/placing.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace trelvin::desktop {

struct Placing::Node {
  const Place* place = nullptr;
  bool isWords = false;  // those in front of the place
  bool isRow = false;
  bool isStack = false;
  int share = 0;
  Insets insets{};
  std::vector<std::unique_ptr<Node>> nodes{};
  Extent least{};
  Rectangle room{};

  [[nodiscard]] bool isFrame() const {
    return place->kind == Place::Kind::kControl && !place->places.empty();
  }
  [[nodiscard]] bool isLeaf() const { return isWords || place->places.empty(); }
  [[nodiscard]] bool isGap() const { return place->kind == Place::Kind::kGap; }
};

Rectangle centred(Extent own, const Rectangle& around, const Rectangle& screen) {
  const auto edge = [](int length, int start, int room, int screenStart, int screenRoom) {
    const int last = screenStart + screenRoom - length;
    return std::max(std::min(start + (room - length) / 2, last), screenStart);
  };
  return {edge(own.width, around.left, around.width, screen.left, screen.width),
          edge(own.height, around.top, around.height, screen.top, screen.height), own.width, own.height};
}

namespace {

// One direction of a box: what each needs, and its share of what is left over.
struct Length {
  int least;
  int share;
};

// Lengths in proportion to the shares, as far as each has what it needs; what has no share gets just that.
std::vector<int> divide(const std::vector<Length>& lengths, int room) {
  std::vector<int> given;
  for (const Length& each : lengths) given.push_back(each.share == 0 ? each.least : -1);
  for (bool isSettled = false; !isSettled;) {
    int left = room;
    int shares = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      if (given[i] >= 0) left -= given[i];
      if (given[i] < 0) shares += lengths[i].share;
    }
    isSettled = true;
    for (std::size_t i = 0; i < lengths.size() && isSettled; ++i) {
      if (given[i] >= 0 || lengths[i].least * shares <= left * lengths[i].share) continue;
      given[i] = lengths[i].least;
      isSettled = false;
    }
    if (!isSettled) continue;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      if (given[i] >= 0) continue;
      given[i] = left * lengths[i].share / shares;
      left -= given[i];
      shares -= lengths[i].share;
    }
  }
  return given;
}

}  // namespace

Placing::Placing(const Place& body, const Measures& measures) : measures_(measures), body_(makeNode(body)) {
  alignBeginnings(*body_);
  measureWidth(*body_);
  spreadWidth(*body_, 0, body_->least.width);
  measureHeight(*body_);
  least_ = body_->least;
}

Placing::~Placing() = default;

Extent Placing::least() const {
  return least_;
}

std::unique_ptr<Placing::Node> Placing::makeNode(const Place& place) {
  auto node = std::make_unique<Node>();
  node->place = &place;
  node->isRow = place.kind == Place::Kind::kRow;
  node->isStack = place.kind == Place::Kind::kStack;
  node->share = place.share;
  if (node->isFrame()) node->insets = measures_.insets(place);
  if (place.isIndented) node->insets.left += measures_.indentation();
  for (const Place& each : place.places) addTo(*node, each);
  return node;
}

void Placing::addTo(Node& box, const Place& place) {
  if (place.kind == Place::Kind::kControl && measures_.words(place).width > 0) {
    auto words = std::make_unique<Node>();
    words->place = &place;
    words->isWords = true;
    words->least.width = measures_.words(place).width;
    box.nodes.push_back(std::move(words));
  }
  box.nodes.push_back(makeNode(place));
}

// Of the rows of a frame, but not of the frames within it.
void Placing::alignBeginnings(Node& frame) {
  std::vector<Node*> beginnings;
  const std::function<void(Node&)> collect = [&](Node& box) {
    if (box.isRow && !box.nodes.empty()) {
      Node& first = *box.nodes.front();
      const bool isLabel = first.isLeaf() && !first.place->names.empty();
      if (isLabel) first.least.width = measures_.leastWidth(*first.place);
      if (first.isWords || isLabel) beginnings.push_back(&first);
    }
    for (const auto& each : box.nodes) {
      if (each->isFrame() && !each->isWords) {
        alignBeginnings(*each);
      } else {
        collect(*each);
      }
    }
  };
  collect(frame);
  int widest = 0;
  for (const Node* each : beginnings) widest = std::max(widest, each->least.width);
  for (Node* each : beginnings) each->least.width = widest;
}

void Placing::measureWidth(Node& node) const {
  if (node.isLeaf()) {
    // A beginning has its width already.
    if (!node.isGap() && node.least.width == 0) node.least.width = measures_.leastWidth(*node.place);
    if (!node.isGap() && !node.isWords) node.least.width += node.insets.left;
    return;
  }
  int width = 0;
  for (const auto& each : node.nodes) {
    measureWidth(*each);
    width = node.isRow ? width + each->least.width : std::max(width, each->least.width);
  }
  if (node.isRow) width += measures_.spacing() * static_cast<int>(node.nodes.size() - 1);
  node.least.width = width + node.insets.left + node.insets.right;
}

void Placing::spreadWidth(Node& node, int left, int width) const {
  node.room.left = left + (node.isLeaf() ? node.insets.left : 0);
  node.room.width = width - (node.isLeaf() ? node.insets.left : 0);
  if (node.isLeaf()) return;
  left += node.insets.left;
  width -= node.insets.left + node.insets.right;
  if (!node.isRow) {
    for (const auto& each : node.nodes) spreadWidth(*each, left, width);
    return;
  }
  std::vector<Length> lengths;
  for (const auto& each : node.nodes) lengths.push_back({each->least.width, each->share});
  const std::vector<int> widths =
      divide(lengths, width - measures_.spacing() * static_cast<int>(lengths.size() - 1));
  for (std::size_t i = 0; i < widths.size(); ++i) {
    spreadWidth(*node.nodes[i], left, widths[i]);
    left += widths[i] + measures_.spacing();
  }
}

void Placing::measureHeight(Node& node) const {
  if (node.isWords) {
    node.least.height = measures_.words(*node.place).height;
    return;
  }
  if (node.isLeaf()) {
    node.least.height = node.isGap() ? 0 : measures_.leastHeight(*node.place, node.room.width);
    return;
  }
  int height = 0;
  for (const auto& each : node.nodes) {
    measureHeight(*each);
    const bool isAbove = !node.isRow && !node.isStack;
    height = isAbove ? height + each->least.height : std::max(height, each->least.height);
  }
  if (!node.isRow && !node.isStack) height += measures_.spacing() * static_cast<int>(node.nodes.size() - 1);
  node.least.height = height + node.insets.top + node.insets.bottom;
}

void Placing::spreadHeight(Node& node, int top, int height) const {
  node.room.top = top;
  node.room.height = height;
  if (node.isLeaf()) return;
  top += node.insets.top;
  height -= node.insets.top + node.insets.bottom;
  if (node.isStack || node.isRow) {
    for (const auto& each : node.nodes) {
      const bool isAsHighAsNeeded = node.isRow && each->isLeaf();
      const int own = isAsHighAsNeeded ? std::min(each->least.height, height) : height;
      spreadHeight(*each, top + (height - own) / 2, own);
    }
    return;
  }
  std::vector<Length> lengths;
  for (const auto& each : node.nodes) lengths.push_back({each->least.height, each->share});
  const std::vector<int> heights =
      divide(lengths, height - measures_.spacing() * static_cast<int>(lengths.size() - 1));
  for (std::size_t i = 0; i < heights.size(); ++i) {
    spreadHeight(*node.nodes[i], top, heights[i]);
    top += heights[i] + measures_.spacing();
  }
}

void Placing::place(const Rectangle& room, const Put& put) {
  spreadWidth(*body_, room.left, std::max(room.width, least_.width));
  measureHeight(*body_);
  spreadHeight(*body_, room.top, std::max(room.height, body_->least.height));
  report(*body_, put);
}

void Placing::report(const Node& box, const Put& put) const {
  Rectangle words;
  for (const auto& each : box.nodes) {
    if (each->isWords) {
      words = each->room;
      continue;
    }
    if (each->place->kind == Place::Kind::kControl) put(*each->place, each->room, words);
    words = {};
    report(*each, put);
  }
}

}  // namespace trelvin::desktop
