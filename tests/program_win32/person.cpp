#include "program_win32/person.h"

#include <commctrl.h>

#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "desktop/win32/control_view.h"
#include "desktop_win32/hand.h"
#include "platform/windows/wide_text.h"

namespace trelvin::test {

namespace {

constexpr std::chrono::seconds kPatience{40};
constexpr std::chrono::milliseconds kGlance{20};
constexpr int kTextOfBox = 0xFFFF;  // Windows' own number for it

// Memory of another program, for what its controls are asked for by address.
class ForeignMemory {
 public:
  ForeignMemory(HWND window, std::size_t size) : size_(size) {
    DWORD number = 0;
    GetWindowThreadProcessId(window, &number);
    process_ = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ, FALSE, number);
    address_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
  }
  ForeignMemory(const ForeignMemory&) = delete;
  ForeignMemory& operator=(const ForeignMemory&) = delete;
  ~ForeignMemory() {
    VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    CloseHandle(process_);
  }
  [[nodiscard]] LPARAM address() const { return reinterpret_cast<LPARAM>(address_); }
  void readInto(void* own) const { ReadProcessMemory(process_, address_, own, size_, nullptr); }

 private:
  std::size_t size_;
  HANDLE process_;
  void* address_;
};

std::vector<HWND> windowsOf(DWORD process) {
  std::vector<HWND> all;
  EnumWindows(
      [](HWND window, LPARAM list) -> BOOL {
        if (IsWindowVisible(window) != FALSE) reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&all));
  std::erase_if(all, [process](HWND each) {
    DWORD owner = 0;
    GetWindowThreadProcessId(each, &owner);
    return owner != process;
  });
  return all;
}

POINT middleOf(const RECT& room) {
  return {(room.left + room.right) / 2, (room.top + room.bottom) / 2};
}

POINT middleOf(HWND window) {
  RECT room{};
  GetWindowRect(window, &room);
  return middleOf(room);
}

POINT onScreen(HWND window, POINT place) {
  ClientToScreen(window, &place);
  return place;
}

// The place of the cross, which Windows has drawn where it wants.
POINT placeOfCross(HWND window) {
  RECT room{};
  GetWindowRect(window, &room);
  POINT place{room.right - 2, room.top + GetSystemMetrics(SM_CYFRAME) + GetSystemMetrics(SM_CYCAPTION) / 2};
  for (; place.x > room.left; --place.x) {
    if (SendMessageW(window, WM_NCHITTEST, 0, MAKELPARAM(place.x, place.y)) == HTCLOSE) {
      return {place.x - GetSystemMetrics(SM_CXSIZE) / 3, place.y};
    }
  }
  throw std::runtime_error("the window has no cross");
}

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

}  // namespace

Person::Person(DWORD process, std::filesystem::path notes) : process_(process), notes_(std::move(notes)) {}

bool Person::waitFor(const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    if (holds()) return true;
    std::this_thread::sleep_for(kGlance);
  }
  return holds();
}

HWND Person::window(const std::string& title) const {
  for (HWND each : windowsOf(process_)) {
    if (Hand::textOf(each) == title) return each;
  }
  return nullptr;
}

HWND Person::see(const Form& form, const std::string& control) const {
  const Control* const wanted = form.control(control);
  const HWND top = window(form.caption);
  if (wanted == nullptr || top == nullptr) return nullptr;
  return GetDlgItem(top, desktop::numberOf(form, *wanted));
}

std::string Person::boxText(const std::string& title) const {
  const HWND box = window(title);
  return box == nullptr ? std::string() : Hand::textOf(GetDlgItem(box, kTextOfBox));
}

bool Person::canReach(HWND window) {
  if (window == nullptr || IsWindowVisible(window) == FALSE || IsWindowEnabled(window) == FALSE) return false;
  const HWND top = GetAncestor(window, GA_ROOT);
  return IsWindowEnabled(top) != FALSE && GetAncestor(WindowFromPoint(middleOf(window)), GA_ROOT) == top;
}

HWND Person::focus() const {
  const HWND front = GetForegroundWindow();
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  if (GetGUIThreadInfo(GetWindowThreadProcessId(front, nullptr), &info) == FALSE) return nullptr;
  return info.hwndFocus;
}

void Person::click(HWND window) {
  clickAt(window, middleOf(window));
}

void Person::clickEntry(HWND list, int entry, bool isDouble) {
  RECT room{};
  SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(&room));
  clickAt(list, onScreen(list, {room.left + 30, (room.top + room.bottom) / 2}), isDouble);
}

void Person::clickTab(HWND strip, int index) {
  RECT room{};
  const ForeignMemory memory(strip, sizeof room);
  SendMessageW(strip, TCM_GETITEMRECT, static_cast<WPARAM>(index), memory.address());
  memory.readInto(&room);
  clickAt(strip, onScreen(strip, middleOf(room)));
}

void Person::clickInBox(int button, const std::string& title) {
  click(GetDlgItem(window(title), button));
}

void Person::clickClose(HWND window) {
  clickAt(window, placeOfCross(window));
}

void Person::clickAt(HWND window, POINT place, bool isDouble) {
  if (!waitFor([window] { return canReach(window); })) {
    throw std::runtime_error("a window can't be reached: " + Hand::textOf(window));
  }
  xdotool("mousemove " + std::to_string(place.x) + " " + std::to_string(place.y) + " click " +
          (isDouble ? "--repeat 2 --delay 50 1" : "1"));
}

void Person::waitForFront(HWND window) const {
  if (!waitFor([&] { return GetForegroundWindow() == window && focus() != nullptr; })) {
    throw std::runtime_error("a window does not come to the front: " + Hand::textOf(window));
  }
}

void Person::keys(const std::string& names, HWND inFront) {
  waitForFront(inFront);
  xdotool("key --delay 30 " + names);
}

void Person::type(const std::string& text, HWND inFront) {
  waitForFront(inFront);
  xdotool("type --delay 20 " + quoted(text));
}

void Person::takePicture(HWND window, const std::string& file) {
  xdotool("mousemove 0 0");
  constexpr std::chrono::milliseconds kDrawn{700};
  std::this_thread::sleep_for(kDrawn);
  RECT room{};
  GetWindowRect(window, &room);
  runBeneath("import -window root -crop " + std::to_string(room.right - room.left) + "x" +
             std::to_string(room.bottom - room.top) + "+" + std::to_string(room.left) + "+" +
             std::to_string(room.top) + " +repage " + quoted(file));
}

void Person::xdotool(const std::string& arguments) {
  runBeneath("xdotool " + arguments);
}

// Windows gets no handle on a program of the machine beneath, so that it notes its end.
void Person::runBeneath(const std::string& command) {
  const std::filesystem::path note = notes_ / "done";
  std::filesystem::remove(note);
  std::wstring line = wideText("/bin/sh -c \"" + command + "; echo $? >begun; mv begun done\"");
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  const BOOL isStarted = CreateProcessW(L"Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                        notes_.c_str(), &start, &process);
  if (isStarted == FALSE || !waitFor([&] { return std::filesystem::exists(note); })) {
    throw std::runtime_error("there is no hand for mouse and keys");
  }
  int status = -1;
  std::ifstream(note) >> status;
  if (status != 0) throw std::runtime_error(command + " failed");
}

}  // namespace trelvin::test
