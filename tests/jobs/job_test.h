// A job file, key by key, and a server for it.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/run_state.h"
#include "fakes/export_test.h"
#include "fakes/scratch_machine.h"
#include "window/frm_main.h"

namespace trelvin::test {

class JobTest : public ExportTest {
 protected:
  // A server with the sites 1 Shop, 2 Wiki and 3 Mail.
  void addSites() {
    addServer("WEB1",
              metabaseFile(webService(plainSite(1, "Shop") + plainSite(2, "Wiki") + plainSite(3, "Mail"))));
  }

  // Gives a key of the section Job Details, or of another one when it names it ("1Site/SiteName").
  void set(const std::string& key, const std::string& value) {
    drop(key);
    keys_.emplace_back(key.find('/') == std::string::npos ? "Job Details/" + key : key, value);
  }
  void drop(const std::string& key) {
    const std::string whole = key.find('/') == std::string::npos ? "Job Details/" + key : key;
    std::erase_if(keys_, [&](const auto& entry) { return entry.first == whole; });
  }
  void addPair(int number, const std::string& find, const std::string& replace) {
    set(std::to_string(number) + "FindReplace/Find", find);
    if (!replace.empty()) set(std::to_string(number) + "FindReplace/Replace", replace);
  }
  void addSiteOfJob(int number, const std::string& index) {
    set(std::to_string(number) + "Site/SiteName", index);
  }

  // Writes the file and makes it the job in force. Its path is short enough for missing keys to be seen as
  // such.
  void writeJob() {
    std::map<std::string, std::string> sections;
    for (const auto& [key, value] : keys_) {
      const std::size_t slash = key.find('/');
      sections[key.substr(0, slash)] += key.substr(slash + 1) + "=" + value + "\r\n";
    }
    std::string text;
    for (const auto& [section, lines] : sections) text += "[" + section + "]\r\n" + lines;
    folder.write("j.job", text);
    run.sBackupJob = jobPath();
  }
  [[nodiscard]] std::string jobPath() const { return programForm(folder / "j.job"); }

  static std::vector<std::string> selectedSites() {
    std::vector<std::string> names;
    for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) {
      if (frmMain.lstSites.selected(i)) names.push_back(frmMain.lstSites.list(i));
    }
    return names;
  }

  // Where the clock of the tests puts a run's own database.
  static constexpr const char* kPerRun = "BackupJobs\\20040307-0230.mdb";
  [[nodiscard]] bool hasPerRun() const { return folder.has("program/BackupJobs/20040307-0230.mdb"); }
  [[nodiscard]] std::vector<std::string> storedNames(const std::string& database) const {
    std::vector<std::string> names;
    for (const auto& row : query(database, "SELECT SiteName AS a FROM Sites ORDER BY ID"))
      names.push_back(row[0]);
    return names;
  }

 private:
  std::vector<std::pair<std::string, std::string>> keys_{
      {"Job Details/Sites", "1"},
      {"Job Details/ImportServer", "WEB1"},
      {"Job Details/ExportServer", "Database"},
      {"Job Details/ImportVersion", "IIS5"},
      {"Job Details/ExportVersion", "IIS6"},
      {"Job Details/Type", "W3SVC"},
      {"Job Details/AutoStartSites", "False"},
      {"Job Details/SiteCreationMode", "Create New"},
      {"Job Details/FindReplaceCount", "0"},
      {"Job Details/BackupAllSites", "False"},
      {"1Site/SiteName", "IIS://WEB1/W3SVC/1"},
  };
};

}  // namespace trelvin::test
