// Changes that are not yet in the metabase file, kept beside it.
//
// A commit appends one record and is done with; what was written survives a killed process, because it is the
// system's from then on. It is not forced to the disk record by record: a power cut may cost the last
// moments, as it may on a real server, which writes its file every few minutes, but it never tears the
// metabase. If it left a gap in front of later records, the journal counts as damaged: what to do without is
// for a person to say.
//
// Form of the file, numbers with the low byte first: 8 letters, then size and fingerprint of the metabase
// file that the changes belong to and the fingerprint of these 24 bytes. Then records: length of the content
// in 4 bytes, fingerprint of the content in 8, content. The content's first byte tells a commit ('C') from a
// checkpoint ('P'), the size and fingerprint of a new metabase file that holds everything up to there and was
// about to take the old one's place. A record that is incomplete at the end of the file was being written
// when its process died; it never happened. Zeros behind the last record are room for the next ones, and a
// record's length is what is written last of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "appended_file.h"
#include "change.h"
#include "disk.h"

namespace trelvin {

// A content of the metabase file.
struct FileState {
  std::uint64_t size = 0;
  std::uint64_t fingerprint = 0;
  bool operator==(const FileState&) const = default;
};

// What a journal says about a metabase file. Reading changes nothing on disk.
struct JournalContent {
  std::vector<Commit> commits;           // still to be applied to that file, in order
  std::uint64_t length = 0;              // bytes up to the end of the last whole record
  std::uint32_t next = 0;                // what stands behind it where the next one's length goes
  std::optional<FileIdentity> identity;  // nothing when there is no journal
};

// 0x800CC819 when the journal is damaged before its end, or waits for another content of the metabase file.
JournalContent readJournal(const std::string& path, const FileState& file);

// Whether there is still what was read. A file that has room for more records doesn't show by its size or its
// times that one was added.
bool isStillAsRead(const std::string& path, const JournalContent& read);

std::string journalPathOf(const std::string& metabasePath);

// The journal in a writer's hands. One process at a time.
class Journal {
 public:
  // Goes on with the journal that was read, or begins one for the file. 0x80070094 when another process holds
  // it, or when it isn't any more as it was read.
  Journal(std::string path, const FileState& file, const JournalContent& read);

  // Fails without a trace when the record can't be written.
  void append(const Commit& commit);
  // The metabase file is about to become this.
  void appendCheckpoint(const FileState& next);
  // The metabase file holds everything.
  void remove();

  [[nodiscard]] std::uint64_t length() const { return file_.length(); }
  [[nodiscard]] bool isEmpty() const;

 private:
  void begin(const FileState& file);
  void appendRecord();

  std::string path_;
  AppendedFile file_;
  std::string record_;  // the one in hand, kept so that not every commit needs memory anew
};

}  // namespace trelvin
