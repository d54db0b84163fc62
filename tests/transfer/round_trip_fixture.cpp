#include "round_trip_fixture.h"

#include <algorithm>
#include <set>

#include "core/err.h"
#include "core/run_state.h"
#include "core/text.h"
#include "metabase/paths.h"
#include "window/frm_main.h"

namespace trelvin::test {

namespace {

constexpr const char* kNext = "\r\n\t\t\t";  // between the entries of a list in a metabase file
constexpr int kDeepest = 5;
constexpr int kMostNodes = 30;

std::string shown(const Value& value) {
  if (value.varType() == kVarList) {
    std::string text = "list";
    for (const Value& item : value.list()) text += " [" + item.toText() + "]";
    return text;
  }
  if (value.varType() == kVarObject) return "object " + value.object()->typeName();
  if (value.varType() == kVarBytes) return std::to_string(value.bytes().size()) + " bytes";
  return std::to_string(value.varType()) + " " + value.toText();
}

void describeNodes(const NodeHandle& node, std::size_t prefix, SiteContent& content,
                   std::set<std::string>& names) {
  content[node->adsPath().substr(prefix) + " class"] = node->className();
  const NodeHandle schema = getObject(node->schema());
  for (const std::string& name : schema->mandatoryProperties()) names.insert(name);
  for (const std::string& name : schema->optionalProperties()) names.insert(name);
  node->forEachChild([&](const NodeHandle& child) { describeNodes(child, prefix, content, names); });
}

const std::vector<const char*> kNodeTexts{
    "DefaultDoc",       "AppFriendlyName",   "DefaultLogonDomain",           "Realm",     "HttpExpires",
    "HttpRedirect",     "AspScriptLanguage", "CacheControlCustom",           "AppPoolId", "AnonymousUserName",
    "DefaultDocFooter", "AspSxsName",        "AspDiskTemplateCacheDirectory"};
const std::vector<const char*> kNodeNumbers{"CGITimeout",  "CacheControlMaxAge", "UploadReadAheadSize",
                                            "LogonMethod", "AspSessionTimeout",  "AspScriptTimeout"};
const std::vector<const char*> kNodeTruths{"DontLog",    "EnableDocFooter", "AspBufferingOn",
                                           "CacheISAPI", "SSIExecDisable",  "ContentIndexed"};
const std::vector<const char*> kNodeLists{"HttpPics", "HttpCustomHeaders", "HttpErrors", "RedirectHeaders",
                                          "ScriptMaps"};
const std::vector<const char*> kSiteTexts{"DefaultDoc", "Realm", "AnonymousUserName", "LogOdbcDataSource",
                                          "LogFileDirectory"};
const std::vector<const char*> kSiteNumbers{"MaxConnections", "ConnectionTimeout", "ServerSize",
                                            "CGITimeout"};
const std::vector<const char*> kSiteTruths{"AllowKeepAlive", "ServerAutoStart", "DontLog"};
const std::vector<const char*> kSiteLists{"HttpErrors", "ScriptMaps"};
const std::vector<const char*> kFtpSiteTexts{"ExitMessage", "MaxClientsMessage", "Realm"};
const std::vector<const char*> kFtpSiteNumbers{"MaxConnections", "ConnectionTimeout"};
const std::vector<const char*> kFtpSiteTruths{"AllowAnonymous", "AnonymousOnly", "MSDOSDirOutput"};
const std::vector<const char*> kFtpSiteLists{"GreetingMessage", "BannerMessage"};
const std::vector<const char*> kFtpNodeTexts{"UNCUserName"};
const std::vector<const char*> kFtpNodeTruths{"DontLog", "FtpDirBrowseShowLongDate"};
const std::vector<const char*> kNone{};

}  // namespace

void RoundTrip::openBoth(const std::string& sites, int from, int to) {
  addThree(infoOf(from) + webService(sites), infoOf(to) + webService(""));
  openWindow();
  list(from, to);
}

void RoundTrip::openBothFtp(const std::string& sites) {
  addThree(ftpService(sites), ftpService(""));
  openWindow();
  frmMain.optExportFTP.setValue(true);
  list(6, 6);
}

void RoundTrip::addThree(const std::string& source, const std::string& target) {
  addServer("WEB1", metabaseFile(source));
  addServer("NEW1", metabaseFile(target));
  addServer("NEW2", metabaseFile(target));
}

void RoundTrip::list(int from, int to) {
  frmMain.chkRunSilent.setValue(true);
  chooseVersions(from, to);
  frmMain.txtImportServer.text = "WEB1";
  frmMain.cmdPopulate.onClick();
}

void RoundTrip::selectAll() {
  for (std::int32_t i = 0; i < frmMain.lstSites.listCount(); ++i) frmMain.lstSites.setSelected(i, true);
}

void RoundTrip::sendBothWays() {
  const std::int32_t from = frmMain.lstIMIISVer.listIndex() + 4;
  const std::int32_t to = frmMain.lstEXIISVer.listIndex() + 4;
  selectAll();
  frmMain.txtExportServer.text = "NEW1";
  frmMain.cmdExportServer.onClick();
  straightFailures = failureLines();

  // Tabs set versions of their own; these are chosen again behind them, as a job does it.
  frmMain.TabExportType.select(2);
  chooseVersions(from, to);
  frmMain.cmdExportFile.onClick();
  beginningOfRun = "Exporting to file";
  storeFailures = failureLines();

  frmMain.TabImportType.select(2);
  chooseVersions(from, to);
  frmMain.cmdPopulate.onClick();
  frmMain.lstOldValues.clear();
  frmMain.lstNewValues.clear();
  selectAll();
  frmMain.txtExportServer.text = "NEW2";
  frmMain.cmdExportServer.onClick();
  beginningOfRun = "Exporting to server from file";
  rebuildFailures = failureLines();
}

SiteContent RoundTrip::contentOf(const std::string& server, int number) {
  const ErrorState before = Err;
  const std::string path = "IIS://" + server + "/" + frmMain.sService + "/" + std::to_string(number);
  SiteContent content;
  std::set<std::string> names;
  NodeHandle site;
  if (attempt([&] { site = getObject(path); })) {
    describeNodes(site, path.size(), content, names);
    for (const std::string& name : names) {
      for (const std::string& holder : site->getDataPaths(name, Value())) {
        content[holder.substr(path.size()) + " " + name] = shown(getObject(holder)->get(name));
      }
    }
  }
  Err = before;
  return content;
}

std::string RandomSite::textValue() {
  static const std::vector<std::string> kTexts{"",
                                               "   ",
                                               "it's \"quoted\" <&>",
                                               "Z\xc3\xbcrich, \xe6\x9d\xb1\xe4\xba\xac, \xf0\x9f\x98\x80",
                                               "d:\\sites\\shop\\..\\x",
                                               "%SystemRoot%\\temp",
                                               " blanks around ",
                                               "''",
                                               "back\\slash\\'",
                                               "; -- '); DROP TABLE Data; --",
                                               "null",
                                               "192.0.2.17",
                                               std::string(3000, 'l')};
  return kTexts[lot(static_cast<unsigned>(kTexts.size()))];
}

// At least one entry, and no entry that is empty: a list that is empty goes other ways.
std::string RandomSite::listValue() {
  std::string value;
  for (unsigned left = 1 + lot(4); left > 0; --left) {
    std::string entry = textValue();
    if (trimmed(entry).empty()) entry = "GET,POST";
    value += (value.empty() ? "" : kNext) + entry;
  }
  return value;
}

void RandomSite::addSome(Properties& properties, const Kinds& kinds) {
  static const std::vector<const char*> kNumbers{"0", "1", "20", "65536", "2147483647", "4294967295"};
  const auto some = [&](const std::vector<const char*>& names, auto&& value) {
    for (const char* name : names) {
      if (lot(3) == 0) properties.emplace_back(name, value());
    }
  };
  some(kinds.texts, [&] { return textValue(); });
  some(kinds.numbers, [&] { return std::string(kNumbers[lot(static_cast<unsigned>(kNumbers.size()))]); });
  some(kinds.truths, [&] { return std::string(lot(2) == 0 ? "TRUE" : "FALSE"); });
  some(kinds.lists, [&] { return listValue(); });
}

Properties RandomSite::application(const std::string& path) {
  return {{"AppRoot", "/LM/W3SVC/" + std::to_string(number_) + path},
          {"AppIsolated", std::to_string(lot(3))},
          {"AppPoolId", lot(2) == 0 ? "DefaultAppPool" : "Pool's own"}};
}

std::string RandomSite::node(const std::string& path, const std::string& name, const std::string& appRoot,
                             int depth) {
  // A directory whose name ends the application's path would be taken for an application, which the two ways
  // carry differently.
  const bool endsRoot = upperCase(appRoot).ends_with(upperCase(name));
  const bool isVirtual = endsRoot || lot(2) == 0;
  Properties properties;
  std::string root = appRoot;
  if (isVirtual) {
    properties.emplace_back("Path", lot(3) == 0 ? "D:\\it's here\\" + name : "d:\\sites" + path);
    if (lot(3) == 0) {
      const Properties own = application(path);
      properties.insert(properties.end(), own.begin(), own.end());
      root = own.front().second;
    }
  }
  if (lot(3) == 0) properties.emplace_back("AccessFlags", lot(2) == 0 ? "AccessRead | AccessScript" : "0");
  Properties more;
  addSome(more, {kNodeTexts, kNodeNumbers, kNodeTruths, kNodeLists});
  for (const auto& property : more) {
    const auto isThere = [&](const auto& other) { return other.first == property.first; };
    if (std::none_of(properties.begin(), properties.end(), isThere)) properties.push_back(property);
  }
  ++nodes;
  return ServerToServer::below(number_, isVirtual ? "IIsWebVirtualDir" : "IIsWebDirectory", path,
                               properties) +
         nodesBelow(path, root, depth + 1);
}

std::string RandomSite::nodesBelow(const std::string& path, const std::string& appRoot, int depth) {
  static const std::vector<std::string> kNames{"12",
                                               "T",
                                               "a",
                                               "a b",
                                               "a-b",
                                               "A&B",
                                               "B\xc3\xbc"
                                               "cher",
                                               "cgi-bin",
                                               "images",
                                               "it's",
                                               "x.y",
                                               "_private",
                                               "1"};
  std::string elements;
  for (const std::string& name : kNames) {
    if (depth > kDeepest || nodes >= kMostNodes || lot(3) != 0) continue;
    elements += node(path + "/" + name, name, appRoot, depth);
  }
  return elements;
}

std::string RandomSite::elements() {
  Properties site{
      {"ServerComment", "Site's " + std::to_string(number_)},
      {"ServerBindings", lot(2) == 0 ? ":80:" : "192.0.2.17:80:it's.example" + std::string(kNext) + ":81:"}};
  if (lot(2) == 0) site.emplace_back("SecureBindings", ":443:");
  addSome(site, {kSiteTexts, kSiteNumbers, kSiteTruths, kSiteLists});
  Properties root{{"Path", "d:\\sites\\" + std::to_string(number_)}};
  const Properties own = application("/ROOT");
  root.insert(root.end(), own.begin(), own.end());
  addSome(root, {kNone, kNodeNumbers, kNodeTruths, kNodeLists});
  return ServerToServer::below(number_, "IIsWebServer", "", site) +
         ServerToServer::below(number_, "IIsWebVirtualDir", "/ROOT", root) +
         nodesBelow("/ROOT", own.front().second, 1);
}

std::string RandomSite::ftpElements() {
  Properties site{{"ServerBindings", "192.0.2.17:21:"}};
  addSome(site, {kFtpSiteTexts, kFtpSiteNumbers, kFtpSiteTruths, kFtpSiteLists});
  std::string elements = ServerToServer::ftpSite(number_, "Files' " + std::to_string(number_), site);
  for (const char* path : {"/ROOT", "/ROOT/12", "/ROOT/12/deep", "/ROOT/T", "/ROOT/it's"}) {
    Properties properties{{"Path", std::string("d:\\sites") + path}};
    addSome(properties, {kFtpNodeTexts, kNone, kFtpNodeTruths, kNone});
    elements += ServerToServer::ftpDir(number_, path, properties);
    ++nodes;
  }
  return elements;
}

}  // namespace trelvin::test
