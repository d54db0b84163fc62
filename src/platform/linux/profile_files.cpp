#include "platform/linux/profile_files.h"

#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "core/err.h"
#include "core/text.h"
#include "platform/linux/file_text.h"
#include "platform/linux/native_file.h"

namespace trelvin {

namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kStructureBreakers{"\r\n\0", 3};

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

// A name in the file against one of the program.
bool matches(std::string_view stored, std::string_view wanted) {
  stored = withoutBlanks(stored);
  return equalsIgnoringCase(stored, wanted) || equalsIgnoringCase(utf8OrWindows1252(stored), wanted);
}

std::string_view unquoted(std::string_view value) {
  const bool isQuoted =
      value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
  return isQuoted ? value.substr(1, value.size() - 2) : value;
}

// One line of a file, without its end; next is where the following one begins.
struct Line {
  std::size_t begin = 0;
  std::size_t next = 0;
  std::string_view text;

  [[nodiscard]] std::string_view content() const { return withoutBlanks(text); }
  [[nodiscard]] bool isSection() const {
    return content().starts_with('[') && content().find(']') != std::string_view::npos;
  }
  [[nodiscard]] std::string_view sectionName() const { return content().substr(1, content().find(']') - 1); }
  [[nodiscard]] bool isKey() const {
    return !content().starts_with(';') && text.find('=') != std::string_view::npos;
  }
  [[nodiscard]] std::string_view keyName() const { return text.substr(0, text.find('=')); }
  // Where the value's side begins, counted in the whole text.
  [[nodiscard]] std::size_t valueBegin() const { return begin + text.find('=') + 1; }
};

Line lineAt(std::string_view text, std::size_t begin) {
  const std::size_t end = text.find('\n', begin);
  const std::size_t next = end == std::string_view::npos ? text.size() : end + 1;
  const std::size_t length = (end == std::string_view::npos ? text.size() : end) - begin;
  return {begin, next, text.substr(begin, length)};
}

// Where a key is, or where it would go.
struct Place {
  bool hasSection = false;
  bool hasKey = false;
  Line key;
  std::size_t end = 0;  // behind the section's last line that isn't blank
};

// The first section of the name, and in it the first key of the name, are the ones that count.
Place find(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  for (Line line; line.next < text.size();) {
    line = lineAt(text, line.next);
    if (line.isSection()) {
      if (place.hasSection) break;
      place.hasSection = matches(line.sectionName(), section);
    } else if (place.hasSection && line.isKey() && matches(line.keyName(), key)) {
      place.hasKey = true;
      place.key = line;
      break;
    }
    if (place.hasSection && !line.content().empty()) place.end = line.next;
  }
  return place;
}

std::string valueOf(const Line& key) {
  const std::string_view stored = unquoted(withoutBlanks(key.text.substr(key.text.find('=') + 1)));
  return utf8OrWindows1252(stored.substr(0, stored.find('\0')));
}

std::string folded(std::string_view name) {
  return upperCase(utf8OrWindows1252(withoutBlanks(name)));
}

// The keys of a file, by the first section of a name and the first key of a name in it.
class Keys {
 public:
  explicit Keys(std::string_view text) {
    std::unordered_map<std::string, std::string>* section = nullptr;
    for (Line line; line.next < text.size();) {
      line = lineAt(text, line.next);
      if (line.isSection()) {
        const auto [place, isFirst] = sections_.try_emplace(folded(line.sectionName()));
        section = isFirst ? &place->second : nullptr;
      } else if (section != nullptr && line.isKey()) {
        section->try_emplace(folded(line.keyName()), trelvin::valueOf(line));
      }
    }
  }

  [[nodiscard]] std::optional<std::string> valueOf(std::string_view section, std::string_view key) const {
    const auto keys = sections_.find(folded(section));
    if (keys == sections_.end()) return std::nullopt;
    const auto found = keys->second.find(folded(key));
    return found == keys->second.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::unordered_map<std::string, std::unordered_map<std::string, std::string>> sections_;
};

// What tells a file from the one that was read before.
class FileState {
 public:
  explicit FileState(const std::string& nativePath) {
    if (::stat(nativePath.c_str(), &status_) != 0) throw std::system_error(errno, std::generic_category());
    ::clock_gettime(CLOCK_REALTIME, &seen_);
  }

  // Whether it is the same file, which had not changed for a moment when it was read: the file system's clock
  // is too coarse to tell two changes within that moment apart.
  [[nodiscard]] bool isSettledAs(const FileState& read) const {
    return status_.st_dev == read.status_.st_dev && status_.st_ino == read.status_.st_ino &&
           status_.st_size == read.status_.st_size && sameTime(status_.st_mtim, read.status_.st_mtim) &&
           sameTime(status_.st_ctim, read.status_.st_ctim) && read.wasSettled();
  }

 private:
  static bool sameTime(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
  }
  [[nodiscard]] bool wasSettled() const {
    constexpr double kMoment = 0.05;
    const double age = static_cast<double>(seen_.tv_sec - status_.st_ctim.tv_sec) +
                       static_cast<double>(seen_.tv_nsec - status_.st_ctim.tv_nsec) * 1e-9;
    return age > kMoment;
  }

