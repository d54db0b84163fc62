#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <stdexcept>

#include "server_fixture.h"

namespace trelvin::test {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kJournal = "MetaBase.xml.journal";
constexpr int kUntraced = 77;

// What the journal holds at the moment, without the room behind its records. Nothing is read from the file,
// so that it can be looked at often.
class MappedJournal {
 public:
  explicit MappedJournal(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    void* memory = ::mmap(nullptr, kLength, PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    if (memory == MAP_FAILED) throw std::runtime_error("the journal can't be mapped");
    bytes_ = {static_cast<const char*>(memory), kLength};
  }
  MappedJournal(const MappedJournal&) = delete;
  MappedJournal& operator=(const MappedJournal&) = delete;
  ~MappedJournal() { ::munmap(const_cast<char*>(bytes_.data()), kLength); }

  [[nodiscard]] std::string_view records() const {
    return bytes_.substr(0, bytes_.find_last_not_of('\0') + 1);
  }

 private:
  static constexpr std::size_t kLength = 1024;  // more than the records of a test, less than the room
  std::string_view bytes_;
};

class TheJournal : public MetabaseFileTest {
 protected:
  // What a killed program leaves behind after its commits: the old file and the journal.
  void commitAndDie(const std::function<void(Metabase&)>& work) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const std::unique_ptr<Metabase> dying = makeMetabase();
      work(*dying);
      ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
  }

  // Without the room behind its records.
  [[nodiscard]] std::string journalText() const {
    const std::string text = textOf(kJournal);
    return text.substr(0, text.find_last_not_of('\0') + 1);
  }

  static void comment(Metabase& metabase, const std::string& site, const std::string& text) {
    const NodeHandle node = metabase.getObject("IIS://Web1/W3SVC/" + site);
    node->put("ServerComment", text);
    node->setInfo();
  }

