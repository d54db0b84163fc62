#include "transfer/export_to_server.h"

#include "core/err.h"
#include "core/run_state.h"
#include "server_to_server_fixture.h"
#include "window/frm_main.h"

namespace trelvin::test {
namespace {
TEST_F(ServerToServer, Dump) {
  openForDebug(webService(webSite(7, "Shop", {{"ServerBindings", ":80:shop"}}) + virtualDir(7, "/ROOT", {{"Path", "C:\\shop"}, {"AppRoot","/LM/W3SVC/7/ROOT"},{"AppIsolated","2"}, {"AppPoolId","P"}})+directory(7,"/ROOT/images",{{"AccessFlags","513"}})+below(7,"IIsFilters","/Filters",{{"FilterLoadOrder","a"}})));
  transferOnly({"Path", "ServerComment", "ServerBindings","FilterLoadOrder"});
  metabase->calls.clear();
  exportSites({0});
  for (auto& l : runLog()) puts(l.c_str());
  puts("---");
  for (auto& l : shownOutput()) puts(l.c_str());
  puts("---");
  for (auto& l : callsOf({"GetObject","Get","Create","SetInfo","Put","Delete","AppCreate","AppCreate2","AppCreate3","Start","GetDataPaths","enumerate"})) puts(l.c_str());
  puts(closedTargetFile().c_str());
}
}
}
