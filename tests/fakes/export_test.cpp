#include "fakes/export_test.h"

#include <algorithm>

#include "core/run_state.h"
#include "core/text.h"
#include "metabase/paths.h"
#include "window/frm_main.h"

namespace trelvin::test {

namespace {

constexpr const char* kServer = "WEB1";

std::string siteLocation(int number) {
  return "/LM/W3SVC/" + std::to_string(number);
}

bool holds(const std::vector<std::string>& names, const std::string& wanted) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& name) { return equalsIgnoringCase(name, wanted); });
}

}  // namespace

std::string ExportTest::webService(const std::string& elements) {
  return element("IIsWebService", "/LM/W3SVC") + elements;
}

std::string ExportTest::ftpService(const std::string& elements) {
  return element("IIsFtpService", "/LM/MSFTPSVC") + elements;
}

std::string ExportTest::webSite(int number, const std::string& comment, const Properties& properties) {
  Properties all{{"ServerComment", comment}};
  all.insert(all.end(), properties.begin(), properties.end());
  return element("IIsWebServer", siteLocation(number), all);
}

std::string ExportTest::plainSite(int number, const std::string& comment) {
  return webSite(number, comment) +
         virtualDir(number, "/ROOT", {{"Path", "C:\\site" + std::to_string(number)}});
}

std::string ExportTest::virtualDir(int site, const std::string& path, const Properties& properties) {
  return element("IIsWebVirtualDir", siteLocation(site) + path, properties);
}

std::string ExportTest::directory(int site, const std::string& path, const Properties& properties) {
  return element("IIsWebDirectory", siteLocation(site) + path, properties);
}

void ExportTest::openOn(const std::string& elements) {
  addServer(kServer, metabaseFile(elements));
  openWindow();
  listSites();
}

void ExportTest::openForDebugOn(const std::string& elements) {
  addServer(kServer, metabaseFile(elements));
  start("-D");
  listSites();
}

void ExportTest::listSites() {
  frmMain.TabExportType.select(2);
  frmMain.txtImportServer.text = kServer;
  frmMain.cmdPopulate.onClick();
}

void ExportTest::select(std::initializer_list<int> lines) {
  for (const int line : lines) frmMain.lstSites.setSelected(line, true);
}

void ExportTest::transferOnly(const std::vector<std::string>& names) {
  frmMain.lstExclude.clear();
  for (const char* word : {"IIsObject", "IIsWebServer", "IIsWebVirtualDir", "IIsWebDirectory", "IIsWebFile",
                           "IIsFtpServer", "IIsFtpVirtualDir", "IIsFilters", "IIsFilter", "IIsCertMapper"}) {
    const NodeHandle schemaClass = getObject(std::string("IIS://") + kServer + "/schema/" + word);
    for (const auto& group : {schemaClass->mandatoryProperties(), schemaClass->optionalProperties()}) {
      for (const std::string& name : group) {
        if (!holds(names, name)) frmMain.lstExclude.addItem(name);
      }
    }
  }
}

void ExportTest::exportToDatabase(std::initializer_list<Answer> furtherAnswers) {
  dialogs->answers.assign(1, Answer::kOk);
  dialogs->answers.insert(dialogs->answers.end(), furtherAnswers);
  frmMain.cmdExportFile.onClick();
}

void ExportTest::exportSilently() {
  frmMain.chkRunSilent.setValue(true);
  frmMain.cmdExportFile.onClick();
}

Rows ExportTest::data(const std::string& columns, const std::string& condition) const {
  return query("TrelvinData.mdb", "SELECT " + columns + " FROM Data WHERE " + condition + " ORDER BY ID");
}

Rows ExportTest::propertyRows(const std::string& name) const {
  return data("Location AS a, COALESCE(StringValue, ObjectValue, NumberValue, BooleanValue) AS b",
              "Name = '" + name + "'");
}

std::vector<std::string> ExportTest::namesOfRows() const {
  std::vector<std::string> names;
  for (const auto& row : data("Name AS a")) names.push_back(row.front());
  return names;
}

std::vector<std::string> ExportTest::logBehind(const std::string& line) const {
  const std::vector<std::string> lines = logLines();
  const auto last = std::find(lines.rbegin(), lines.rend(), line);
  if (last == lines.rend()) throw std::runtime_error("the log has no line " + line);
  return {last.base(), lines.end()};
}

std::vector<std::string> ExportTest::logStartingWith(const std::string& beginning) const {
  std::vector<std::string> found;
  for (const std::string& line : logLines()) {
    if (line.starts_with(beginning)) found.push_back(line);
  }
  return found;
}

std::vector<std::string> ExportTest::shownOutput() {
  return entriesOf(frmMain.lstOutput);
}

std::vector<std::string> ExportTest::boxes() const {
  std::vector<std::string> texts;
  for (const Message& message : dialogs->shown) texts.push_back(message.text);
  return texts;
}

}  // namespace trelvin::test