  std::string commentOf(const std::string& site) {
    return bind("/W3SVC/" + site)->get("ServerComment").toText();
  }
};

TEST_F(TheJournal, KeepsACommitOfAKilledProgram) {
  commitAndDie([](Metabase& metabase) {
    comment(metabase, "10", "first");
    comment(metabase, "2", "second");
    comment(metabase, "10", "third");
    metabase.getObject("IIS://Web1/W3SVC")->create("IIsWebServer", "3")->setInfo();
    metabase.getObject("IIS://Web1/W3SVC")->deleteChild("IIsWebServer", "1876543210");
  });
  EXPECT_EQ(fileText(), sampleMetabase());
  EXPECT_EQ(commentOf("10"), "third");
  EXPECT_EQ(commentOf("2"), "second");
  EXPECT_THAT(childNames(bind("/W3SVC")), ElementsAre("1", "10", "2", "3", "AppPools", "Info"));
}

TEST_F(TheJournal, ThatIsOnlyReadStaysAsItIs) {
  commitAndDie([](Metabase& metabase) { comment(metabase, "10", "first"); });
  const std::string journal = textOf(kJournal);
  EXPECT_EQ(commentOf("10"), "first");
  closeMetabase();
  EXPECT_EQ(textOf(kJournal), journal);
  EXPECT_EQ(fileText(), sampleMetabase());
}

TEST_F(TheJournal, OfAKilledProgramGetsIntoTheFileWithTheNextCommit) {
  commitAndDie([](Metabase& metabase) { comment(metabase, "10", "first"); });
  putAndSet("/W3SVC/2", "ServerComment", "second");
  closeMetabase();
  EXPECT_THAT(folderNames(), ElementsAre("MetaBase.xml"));
  EXPECT_EQ(commentOf("10"), "first");
  EXPECT_EQ(commentOf("2"), "second");
}

// Wherever the last write was torn, each commit is either there as a whole or not at all, and an earlier one
// never lacks where a later one is there. Behind it the file ends, or goes on with its room.
class TheJournalCutAtAnyByte : public TheJournal, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(TheJournalCutAtAnyByte, GivesTheStateBeforeOrAfterACommit) {
  commitAndDie([](Metabase& metabase) {
    comment(metabase, "10", "first");
    const NodeHandle both = metabase.getObject("IIS://Web1/W3SVC/2");
    both->put("ServerComment", "second");
    both->put("MaxConnections", 77);
    both->setInfo();
    metabase.getObject("IIS://Web1/W3SVC")->deleteChild("IIsWebServer", "1");
  });
  const std::string journal = journalText() + std::string(5, '\0');  // in which a removal's record ends
  constexpr std::size_t kBegun = 32;  // what is written first, without room behind it
  int states = 0;
  std::string lastState;
  for (std::size_t length = 0; length <= journal.size(); ++length) {
    const std::size_t room = length < kBegun ? 0 : GetParam();
    folder_.write(kJournal, journal.substr(0, length) + std::string(room, '\0'));
    const std::unique_ptr<Metabase> reader = makeMetabase();
    const auto read = [&](const std::string& site, const char* name) {
      return reader->getObject("IIS://Web1/W3SVC/" + site)->get(name).toText();
    };
    const bool removed = numberOf([&] { read("1", "ServerComment"); }) == error_number::kMetabasePathNotFound;
    const std::string state = read("10", "ServerComment") + "|" + read("2", "ServerComment") + "|" +
                              read("2", "MaxConnections") + "|" + (removed ? "removed" : "there");
    ASSERT_THAT(state, AnyOf("Ten|Web service|2000|there", "first|Web service|2000|there",
                             "first|second|77|there", "first|second|77|removed"))
        << length;
    if (state != lastState) ++states;
    lastState = state;
  }
  EXPECT_EQ(states, 4);
  EXPECT_EQ(lastState, "first|second|77|removed");
}

INSTANTIATE_TEST_SUITE_P(Behind, TheJournalCutAtAnyByte, ::testing::Values(0U, 1U, 7U, 12U, 5000U),
                         [](const auto& test) { return std::to_string(test.param) + "Zeros"; });

// Kills the program at every instruction of two commits, as far as what is in the journal then differs.
TEST_F(TheJournal, OfAProgramThatIsKilledWithinACommitHoldsItWhollyOrNotAtAll) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const std::unique_ptr<Metabase> dying = makeMetabase();
    comment(*dying, "2", "before");
    const NodeHandle ten = dying->getObject("IIS://Web1/W3SVC/10");
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(kUntraced);
    ::raise(SIGSTOP);
    for (const char* text : {"first", "second, which is longer"}) {
      ten->put("ServerComment", text);
      ten->setInfo();
    }
    ::kill(::getpid(), SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  if (WIFEXITED(status)) GTEST_SKIP() << "processes may not be traced here";
  std::vector<std::string> journals{journalText()};
  {
    const MappedJournal journal(folder_ / kJournal);
    while (::ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) == 0 &&
           ::waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
      if (journal.records() != journals.back()) journals.emplace_back(journal.records());
    }
  }
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_GT(journals.size(), 4U) << "a commit takes more than one instruction";
  std::vector<std::string> comments;
  for (const std::string& journal : journals) {
    folder_.write(kJournal, journal + std::string(100, '\0'));
    comments.push_back(makeMetabase()->getObject("IIS://Web1/W3SVC/10")->get("ServerComment").toText());
  }
  comments.erase(std::unique(comments.begin(), comments.end()), comments.end());
  EXPECT_THAT(comments, ElementsAre("Ten", "first", "second, which is longer"));
}

TEST_F(TheJournal, WithATornTailGoesOnBehindTheLastWholeCommit) {
  commitAndDie([](Metabase& metabase) {
    comment(metabase, "10", "first");
    comment(metabase, "2", "torn");
  });
  const std::string journal = journalText();
  folder_.write(kJournal, journal.substr(0, journal.size() - 3));
  commitAndDie([](Metabase& metabase) { comment(metabase, "1", "next"); });
  EXPECT_EQ(commentOf("10"), "first");
  EXPECT_EQ(commentOf("2"), "Web service");
  EXPECT_EQ(commentOf("1"), "next");
}

