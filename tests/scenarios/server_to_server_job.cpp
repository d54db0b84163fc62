#include "server_to_server_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "core/err.h"
#include "fakes/scratch_machine.h"

namespace trelvin::test {

namespace fs = std::filesystem;

using ::testing::Contains;

namespace {

// A node may hold what its class doesn't know; that it does is all there is to see then. The error state of a
// run in this process is not touched.
std::string valueOf(const MetabaseNode& node, const std::string& name) {
  try {
    return textOf(node.get(name));
  } catch (const Failure& failure) {
    if (failure.number() != error_number::kAdsPropertyNotSupported) throw;
    return "(not known to the class)";
  }
}

// Names that the classes of a web server's nodes know and that can be set at a node.
std::set<std::string> propertyNames(Metabase& disk) {
  std::set<std::string> names;
  for (const char* word :
       {"IIsWebService", "IIsWebServer", "IIsWebVirtualDir", "IIsWebDirectory", "IIsApplicationPool",
        "IIsFtpServer", "IIsFtpVirtualDir", "IIsFilters", "IIsFilter"}) {
    const NodeHandle schemaClass = disk.getObject(std::string("IIS://NEW6/schema/") + word);
    for (const std::string& name : schemaClass->mandatoryProperties()) names.insert(name);
    for (const std::string& name : schemaClass->optionalProperties()) names.insert(name);
  }
  names.insert("KeyType");
  return names;
}

}  // namespace

ServerToServerJob::ServerToServerJob() {
  fs::copy(fs::path(TRELVIN_SOURCE_DIR) / "samples/servers", folder / "network", fs::copy_options::recursive);
}

std::string ServerToServerJob::sectionsOf(std::initializer_list<const char*> sites) {
  std::string text;
  int number = 0;
  for (const char* site : sites) {
    text += "[" + std::to_string(++number) + "Site]\r\nSiteName=IIS://" + site + "\r\n";
  }
  return text;
}

void ServerToServerJob::addWebJob(const std::map<std::string, std::string>& details) {
  std::map<std::string, std::string> all{{"Sites", "2"},
                                         {"ImportServer", "WEB5"},
                                         {"ExportServer", "NEW6"},
                                         {"ImportVersion", "IIS5"},
                                         {"ExportVersion", "IIS6"},
                                         {"FindReplaceCount", "2"}};
  for (const auto& [key, value] : details) all[key] = value;
  addJobText(jobText(all,
                     "[0FindReplace]\r\nFind=WINNT\r\nReplace=Windows\r\n[1FindReplace]\r\nFind=192.0.2.\r\n"
                     "Replace=198.51.100.\r\n" +
                         sectionsOf({"WEB5/W3SVC/1", "WEB5/W3SVC/3"})));
}

void ServerToServerJob::expectThrough(const ProcessResult& result) const {
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.standardError, "");
  EXPECT_THAT(log(), Contains("Closing complete"));
  const std::vector<std::string> lines = linesOf(result.standardOutput);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "Done!");
}

std::unique_ptr<Metabase> ServerToServerJob::reader() const {
  return scratchReader(folder / "network");
}

std::string textOf(const Value& value) {
  if (value.varType() == kVarObject || value.varType() == kVarBytes) return "(not looked into)";
  if (value.varType() != kVarList) return value.toText();
  std::string text;
  for (const Value& entry : value.list()) {
    if (entry.varType() == kVarObject) return "(not looked into)";
    text += (text.empty() ? "" : "|") + entry.toText();
  }
  return text;
}

std::string ServerToServerJob::valueAt(const std::string& path, const std::string& property) const {
  return textOf(reader()->getObject("IIS://NEW6" + path)->get(property));
}

std::vector<std::string> ServerToServerJob::sitesOf(const std::string& service) const {
  std::vector<std::string> names;
  reader()->getObject("IIS://NEW6/" + service)->forEachChild([&](const NodeHandle& child) {
    if (child->className().ends_with("Server")) names.push_back(child->name());
  });
  return names;
}

State ServerToServerJob::targetState() const {
  const std::unique_ptr<Metabase> disk = reader();
  const NodeHandle top = disk->getObject("IIS://NEW6");
  State state;
  for (const std::string& name : propertyNames(*disk)) {
    for (const std::string& path : top->getDataPaths(name, Value())) {
      state[path + " " + name] = valueOf(*disk->getObject(path), name);
    }
  }
  return state;
}

}  // namespace trelvin::test
