#include "journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "core/err.h"

namespace trelvin {

namespace {

constexpr std::string_view kMark = "MBJRNL01";
constexpr std::size_t kNumberSize = 8;
constexpr std::size_t kHeaderSize = 8 + 3 * kNumberSize;
constexpr std::size_t kRecordHead = 4 + kNumberSize;
constexpr char kCommitRecord = 'C';
constexpr char kCheckpointRecord = 'P';

template <typename Number>
void put(std::string& bytes, Number number) {
  std::array<char, sizeof number> low{};
  for (std::size_t i = 0; i < low.size(); ++i) low[i] = static_cast<char>((number >> (8U * i)) & 0xFFU);
  bytes.append(low.data(), low.size());
}

void putText(std::string& bytes, std::string_view text) {
  put(bytes, static_cast<std::uint32_t>(text.size()));
  bytes += text;
}

struct OutOfBytes {};

// A reading head; it throws OutOfBytes past the end.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  template <typename Number>
  Number number() {
    const std::string_view bytes = take(sizeof(Number));
    Number result = 0;
    for (std::size_t i = 0; i < sizeof result; ++i) {
      result |= static_cast<Number>(static_cast<Number>(static_cast<unsigned char>(bytes[i])) << (8U * i));
    }
    return result;
  }
  std::string text() { return std::string(take(number<std::uint32_t>())); }
  std::string_view take(std::size_t count) {
    if (count > rest_.size()) throw OutOfBytes{};
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }
  [[nodiscard]] bool atEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

void putCommit(std::string& content, const Commit& commit) {
  content += kCommitRecord;
  put(content, static_cast<std::uint32_t>(commit.size()));
  for (const NodeChange& change : commit) {
    content += static_cast<char>(change.kind);
    putText(content, change.location);
    content += change.keyType ? '\1' : '\0';
    if (change.keyType) putText(content, *change.keyType);
    put(content, static_cast<std::uint32_t>(change.values.size()));
    for (const ValueChange& value : change.values) {
      putText(content, value.property);
      content += value.text ? '\1' : '\0';
      if (value.text) putText(content, *value.text);
    }
  }
}

NodeChange changeFrom(Reader& reader) {
  NodeChange change;
  change.kind = static_cast<NodeChange::Kind>(reader.take(1)[0]);
  change.location = reader.text();
  if (reader.take(1)[0] != '\0') change.keyType = reader.text();
  for (auto left = reader.number<std::uint32_t>(); left > 0; --left) {
    ValueChange value;
    value.property = reader.text();
    if (reader.take(1)[0] != '\0') value.text = reader.text();
    change.values.push_back(std::move(value));
  }
  return change;
}

Commit commitFrom(Reader& reader) {
  Commit commit;
  for (auto left = reader.number<std::uint32_t>(); left > 0; --left) commit.push_back(changeFrom(reader));
  return commit;
}

FileState stateFrom(Reader& reader) {
  FileState state;
  state.size = reader.number<std::uint64_t>();
  state.fingerprint = reader.number<std::uint64_t>();
  return state;
}

void putState(std::string& bytes, const FileState& state) {
  put(bytes, state.size);
  put(bytes, state.fingerprint);
}

std::string headerFor(const FileState& file) {
  std::string header(kMark);
  putState(header, file);
  put(header, fingerprintOf(header));
  return header;
}

[[noreturn]] void damaged(const std::string& path, std::uint64_t at) {
  throw Failure(
      error_number::kMetabaseUnreadable,
      path + " is damaged at byte " + std::to_string(at) +
          ". It holds changes of the metabase beside it; restore it from a copy, or remove it to do without "
          "these changes.");
}

[[noreturn]] void waitsForAnother(const std::string& path) {
  throw Failure(
      error_number::kMetabaseUnreadable,
      path +
          " holds changes that were made to another content of the metabase file beside it, which was "
          "changed since. Put the former file back to keep them, or remove the journal to do without.");
}

// The content of the record at a position, or nothing when no whole and sound record stands there.
std::optional<std::string_view> recordAt(std::string_view bytes, std::size_t at) {
  if (bytes.size() - at < kRecordHead) return std::nullopt;
  Reader head(bytes.substr(at, kRecordHead));
  const auto length = head.number<std::uint32_t>();
  const auto fingerprint = head.number<std::uint64_t>();
  if (length == 0 || length > bytes.size() - at - kRecordHead) return std::nullopt;
  const std::string_view content = bytes.substr(at + kRecordHead, length);
  return fingerprintOf(content) == fingerprint ? std::optional(content) : std::nullopt;
}

// Where the length of a record stands, or will stand; nought at the end of the file.
std::uint32_t lengthAt(std::string_view bytes, std::size_t at) {
  if (bytes.size() < at + sizeof(std::uint32_t)) return 0;
  return Reader(bytes.substr(at)).number<std::uint32_t>();
}

// The same in the file.
std::uint32_t lengthAt(const Descriptor& file, std::uint64_t at) {
  std::array<char, sizeof(std::uint32_t)> bytes{};
  const ssize_t count = ::pread(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(at));
  return lengthAt({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))}, 0);
}