TEST_F(TheJournal, DamagedBeforeItsEndIsRefusedAndKept) {
  commitAndDie([](Metabase& metabase) {
    comment(metabase, "10", "first");
    comment(metabase, "2", "second");
  });
  std::string journal = textOf(kJournal);
  journal[journal.find("first")] = 'F';
  folder_.write(kJournal, journal);
  const std::optional<Failure> failure = failureOf([&] { bind("/W3SVC"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), error_number::kMetabaseUnreadable);
  EXPECT_THAT(failure->description(), HasSubstr("MetaBase.xml.journal is damaged at byte 32"));
  EXPECT_EQ(textOf(kJournal), journal);
}

TEST_F(TheJournal, ThatIsNoJournalIsRefusedAndKept) {
  const std::string other(100, 'x');
  folder_.write(kJournal, other);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC"); }), error_number::kMetabaseUnreadable);
  EXPECT_EQ(textOf(kJournal), other);
}

TEST_F(TheJournal, OfAFileThatWasChangedSinceIsRefusedAndKept) {
  commitAndDie([](Metabase& metabase) { comment(metabase, "10", "first"); });
  const std::string journal = textOf(kJournal);
  const std::string changed = replaceAll(sampleMetabase(), "Web service", "Web Service");
  writeFile(changed);
  const std::optional<Failure> failure = failureOf([&] { bind("/W3SVC"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), error_number::kMetabaseUnreadable);
  EXPECT_THAT(failure->description(), HasSubstr("another content of the metabase file"));
  EXPECT_EQ(textOf(kJournal), journal);
  EXPECT_EQ(fileText(), changed);
  writeFile(sampleMetabase());
  EXPECT_EQ(commentOf("10"), "first") << "the former file is back";
}

TEST_F(TheJournal, IsKeptWhenTheFileChangesWhileCommitsWait) {
  putAndSet("/W3SVC/10", "ServerComment", "first");
  const std::string changed = replaceAll(sampleMetabase(), "Web service", "Web Service 2");
  writeFile(changed);
  EXPECT_EQ(numberOf([&] { bind("/W3SVC/10"); }), error_number::kMetabaseUnreadable);
  EXPECT_EQ(numberOf([&] { putAndSet("/W3SVC/2", "ServerComment", "x"); }),
            error_number::kMetabaseUnreadable);
  closeMetabase();
  EXPECT_EQ(fileText(), changed) << "never overwritten blindly";
  EXPECT_TRUE(hasJournal());
}

// A provider that looks at its file again after a while only.
class PatientMetabase : public MetabaseFileTest {
 protected:
  NodeHandle patient(std::string_view below) {
    return patient_->getObject("IIS://Web1" + std::string(below));
  }
  void putPatiently(std::string_view comment) {
    const NodeHandle node = patient("/W3SVC/10");
    node->put("ServerComment", std::string(comment));
    node->setInfo();
  }
  void changeFile() { writeFile(replaceAll(sampleMetabase(), "\"Ten\"", "\"Ten from elsewhere\"")); }

  std::unique_ptr<Metabase> patient_ = makeFileMetabase(
      [path = filePath()](std::string_view) { return std::optional(path); }, std::chrono::hours(1));
};

TEST_F(PatientMetabase, TakesItsFileToBeAsItWasLastSeen) {
  EXPECT_EQ(patient("/W3SVC/10")->get("ServerComment"), Value("Ten"));
  changeFile();
  EXPECT_EQ(patient("/W3SVC/10")->get("ServerComment"), Value("Ten"));
}

TEST_F(PatientMetabase, LooksAtItsFileBeforeItsFirstCommit) {
  patient("/W3SVC/2");
  changeFile();
  const NodeHandle two = patient("/W3SVC/2");
  two->put("ServerComment", "second");
  two->setInfo();
  patient_.reset();
  EXPECT_THAT(fileText(), HasSubstr("Ten from elsewhere"));
  EXPECT_THAT(fileText(), HasSubstr("\"second\""));
}

TEST_F(PatientMetabase, NeverWritesOverAFileThatChangedWhileCommitsWait) {
  putPatiently("first");
  changeFile();
  const std::string changed = fileText();
  putPatiently("second");
  patient_.reset();
  EXPECT_EQ(fileText(), changed);
  EXPECT_TRUE(hasJournal()) << "which keeps what was committed";
}

TEST_F(PatientMetabase, SeesItsOwnCommitsAtOnce) {
  putPatiently("first");
  EXPECT_EQ(patient("/W3SVC/10")->get("ServerComment"), Value("first"));
}

TEST_F(TheJournal, IsNotBotheredByAFileThatWasWrittenAnewWithTheSameContent) {
  putAndSet("/W3SVC/10", "ServerComment", "first");
  std::filesystem::remove(filePath());
  writeFile(sampleMetabase());
  putAndSet("/W3SVC/2", "ServerComment", "second");
  closeMetabase();
  EXPECT_EQ(commentOf("10"), "first");
  EXPECT_EQ(commentOf("2"), "second");
}

TEST_F(TheJournal, LetsAChangedFileInWhileNothingWaits) {
  EXPECT_EQ(commentOf("10"), "Ten");
  writeFile(replaceAll(sampleMetabase(), "\"Ten\"", "\"Ten from elsewhere\""));
  const NodeHandle two = bind("/W3SVC/2");
  putAndSet("/W3SVC/2", "ServerComment", "second");
  closeMetabase();
  EXPECT_EQ(commentOf("10"), "Ten from elsewhere");
  EXPECT_EQ(commentOf("2"), "second");
}

TEST_F(TheJournal, IsSeenByAReaderWhileTheWriterLives) {
  const std::unique_ptr<Metabase> reader = makeMetabase();
  EXPECT_EQ(reader->getObject("IIS://Web1/W3SVC/10")->get("ServerComment").toText(), "Ten");
  for (const char* text : {"first", "second", "third"}) {
    putAndSet("/W3SVC/10", "ServerComment", text);
    EXPECT_EQ(reader->getObject("IIS://Web1/W3SVC/10")->get("ServerComment").toText(), text);
  }
  closeMetabase();
  EXPECT_EQ(reader->getObject("IIS://Web1/W3SVC/10")->get("ServerComment").toText(), "third");
}

TEST_F(TheJournal, HasOneWriterAtATime) {
  const std::unique_ptr<Metabase> second = makeMetabase();
  putAndSet("/W3SVC/10", "ServerComment", "first");
  EXPECT_EQ(numberOf([&] { comment(*second, "2", "second"); }), kBusyNumber);
  closeMetabase();
  comment(*second, "2", "second");
  EXPECT_EQ(commentOf("10"), "first");
  EXPECT_EQ(commentOf("2"), "second");
}

// A checkpoint has three steps: what it is about to write goes into the journal, the new file takes its
// place, the journal goes. Whichever of them was the last one, nothing is lost and nothing is done twice.
TEST_F(TheJournal, OfACheckpointThatDidNotEndIsUnderstood) {
  commitAndDie([](Metabase& metabase) { comment(metabase, "10", "first"); });
  const std::string committed = journalText();
  putAndSet("/W3SVC/10", "ServerComment", "second");
  // The journal goes at the end of the checkpoint; a second name keeps what was written to it.
  std::filesystem::create_hard_link(folder_ / kJournal, folder_ / "copy");
  closeMetabase();
  const std::string checkpointed = textOf("copy");
  const std::string newFile = fileText();
  ASSERT_GT(checkpointed.size(), committed.size());

  writeFile(sampleMetabase());
  folder_.write(kJournal, checkpointed);
  EXPECT_EQ(commentOf("10"), "second") << "the new file never took its place";
  closeMetabase();

  writeFile(newFile);
  folder_.write(kJournal, checkpointed);
  EXPECT_EQ(commentOf("10"), "second") << "the journal is out of date";
  putAndSet("/W3SVC/2", "ServerComment", "third");
  closeMetabase();
  EXPECT_EQ(fileText(), replaceAll(newFile, "Location =\"/LM/W3SVC/2\"\n",
                                   "Location =\"/LM/W3SVC/2\"\n\t\tServerComment=\"third\"\n"));
  EXPECT_FALSE(hasJournal());
}

TEST_F(TheJournal, ThatGrowsLongGoesIntoTheFileMeanwhile) {
  const std::string big(std::size_t{1} << 20U, 'b');
  const NodeHandle old = bind("/W3SVC/1");
  for (int i = 0; i < 20; ++i) putAndSet("/W3SVC/10", "ServerComment", big + std::to_string(i));
  EXPECT_LT(std::filesystem::file_size(folder_ / kJournal), std::size_t{17} << 20U);
  EXPECT_THAT(fileText(), HasSubstr("bbb")) << "the file has been written on the way";
  EXPECT_EQ(commentOf("10"), big + "19");
  EXPECT_EQ(old->get("ServerAutoStart"), Value(true)) << "a handle from before goes on";
}

// Lets files grow up to a length only, as a full disk would.
class FullDisk {
 public:
  explicit FullDisk(std::uintmax_t length) : formerAction_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const struct rlimit full { length, before_.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &full);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, formerAction_);
  }

 private:
  struct rlimit before_ {};
  void (*formerAction_)(int);
};

