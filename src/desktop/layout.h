// What the windows look like: which control stands where, told by the names of the control state. Nothing of
// a window system is in here, so that every view draws the same windows.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "window/controls.h"

namespace trelvin::desktop {

// A control with its place, or several places beside each other, below each other or in place of each other.
struct Place {
  enum class Kind {
    kControl,
    kRow,
    kColumn,
    kStack,  // the places share one room, which is as large as the largest needs; the state shows one of them
    kGap     // room that is left over
  };
  Kind kind = Kind::kControl;
  std::string control{};        // its name in the form
  std::vector<Place> places{};  // in reading order: of a row, a column, a stack, and of a frame, which is one
  std::string label{};          // words in front of a control for which the form has none
  std::string names{};          // of a label: the control that it stands for
  std::string accessKeys{};     // a letter of the caption or the label; of a tab strip one for each tab
  std::string returnPresses{};  // of a text box: the button that the Return key presses in it
  int share = 0;                // of the room that is left over in its row or column
  int lines = 0;                // of a list: how many it shows at the least
  int characters = 0;           // of a list or a text box: how many it has room for at the least
  bool isDropDown = false;      // of a list
  bool hasMarks = false;        // of a list: entries carry a check mark, and a click turns just that one
  bool isHeading = false;       // of a frame: a caption above its places, without a box around them
  bool isTitle = false;         // of a label: the window's own words, in large letters
  bool isIndented = false;      // depends on the one above it
};

struct Menu {
  std::string control;
  std::vector<std::string> entries;  // an empty name is a line between two groups
};

struct WindowLayout {
  std::vector<Menu> menus{};
  Place body{};
  std::string statusBar{};
  std::string progressBar{};           // in the right corner of the status bar
  std::vector<std::string> undrawn{};  // controls that only hold data
  std::string returnPresses{};         // the button that the Return key presses anywhere
  std::string escapePresses{};         // the button that the Escape key presses
  bool escapeCloses = false;           // Escape takes the window away, where no button does
  bool isFixed = false;                // has the size that its controls need
};

// Size in twips.
struct FormSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool operator==(const FormSize&) const = default;
};

struct Window {
  Form* form = nullptr;
  WindowLayout layout{};
  // What runs stands on this form, so that nothing can go on once it is gone.
  bool isMain = false;
  std::function<FormSize()> size{};             // that the form wants; nothing for what its controls need
  std::function<void(FormSize)> afterResize{};  // tells the form which size it has got
  // Tells the form that its window is normal (0), minimized (1) or maximized (2).
  std::function<void(std::int32_t)> afterStateChange{};
};

// All windows that the program can show.
std::vector<Window> windows();

WindowLayout mainLayout();
WindowLayout welcomeLayout();
WindowLayout permissionProgressLayout();
WindowLayout databaseSelectLayout();

// Calls for each place of a control, in reading order, a frame before what it holds.
void forEachControl(const Place& place, const std::function<void(const Place&)>& visit);

// The controls in the order in which the Tab key reaches them. Tells nothing of what is off or hidden.
std::vector<std::string> tabOrder(const Form& form, const WindowLayout& layout);

// What a person who hears the window is told that a control is: its caption, its label, or the caption of the
// frame around it.
std::string spokenName(const Form& form, const WindowLayout& layout, std::string_view control);

// Whether that is a caption on the control itself, which a window system tells by its own means, and as it is
// by then.
bool carriesItsName(const Control& control);

// The words in front of a control: its label, or the caption of a text box, which has no place of its own.
std::string wordsInFront(const Form& form, const Place& place);

// A caption without its access key: "&Find && Replace" is "Find & Replace".
std::string plainCaption(std::string_view caption);
// A caption with "&" in front of the letter that is its access key, and any "&" of its own doubled. A letter
// that isn't in it goes behind it in brackets; no letter leaves the caption as it stands.
std::string captionWithKey(std::string_view caption, std::string_view accessKey);

}  // namespace trelvin::desktop
