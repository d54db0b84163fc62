#include "fakes/program_test.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "core/err.h"
#include "core/main_window.h"
#include "core/run_state.h"
#include "core/start_up.h"
#include "fakes/scratch_machine.h"
#include "platform/platform.h"
#include "platform/shared/tcp_sockets.h"
#include "stores/connections.h"
#include "window/frm_database_select.h"
#include "window/frm_main.h"
#include "window/frm_splash.h"

namespace trelvin::test {

namespace fs = std::filesystem;

namespace {

template <typename Member, typename Made>
Made* put(std::unique_ptr<Member>& place, std::unique_ptr<Made> made) {
  Made* raw = made.get();
  place = std::move(made);
  return raw;
}

// "number description", with the error state as it was before.
std::string failureOf(const std::function<void()>& statement) {
  const ErrorState before = std::exchange(Err, {});
  attempt(statement);
  const ErrorState failed = std::exchange(Err, before);
  return std::to_string(failed.number) + " " + failed.description;
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

}  // namespace

ProgramTest::ProgramTest() : formerFolder_(fs::current_path()) {
  for (const char* name : {"program", "network", "work"}) folder.makeFolder(name);
  for (const char* name : {"Trelvin.mdb", "TrelvinData.mdb", "ForBackups.mdb"}) {
    fs::copy_file(fs::path(TRELVIN_DATABASES) / name, programFolder() / name);
  }
  fs::current_path(workFolder());

  run = RunState{};
  renew(frmMain);
  renew(frmSplash);
  renew(frmDatabaseSelect);
  Err.clear();

  Platform& set = platform();
  set = Platform{};
  application = put(set.application, std::make_unique<FakeApplication>(programPath()));
  clock = put(set.clock, std::make_unique<StoppedClock>());
  dialogs = put(set.dialogs, std::make_unique<ScriptedDialogs>());
  events = put(set.events, std::make_unique<RecordedEvents>());
  opener = put(set.opener, std::make_unique<RecordedOpener>());
  sockets = put(set.sockets, std::make_unique<LoopbackSockets>(makeTcpSockets()));
  useScratchMachine(set, {.programFolder = programFolder(),
                          .network = folder / "network",
                          .onCopyReport = [this](std::string_view line) { copyReports.emplace_back(line); }});
  metabase = put(set.metabase, std::make_unique<FailingMetabase>(scratchMetabase(folder / "network")));
}

ProgramTest::~ProgramTest() {
  renew(frmMain);
  renew(frmSplash);
  renew(frmDatabaseSelect);
  platform() = Platform{};
  run = RunState{};
  Err.clear();
  fs::current_path(formerFolder_);
}

std::string ProgramTest::programPath() const {
  return programForm(programFolder());
}

void ProgramTest::start(const std::string& commandLine) {
  application->command = commandLine;
  frmMain.lstOutput.onAddItem = [this](const std::string& line) { output.push_back(line); };
  loadWelcomeForm();
}

void ProgramTest::openWindow() {
  frmMain.lstOutput.onAddItem = [this](const std::string& line) { output.push_back(line); };
  showMainWindow();
}

void ProgramTest::addServer(const std::string& name, const std::string& metabaseText, bool olderSystem) {
  folder.write(
      "network/" + name + "/C$/" + (olderSystem ? "WINNT" : "WINDOWS") + "/system32/inetsrv/MetaBase.xml",
      metabaseText);
}

std::string ProgramTest::metabaseOf(const std::string& server) const {
  return folder.read("network/" + server + "/C$/WINDOWS/system32/inetsrv/MetaBase.xml");
}

std::string ProgramTest::failureOfBind(const std::string& path) {
  return failureOf([&] { platform().metabase->getObject(path); });
}

std::string ProgramTest::failureOfOpening(const std::string& connectionString) {
  return failureOf([&] { platform().databases->createConnection()->open(connectionString); });
}

std::string ProgramTest::metabaseFile(const std::string& elements) {
  return "<?xml version =\"1.0\"?>\r\n<configuration xmlns=\"urn:microsoft-catalog:XML_Metabase_V64_0\">\r\n"
         "<MBProperty>\r\n" +
         element("IIS_ROOT", "/") + element("IIsComputer", "/LM") + elements +
         "</MBProperty>\r\n</configuration>\r\n";
}

std::string ProgramTest::element(const std::string& keyType, const std::string& location,
                                 const std::vector<std::pair<std::string, std::string>>& properties,
                                 const std::string& children) {
  std::string text = "<" + keyType + "\tLocation =\"" + escaped(location) + "\"\r\n";
  for (const auto& [name, value] : properties) text += "\t\t" + name + "=\"" + escaped(value) + "\"\r\n";
  return text + "\t>\r\n" + children + "</" + keyType + ">\r\n";
}

void ProgramTest::addJob(const std::string& name,
                         const std::vector<std::pair<std::string, std::string>>& keys) {
  std::string text;
  std::string section;
  for (const auto& [path, value] : keys) {
    const std::size_t slash = path.find('/');
    if (path.substr(0, slash) != section) {
      section = path.substr(0, slash);
      text += "[" + section + "]\r\n";
    }
    text += path.substr(slash + 1) + "=" + value + "\r\n";
  }
  folder.write("program/" + name, text);
}

std::vector<std::string> ProgramTest::logLines() const {
  std::vector<std::string> lines;
  if (!folder.has("work/Trelvin.log")) return lines;
  const std::string log = folder.read("work/Trelvin.log");
  const std::string begin = "\"NOW ";
  const std::string end = "\"\r\n";
  for (std::size_t at = 0; at < log.size();) {
    const std::size_t stop = log.find(end, at);
    if (log.compare(at, begin.size(), begin) != 0 || stop == std::string::npos) {
      throw std::runtime_error("a line of the log has another form: " + log.substr(at, 80));
    }
    lines.push_back(log.substr(at + begin.size(), stop - at - begin.size()));
    at = stop + end.size();
  }
  return lines;
}

bool ProgramTest::hasLogged(const std::string& message) const {
  return timesLogged(message) > 0;
}

int ProgramTest::timesLogged(const std::string& message) const {
  const std::vector<std::string> lines = logLines();
  return static_cast<int>(std::count(lines.begin(), lines.end(), message));
}

bool ProgramTest::hasOutput(const std::string& line) const {
  return std::find(output.begin(), output.end(), line) != output.end();
}

std::vector<std::string> ProgramTest::entriesOf(const ListControl& list) {
  std::vector<std::string> entries;
  for (std::int32_t i = 0; i < list.listCount(); ++i) entries.push_back(list.list(i));
  return entries;
}

Rows ProgramTest::query(const std::string& database, const std::string& sql) const {
  const std::unique_ptr<Connection> connection = platform().databases->createConnection();
  connection->open(fileConnectionString(programPath() + "\\" + database));
  const std::unique_ptr<RecordSet> rows = platform().databases->createRecordSet();
  // Columns are named a, b, c ... by the statement, so that a test says which it wants and in what order.
  rows->open(sql, *connection, kStaticCursor);
  const ErrorState before = Err;  // looking must not change what the program left behind
  Rows result;
  for (; !rows->eof(); rows->moveNext()) {
    std::vector<std::string> row;
    for (char column = 'a'; column <= 'z'; ++column) {
      Value value;
      if (!attempt([&] { value = rows->field(std::string(1, column)); })) break;
      row.push_back(value.isNull() ? "<Null>" : value.toText());
    }
    result.push_back(std::move(row));
  }
  Err = before;
  return result;
}

void ProgramTest::executeOn(const std::string& database, const std::string& sql) const {
  const std::unique_ptr<Connection> connection = platform().databases->createConnection();
  connection->open(fileConnectionString(programPath() + "\\" + database));
  connection->execute(sql);
}

}  // namespace trelvin::test