TEST_F(TheJournal, OnAFullDiskKeepsTheOldState) {
  putAndSet("/W3SVC/10", "ServerComment", "first");
  const std::string journal = journalText();
  const std::string tooLong(std::size_t{3} << 20U, 'x');
  std::optional<Failure> failure;
  {
    const FullDisk disk(std::filesystem::file_size(folder_ / kJournal) + 20);
    failure = failureOf([&] { putAndSet("/W3SVC/10", "ServerComment", tooLong); });
    EXPECT_EQ(commentOf("10"), "first");
  }
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), kDiskFullNumber);
  EXPECT_THAT(failure->description(), HasSubstr(kJournal));
  EXPECT_EQ(textOf(kJournal), journal);
  EXPECT_EQ(commentOf("10"), "first");
  putAndSet("/W3SVC/10", "ServerComment", "third");
  closeMetabase();
  EXPECT_EQ(commentOf("10"), "third");
}

TEST_F(TheJournal, TakesWhatFitsOnADiskThatIsNearlyFull) {
  putAndSet("/W3SVC/10", "ServerComment", "first");
  closeMetabase();
  commitAndDie([this](Metabase& dying) {
    const FullDisk disk(fileText().size() + 1000);
    comment(dying, "10", "second");
    comment(dying, "2", "third");
    comment(dying, "1", "fourth");
  });
  EXPECT_EQ(textOf(kJournal), journalText()) << "there was no room to be taken ahead";
  EXPECT_EQ(commentOf("10"), "second");
  EXPECT_EQ(commentOf("2"), "third");
  EXPECT_EQ(commentOf("1"), "fourth");
}

