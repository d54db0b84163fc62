#include "server_to_server_fixture.h"

#include <algorithm>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/scratch_machine.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin::test {

namespace {

std::string plainText(const Value& value) {
  if (value.varType() != kVarList) return value.toText();
  std::string text;
  for (const Value& entry : value.list()) text += (text.empty() ? "" : "|") + entry.toText();
  return text;
}

}  // namespace

std::string ServerToServer::infoOf(int version) {
  return element("IIsWebInfo", "/LM/W3SVC/Info", {{"MajorIIsVersionNumber", std::to_string(version)}});
}

std::string ServerToServer::ftpSite(int number, const std::string& comment, const Properties& properties) {
  Properties all{{"ServerComment", comment}};
  all.insert(all.end(), properties.begin(), properties.end());
  return element("IIsFtpServer", "/LM/MSFTPSVC/" + std::to_string(number), all);
}

std::string ServerToServer::ftpDir(int site, const std::string& path, const Properties& properties) {
  return element("IIsFtpVirtualDir", "/LM/MSFTPSVC/" + std::to_string(site) + path, properties);
}

std::string ServerToServer::below(int site, const std::string& keyType, const std::string& path,
                                  const Properties& properties) {
  return element(keyType, "/LM/W3SVC/" + std::to_string(site) + path, properties);
}

void ServerToServer::addServers(const std::string& source, const std::string& target) {
  addServer("WEB1", metabaseFile(source));
  addServer("NEW1", metabaseFile(target));
}

void ServerToServer::list(int from, int to) {
  frmMain.txtImportServer.text = "WEB1";
  frmMain.txtExportServer.text = "NEW1";
  chooseVersions(from, to);
  frmMain.cmdPopulate.onClick();
  metabase->calls.clear();
  output.clear();
}

void ServerToServer::open(const std::string& source, const std::string& target, int from, int to) {
  addServers(source, target);
  openWindow();
  list(from, to);
}

void ServerToServer::openForDebug(const std::string& source, const std::string& target, int from, int to) {
  addServers(source, target);
  start("-D");
  list(from, to);
}

void ServerToServer::openFtp(const std::string& source, const std::string& target) {
  addServers(source, target);
  openWindow();
  frmMain.optExportFTP.setValue(true);
  list(6, 6);
}

void ServerToServer::chooseVersions(int from, int to) {
  frmMain.lstIMIISVer.setListIndex(from - 4);
  frmMain.lstEXIISVer.setListIndex(to - 4);
}

void ServerToServer::map(const std::string& oldText, const std::string& newText) {
  frmMain.lstOldValues.addItem(oldText);
  frmMain.lstNewValues.addItem(newText);
}

void ServerToServer::giveDirectoriesAPath(const std::string& server) const {
  folder.write("network/" + server + "/C$/WINDOWS/system32/inetsrv/MBSchema.xml",
               "<MetaData><DatabaseMeta><Collection InternalName=\"IIsWebDirectory\">"
               "<Property InheritsPropertiesFrom=\"IIsConfigObject:Path\"/>"
               "</Collection></DatabaseMeta></MetaData>");
}

void ServerToServer::press(std::initializer_list<Answer> furtherAnswers) {
  dialogs->answers.assign(1, Answer::kOk);
  if (run.dblEXIISVer == 6 && run.dblIMIISVer != 6) dialogs->answers.push_back(Answer::kNo);
  dialogs->answers.insert(dialogs->answers.end(), furtherAnswers);
  frmMain.cmdExportServer.onClick();
}

void ServerToServer::exportSites(std::initializer_list<int> lines,
                                 std::initializer_list<Answer> furtherAnswers) {
  select(lines);
  press(furtherAnswers);
}

void ServerToServer::exportSilently(std::initializer_list<int> lines) {
  select(lines);
  frmMain.chkRunSilent.setValue(true);
  frmMain.cmdExportServer.onClick();
}

std::unique_ptr<Metabase> ServerToServer::reader() const {
  return scratchReader(folder / "network");
}

std::string ServerToServer::stored(const std::string& path, const std::string& property,
                                   const std::string& server) const {
  const ErrorState before = Err;
  const auto disk = reader();
  NodeHandle node;
  std::string text = kNoNode;
  if (attempt([&] { node = disk->getObject("IIS://" + server + path); })) {
    const std::vector<std::string> paths = node->getDataPaths(property, Value());
    const bool isSet = !paths.empty() && paths.front() == node->adsPath();
    text = isSet ? plainText(node->get(property)) : kUnset;
  }
  Err = before;
  return text;
}

bool ServerToServer::exists(const std::string& path) const {
  return stored(path, "KeyType") != kNoNode;
}

std::string ServerToServer::classOf(const std::string& path) const {
  return reader()->getObject("IIS://NEW1" + path)->className();
}

std::vector<std::string> ServerToServer::childrenOf(const std::string& path) const {
  std::vector<std::string> names;
  reader()->getObject("IIS://NEW1" + path)->forEachChild([&](const NodeHandle& child) {
    names.push_back(child->name());
  });
  return names;
}

std::string ServerToServer::closedTargetFile() {
  platform().metabase.reset();
  metabase = nullptr;
  return metabaseOf("NEW1");
}

std::string ServerToServer::elementAt(const std::string& file, const std::string& location) {
  const std::size_t at = file.find("Location =\"" + location + "\"");
  if (at == std::string::npos) return {};
  const std::size_t begin = file.rfind('<', at);
  const std::string keyType = file.substr(begin + 1, file.find_first_of(" \t\r\n", begin) - begin - 1);
  const std::string end = "</" + keyType + ">";
  return file.substr(begin, file.find(end, at) + end.size() - begin);
}

std::vector<std::string> ServerToServer::runLog() const {
  return logBehind(beginningOfRun);
}

std::vector<std::string> ServerToServer::failureLines() const {
  std::vector<std::string> found;
  for (const std::string& line : runLog()) {
    if (line.starts_with("Error") || line.starts_with("Failed")) found.push_back(line);
  }
  return found;
}

std::vector<std::string> ServerToServer::callsOf(std::initializer_list<std::string> operations,
                                                 const std::string& server) const {
  const std::string begin = "IIS://" + server;
  std::vector<std::string> found;
  for (const MetabaseCall& call : metabase->calls) {
    const bool isWanted = std::find(operations.begin(), operations.end(), call.operation) != operations.end();
    if (!isWanted || !call.path.starts_with(begin)) continue;
    std::string text = call.operation + " " + call.path.substr(begin.size());
    if (!call.argument.empty()) text += " " + call.argument;
    found.push_back(std::move(text));
  }
  return found;
}

void ServerToServer::atYieldBehind(const std::string& line, std::function<void()> step) {
  events->onYield = [this, line, step = std::move(step)](int) {
    if (!hasLogged(line)) return;
    const auto click = step;  // the function that runs here is gone with the next line
    events->onYield = nullptr;
    click();
  };
}

}  // namespace trelvin::test