  struct stat status_ {};
  timespec seen_{};
};

bool canBeWritten(std::string_view section, std::string_view key, std::string_view value) {
  const auto breaks = [](std::string_view text) {
    return text.find_first_of(kStructureBreakers) != text.npos;
  };
  if (breaks(section) || breaks(key) || breaks(value)) return false;
  if (section.empty() || section.find(']') != section.npos) return false;
  return !key.empty() && key.find('=') == key.npos && !key.starts_with(';') && !key.starts_with('[');
}

// Puts lines in, behind the end of the one before, should that one have none.
void insertLines(FileText& file, std::size_t position, const std::string& lines) {
  const std::string end(file.lineEnd());
  const bool isOpen = position > 0 && file.text[position - 1] != '\n';
  file.text.insert(position, (isOpen ? end : std::string()) + lines);
}

void setKey(FileText& file, const Place& place, std::string_view section, std::string_view key,
            std::string_view value) {
  const std::string end(file.lineEnd());
  if (place.hasKey) {
    const std::size_t begin = place.key.valueBegin();
    // The line's own end stays: it may differ from the others'.
    const std::size_t behind = place.key.begin + place.key.text.size();
    const bool hasReturn = place.key.text.ends_with('\r');
    file.text.replace(begin, behind - begin - (hasReturn ? 1 : 0), value);
    return;
  }
  const std::string line = std::string(key) + "=" + std::string(value) + end;
  if (place.hasSection) {
    insertLines(file, place.end, line);
  } else {
    insertLines(file, file.text.size(), "[" + std::string(section) + "]" + end + line);
  }
}

// A file that isn't there has no content yet.
FileText readOrEmpty(const std::string& nativePath) {
  try {
    return FileText::fromBytes(readFile(nativePath));
  } catch (const std::system_error& failed) {
    if (failed.code().value() != ENOENT) throw;
  }
  return {};
}

// A job is saved by one call for each key, and a person waits for it: to wait for the disk each time would
// take seconds for a server with a thousand sites.
void writeFile(const std::string& nativePath, const FileText& file) {
  Replacement replacement(nativePath, kNewFileMode);
  writeAll(replacement.file(), file.toBytes());
  replacement.commitWithoutFlush();
}

class NativeProfileFiles final : public ProfileFiles {
 public:
  explicit NativeProfileFiles(PathMapping toNative) : toNative_(std::move(toNative)) {}

  std::uint32_t getString(std::string_view section, std::string_view key, std::string_view defaultValue,
                          std::string& buffer, std::uint32_t size, std::string_view file) override {
    if (size == 0) return 0;
    const std::string found = read(section, key, file).value_or(std::string(defaultValue));
    const std::string_view value = firstCharacters(found, size - 1);
    const auto count = static_cast<std::uint32_t>(characterCount(value));
    std::string filled(value);
    filled += '\0';
    buffer = filled + std::string(behindCharacters(buffer, count + 1));
    return count;
  }

  bool writeString(std::string_view section, std::string_view key, std::optional<std::string_view> value,
                   std::string_view file) override {
    section = withoutBlanks(section);
    key = withoutBlanks(key);
    if (!canBeWritten(section, key, value.value_or(""))) return false;
    try {
      change(section, key, value, toNative_(file));
      return true;
    } catch (const std::system_error&) {
    } catch (const Failure&) {
    }
    return false;
  }

 private:
  // No value when the section, the key or the file isn't there, or the file can't be read.
  [[nodiscard]] std::optional<std::string> read(std::string_view section, std::string_view key,
                                                std::string_view file) {
    try {
      return contentOf(toNative_(file)).valueOf(withoutBlanks(section), withoutBlanks(key));
    } catch (const std::system_error&) {
    } catch (const Failure&) {
    }
    return std::nullopt;
  }

  // Every call looks at the file, and reads it again unless it is the one that was read last. A job asks for
  // its keys once for each site of a server, so that reading the file each time would take sites times sites.
  const Keys& contentOf(const std::string& nativePath) {
    const FileState state(nativePath);
    if (!lastState_ || !state.isSettledAs(*lastState_) || nativePath != lastPath_) {
      lastState_.reset();
      lastKeys_ = Keys(FileText::fromBytes(readFile(nativePath)).text);
      lastPath_ = nativePath;
      lastState_ = state;
    }
    return lastKeys_;
  }

  static void change(std::string_view section, std::string_view key, std::optional<std::string_view> value,
                     const std::string& nativePath) {
    FileText content = readOrEmpty(nativePath);
    const Place place = find(content.text, section, key);
    if (value) {
      setKey(content, place, section, key, *value);
    } else if (place.hasKey) {
      content.text.erase(place.key.begin, place.key.next - place.key.begin);
    } else {
      return;  // gone already
    }
    writeFile(nativePath, content);
  }

  PathMapping toNative_;
  std::string lastPath_;
  std::optional<FileState> lastState_;
  Keys lastKeys_{std::string_view()};
};

}  // namespace

std::unique_ptr<ProfileFiles> makeProfileFiles(PathMapping toNative) {
  return std::make_unique<NativeProfileFiles>(std::move(toNative));
}

}  // namespace trelvin