// The records lie across the ends of the stretches of the file that are in memory, and some are longer.
TEST_F(TheJournal, OfManyAndLongRecordsIsReadToItsEnd) {
  const auto textOfRound = [](unsigned round) {
    const std::size_t length = round % 50 == 7 ? std::size_t{3} << 20U : std::size_t{1000} + round * 37;
    return std::to_string(round) + std::string(length, static_cast<char>('a' + static_cast<int>(round % 26)));
  };
  commitAndDie([&](Metabase& metabase) {
    for (unsigned round = 0; round < 150; ++round)
      comment(metabase, round % 2 == 0 ? "2" : "10", textOfRound(round));
  });
  EXPECT_EQ(fileText(), sampleMetabase()) << "all is in the journal";
  EXPECT_EQ(commentOf("2"), textOfRound(148));
  EXPECT_EQ(commentOf("10"), textOfRound(149));
}

TEST_F(TheJournal, StaysWhenTheLastCheckpointFails) {
  putAndSet("/W3SVC/10", "ServerComment", "first");
  folder_.makeFolder("MetaBase.xml.new");
  closeMetabase();
  EXPECT_EQ(fileText(), sampleMetabase());
  std::filesystem::remove(folder_ / "MetaBase.xml.new");
  EXPECT_EQ(commentOf("10"), "first");
}

}  // namespace trelvin::test