// A bad record with a good one behind it was not torn by a dying process.
bool isTail(std::string_view bytes, std::size_t at) {
  if (bytes.size() - at < kRecordHead) return true;
  const std::uint32_t length = lengthAt(bytes, at);
  const std::size_t next = at + kRecordHead + length;
  return length == 0 || next >= bytes.size() || !recordAt(bytes, next);
}

// Collects what is to be applied to one content of the metabase file.
class Replay {
 public:
  Replay(const FileState& file, const FileState& base) : file_(file), matches_(base == file) {}

  void take(std::string_view content) {
    Reader reader(content);
    const char kind = reader.take(1)[0];
    if (kind == kCommitRecord) {
      commits_.push_back(commitFrom(reader));
    } else if (kind == kCheckpointRecord && stateFrom(reader) == file_) {
      // The new file took the old one's place: what came before is in it.
      matches_ = true;
      commits_.clear();
    }
  }
  [[nodiscard]] bool isMeantForTheFile() const { return matches_ || commits_.empty(); }
  std::vector<Commit> commits() { return std::move(commits_); }

 private:
  FileState file_;
  bool matches_;
  std::vector<Commit> commits_;
};

}  // namespace

std::string journalPathOf(const std::string& metabasePath) {
  return metabasePath + ".journal";
}

JournalContent readJournal(const std::string& path, const FileState& file) {
  JournalContent result;
  if (!identityOf(path)) return result;
  const Descriptor descriptor = openMetabaseFile(path, O_RDONLY);
  result.identity = identityOfOpen(descriptor);
  const std::vector<char> content = readWhole(descriptor, path);
  const std::string_view bytes(content.data(), content.size());
  if (bytes.size() < kHeaderSize) return result;
  Reader header(bytes.substr(kMark.size(), kHeaderSize - kMark.size()));
  const FileState base = stateFrom(header);
  if (bytes.substr(0, kHeaderSize) != headerFor(base)) damaged(path, 0);
  Replay replay(file, base);
  result.length = kHeaderSize;
  try {
    while (const auto record = recordAt(bytes, result.length)) {
      replay.take(*record);
      result.length += kRecordHead + record->size();
    }
  } catch (const OutOfBytes&) {
    damaged(path, result.length);
  }
  if (!isTail(bytes, result.length)) damaged(path, result.length);
  result.next = lengthAt(bytes, result.length);
  if (!replay.isMeantForTheFile()) waitsForAnother(path);
  result.commits = replay.commits();
  return result;
}

bool isStillAsRead(const std::string& path, const JournalContent& read) {
  const std::optional<FileIdentity> now = identityOf(path);
  if (!now || !read.identity) return now.has_value() == read.identity.has_value();
  return now->sameContentAs(*read.identity) &&
         lengthAt(openMetabaseFile(path, O_RDONLY), read.length) == read.next;
}

Journal::Journal(std::string path, const FileState& file, const JournalContent& read)
    : path_(std::move(path)),
      file_(openMetabaseFile(path_, O_RDWR | O_APPEND | (read.identity ? 0 : O_CREAT), S_IRUSR | S_IWUSR),
            path_) {
  const auto busy = [&] {
    return Failure(kPathBusyResult,
                   path_ + " is in use: another program is changing this metabase. Try again later.");
  };
  if (::flock(file_.file().get(), LOCK_EX | LOCK_NB) != 0) throw busy();
  const FileIdentity held = identityOfOpen(file_.file());
  const std::optional<FileIdentity> named = identityOf(path_);
  // Whoever held it before may have written on, or removed it, while it was being opened.
  const bool sameFile = named && named->inode == held.inode && named->device == held.device;
  const bool asRead =
      read.identity ? held.sameContentAs(*read.identity) && lengthAt(file_.file(), read.length) == read.next
                    : held.size == 0;
  if (!sameFile || !asRead) throw busy();
  if (read.commits.empty()) {
    begin(file);
  } else {
    file_.cutTo(read.length);
  }
}

void Journal::begin(const FileState& file) {
  try {
    file_.cutTo(0);
    file_.append(headerFor(file));
  } catch (const Failure&) {
    ::unlink(path_.c_str());
    throw;
  }
}

// The head goes in front of the content, which record_ holds behind the place for it.
void Journal::appendRecord() {
  const std::string_view content = std::string_view(record_).substr(kRecordHead);
  std::string head;
  put(head, static_cast<std::uint32_t>(content.size()));
  put(head, fingerprintOf(content));
  record_.replace(0, kRecordHead, head);
  file_.append(record_);
}

bool Journal::isEmpty() const {
  return length() <= kHeaderSize;
}

void Journal::append(const Commit& commit) {
  record_.assign(kRecordHead, '\0');
  putCommit(record_, commit);
  appendRecord();
}

void Journal::appendCheckpoint(const FileState& next) {
  record_.assign(kRecordHead, '\0');
  record_ += kCheckpointRecord;
  putState(record_, next);
  appendRecord();
  file_.sync();
}

void Journal::remove() {
  removeFile(path_);
  syncFolderOf(path_);
}

}  // namespace trelvin
