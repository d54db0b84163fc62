// A source server with sites, listed and selected as a person does it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/err.h"
#include "core/run_state.h"
#include "fakes/failing_databases.h"
#include "fakes/program_test.h"
#include "stores/statements.h"
#include "window/frm_main.h"

namespace trelvin::test {

using Texts = std::vector<std::string>;
using Properties = std::vector<std::pair<std::string, std::string>>;

class SitesTest : public ProgramTest {
 protected:
  SitesTest() : databases(watchDatabases()) {
    openWindow();
    frmMain.txtImportServer.text = "web1";
  }

  // Elements of a metabase. A list is written with its entries on lines of their own.
  static std::string webService() { return element("IIsWebService", "/LM/W3SVC"); }
  static std::string ftpService() { return element("IIsFtpService", "/LM/MSFTPSVC"); }
  static std::string webSite(const std::string& number, Properties properties) {
    return element("IIsWebServer", "/LM/W3SVC/" + number, properties);
  }
  static std::string ftpSite(const std::string& number, Properties properties) {
    return element("IIsFtpServer", "/LM/MSFTPSVC/" + number, properties);
  }
  // A virtual directory by its location below the service, such as 1/ROOT/images.
  static std::string webDirectory(const std::string& location, const std::string& path) {
    return element("IIsWebVirtualDir", "/LM/W3SVC/" + location, {{"Path", path}});
  }
  static std::string asList(const Texts& entries) {
    std::string list;
    for (const std::string& entry : entries) list += (list.empty() ? "" : "\r\n\t\t\t") + entry;
    return list;
  }
  void addWebServer(const std::string& elements) { addServer("web1", metabaseFile(webService() + elements)); }

  static void pressPopulate() { frmMain.cmdPopulate.onClick(); }
  static void select(std::int32_t line) { frmMain.lstSites.setSelected(line, true); }
  static void unselect(std::int32_t line) { frmMain.lstSites.setSelected(line, false); }

  [[nodiscard]] Rows directoryRows() const {
    return query("Trelvin.mdb",
                 "SELECT SiteID AS a, ListIndex AS b, Folder AS c, Directory AS d FROM tmpSettings WHERE "
                 "Folder IS NOT "
                 "NULL ORDER BY SiteID, ListIndex");
  }
  [[nodiscard]] Rows bindingRows() const {
    return query(
        "Trelvin.mdb",
        "SELECT SiteID AS a, ListIndex AS b, OldIP AS c, NewIP AS d FROM tmpSettings WHERE OldIP IS NOT NULL "
        "ORDER BY SiteID, ListIndex");
  }
  [[nodiscard]] Rows sslRows() const {
    return query(
        "Trelvin.mdb",
        "SELECT SiteID AS a, ListIndex AS b, OldSSLIP AS c, NewSSLIP AS d FROM tmpSettings WHERE OldSSLIP IS "
        "NOT NULL ORDER BY SiteID, ListIndex");
  }
  [[nodiscard]] Rows filesToCopy() const {
    return query("Trelvin.mdb",
                 "SELECT ListNum AS a, DirNum AS b, FileName AS c, CASE WHEN Copy THEN 'copy' ELSE 'not' END "
                 "AS d FROM "
                 "tmpFilesToCopy ORDER BY ListNum, DirNum");
  }
  [[nodiscard]] Rows allSettings() const {
    return query("Trelvin.mdb",
                 "SELECT SiteID AS a, ListIndex AS b, Folder AS c, Directory AS d, OldIP AS e, NewIP AS f, "
                 "OldSSLIP AS "
                 "g, NewSSLIP AS h FROM tmpSettings ORDER BY rowid");
  }

  // Paths that were bound, in their order.
  [[nodiscard]] Texts boundPaths() const {
    Texts paths;
    for (const MetabaseCall& call : metabase->calls) {
      if (call.operation == "GetObject") paths.push_back(call.path);
    }
    return paths;
  }
  // Texts of the boxes that were shown.
  [[nodiscard]] Texts boxes() const {
    Texts texts;
    for (const Message& message : dialogs->shown) texts.push_back(message.text);
    return texts;
  }
  // Lines of the log behind the load of the window.
  [[nodiscard]] Texts newLogLines() const {
    Texts lines = logLines();
    lines.erase(lines.begin(), lines.begin() + 2);
    return lines;
  }

  FailingDatabases& databases;
};

}  // namespace trelvin::test
