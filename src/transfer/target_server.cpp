#include "transfer/target_server.h"

#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/run_state.h"
#include "metabase/paths.h"
#include "platform/platform.h"
#include "transfer/export_frame.h"
#include "transfer/value_rewriting.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

std::string stamp() {
  return "Trelvin: This web site was exported using Trelvin v" + programVersion();
}

void reportUnreachableTarget() {
  if (!run.bRunSilent) {
    const std::string text =
        "Could not connect to the target server " + hexOf(Err.number) + " " + Err.description;
    attempt([&] { platform().dialogs->showMessage({.text = text}); });
    run.bExportCancelled = true;
  }
  attempt([] { writeLog("Error connecting to target server"); });
}

void takeIfHigher(const NodeHandle& child, std::int16_t& highest) {
  if (!holdsOrFails([&] { return isClass(child->className(), "Server"); })) return;
  // A number beyond 16 bits fails here, and again below, so that it is passed over.
  if (!holdsOrFails([&] { return integerOf(child->name()) > highest; })) return;
  attempt([&] { highest = integerOf(child->name()); });
}

}  // namespace

std::string targetServicePath() {
  return servicePath(frmMain.txtExportServer.text, frmMain.sService);
}

std::string targetSitePath(std::int16_t siteNumber) {
  return targetServicePath().append("/").append(std::to_string(siteNumber));
}

bool targetServerNamed() {
  if (!frmMain.txtExportServer.text.empty()) return true;
  tellUser("Please enter a server name to export to");
  return false;
}

void connectToTarget(NodeHandle& service) {
  warmUpProvider();
  attempt([&] { service = getObject(targetServicePath()); });
  if (Err.isSet()) reportUnreachableTarget();
}

std::int16_t firstSiteNumber(const NodeHandle& service) {
  if (frmMain.optOverwriteWebs.value()) return 1;
  std::int16_t iHighestSite = 0;
  attempt([&] {
    bound(service).forEachChild([&](const NodeHandle& child) { takeIfHigher(child, iHighestSite); });
  });
  return integerOf(iHighestSite + 1.0);
}

std::string errorAndCause() {
  return "Error " + std::to_string(Err.number) + Err.description;
}

bool beginAtTarget(std::int16_t& siteNumber) {
  NodeHandle service;
  connectToTarget(service);
  if (leaveWhenCancelled()) return false;
  Err.clear();
  attempt(
      [] { writeLog("Exporting from IIS" + textOf(run.dblIMIISVer) + " to IIS" + textOf(run.dblEXIISVer)); });
  attempt([&] { siteNumber = firstSiteNumber(service); });
  return true;
}

void putBindings(const NodeHandle& target, const ListControl& list, const char* property, Value& counter) {
  Value::List bindings(static_cast<std::size_t>(list.listCount()));
  for (std::int32_t i = 0; i < list.listCount(); ++i) {
    counter = i;
    attempt([&] { bindings[static_cast<std::size_t>(i)] = applyFindReplace(list.list(i)); });
  }
  counter = list.listCount();
  attempt([&] { bound(target).put(property, bindings); });
  attempt([&] { bound(target).setInfo(); });
}

void stampSite(NodeHandle& target, std::int16_t siteNumber) {
  attempt([&] { target = getObject(targetSitePath(siteNumber) + "/ROOT"); });
  Value headers;
  if (!attempt([&] { headers = bound(target).get("HttpCustomHeaders"); })) return;
  // No look-out for a stamp that is there already: a site that was moved twice carries two.
  attempt([&] {
    Value::List stamped = headers.list();
    stamped.emplace_back(stamp());
    bound(target).put("HttpCustomHeaders", stamped);
  });
  attempt([&] { bound(target).setInfo(); });
}

void startSite(std::int16_t siteNumber) {
  if (!run.bStartWebs) return;
  NodeHandle site;
  attempt([] { writeLog("Starting site..."); });
  attempt([&] { site = getObject(targetSitePath(siteNumber)); });
  attempt([&] { bound(site).start(); });
}

void leaveSite(std::int16_t& siteNumber, std::int16_t& siteCounter) {
  attempt([] { showLastLine(); });
  attempt([] { frmMain.ProgressBar1.setMax(frmMain.lstSites.selCount()); });
  // The number, and not the count of sites: one beyond the maximum leaves the bar as it is.
  attempt([&] { frmMain.ProgressBar1.setValue(siteNumber); });
  attempt([&] { siteNumber = integerOf(siteNumber + 1.0); });
  closeSite(siteCounter);
}

}  // namespace trelvin
