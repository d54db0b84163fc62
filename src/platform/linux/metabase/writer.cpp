#include "writer.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "element_text.h"
#include "element_writer.h"

namespace trelvin {

namespace {

// A stretch of the source and what stands in its place.
struct Edit {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string text;
};

// Collects the edits that turn the source into the new text.
class Editor {
 public:
  Editor(const Tree& tree, std::string_view source) : tree_(tree), source_(source) {
    const std::size_t firstEnd = source.find('\n');
    lineEnd_ =
        firstEnd != std::string_view::npos && firstEnd > 0 && source[firstEnd - 1] == '\r' ? "\r\n" : "\n";
  }

  std::vector<Edit> edits() {
    for (const pugi::xml_node element : tree_.removedElements()) removeElement(element);
    anchor_ = firstPlace();
    visitAll();
    std::stable_sort(edits_.begin(), edits_.end(), [](const Edit& left, const Edit& right) {
      return std::pair(left.begin, left.end) < std::pair(right.begin, right.end);
    });
    return std::move(edits_);
  }

 private:
  static std::size_t beginOf(const pugi::xml_node& element) {
    return static_cast<std::size_t>(element.offset_debug()) - 1;
  }

  // The element with its line, unless something else stands on it.
  void removeElement(const pugi::xml_node& element) {
    const ElementText old = elementAt(source_, beginOf(element));
    std::size_t begin = old.begin;
    while (begin > 0 && (source_[begin - 1] == ' ' || source_[begin - 1] == '\t')) --begin;
    const bool ownLine = begin == 0 || source_[begin - 1] == '\n';
    std::size_t end = old.end;
    if (ownLine && source_.substr(end).starts_with("\r\n")) {
      end += 2;
    } else if (ownLine && source_.substr(end).starts_with("\n")) {
      end += 1;
    } else {
      begin = old.begin;
    }
    edits_.push_back({begin, end, {}});
  }

  // Where a node goes that has none before it: in front of the first element that belongs to a path, but
  // behind the global one.
  [[nodiscard]] std::size_t firstPlace() const {
    const pugi::xml_node properties = tree_.document.document_element().child("MBProperty");
    const ElementText frame = elementAt(source_, beginOf(properties));
    auto place = static_cast<std::size_t>(frame.inner.data() - source_.data());
    for (const pugi::xml_node element : properties.children()) {
      if (element.type() != pugi::node_element) continue;
      if (std::string_view(element.attribute("Location").value()) != ".") break;
      place = elementAt(source_, beginOf(element)).end;
    }
    return place;
  }

  // Depth first, as the file is ordered. A new element goes behind the element of the node before it.
  void visitAll() {
    std::vector<Node*> left{tree_.root()};
    while (!left.empty()) {
      Node* node = left.back();
      left.pop_back();
      visit(*node);
      const std::vector<Node*>& children = tree_.children(*node);
      left.insert(left.end(), children.rbegin(), children.rend());
    }
  }

  void visit(Node& node) {
    if (node.element) {
      lastInFile_ = node.element;
      if (node.changed) {
        const ElementText old = elementAt(source_, beginOf(node.element));
        edits_.push_back({old.begin, old.end, changedElement(tree_, node, old, lineEnd_)});
      }
    } else if (!node.implied) {
      // Looked up here only: finding the end of an element costs a walk through it.
      if (lastInFile_) anchor_ = elementAt(source_, beginOf(lastInFile_)).end;
      std::string text(lineEnd_);
      text += newElement(tree_, node, lineEnd_);
      edits_.push_back({anchor_, anchor_, std::move(text)});
    }
  }

  const Tree& tree_;
  std::string_view source_;
  std::string_view lineEnd_;
  std::vector<Edit> edits_;
  std::size_t anchor_ = 0;
  pugi::xml_node lastInFile_;
};

}  // namespace

void writeMetabase(const Tree& tree, std::string_view source, MetabaseRewrite& target) {
  std::size_t done = 0;
  for (const Edit& edit : Editor(tree, source).edits()) {
    target.write(source.substr(done, edit.begin - done));
    target.write(edit.text);
    done = edit.end;
  }
  target.write(source.substr(done));
}

}  // namespace trelvin
