// Where the controls of a window stand, worked out of its places, for window systems that leave that to the
// program. Nothing of a window system is in here: lengths are pixels of whatever screen.
#pragma once

#include <functional>
#include <memory>

#include "desktop/layout.h"

namespace trelvin::desktop {

struct Extent {
  int width = 0;
  int height = 0;
  bool operator==(const Extent&) const = default;
};

struct Rectangle {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rectangle&) const = default;
};

// Where a window comes up: in the middle of what is around it, but on the screen. Of one that is larger than
// the screen the upper left corner is there. Screens beside or above the first one have places below zero.
Rectangle centred(Extent own, const Rectangle& around, const Rectangle& screen);

// Room around what a frame or a window holds.
struct Insets {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

// What only the view knows: how large things are on its screen.
class Measures {
 public:
  Measures() = default;
  Measures(const Measures&) = delete;
  Measures& operator=(const Measures&) = delete;
  virtual ~Measures() = default;

  // Of a control that holds no others, without the words in front of it.
  [[nodiscard]] virtual int leastWidth(const Place& place) const = 0;
  [[nodiscard]] virtual int leastHeight(const Place& place, int width) const = 0;
  // Of the words in front of a control; nothing where it has none.
  [[nodiscard]] virtual Extent words(const Place& place) const = 0;
  // Of a frame.
  [[nodiscard]] virtual Insets insets(const Place& place) const = 0;
  [[nodiscard]] virtual int spacing() const = 0;      // between two places
  [[nodiscard]] virtual int indentation() const = 0;  // of what depends on the control above it
};

// Called for each control: where it stands, and where the words in front of it do.
using Put = std::function<void(const Place& place, const Rectangle& control, const Rectangle& words)>;

// Rows, columns, stacks and frames get the room that their controls need. What is left over goes to the
// shares. In a row a control has the height that it needs and stands in the middle, a frame has the row's
// height. The rows of one frame that begin with words, or with a label that stands for a control, have their
// beginnings equally wide.
class Placing {
 public:
  // Of a box: a row, a column, a stack. It and the measures have to outlive this object, which knows nothing
  // of what changes on the screen later on.
  Placing(const Place& body, const Measures& measures);
  ~Placing();

  // Of the whole, at its least width.
  [[nodiscard]] Extent least() const;
  // Less room than the least lets what is at the right and the bottom stand outside.
  void place(const Rectangle& room, const Put& put);

 private:
  struct Node;
  std::unique_ptr<Node> makeNode(const Place& place);
  void addTo(Node& box, const Place& place);
  void alignBeginnings(Node& frame);
  void measureWidth(Node& node) const;
  void measureHeight(Node& node) const;
  void spreadWidth(Node& node, int left, int width) const;
  void spreadHeight(Node& node, int top, int height) const;
  void report(const Node& box, const Put& put) const;

  const Measures& measures_;
  std::unique_ptr<Node> body_;
  Extent least_;
};

}  // namespace trelvin::desktop
