#include "client/update_check.h"

#include <algorithm>
#include <optional>

#include "client/endpoints.h"
#include "core/err.h"
#include "core/helpers.h"
#include "core/reporting.h"
#include "core/value.h"
#include "platform/platform.h"
#include "window/frm_main.h"

namespace trelvin {

namespace {

constexpr std::int32_t kHttpPort = 80;
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEmptyLine = "\r\n\r\n";

bool isAbout(std::string_view word) {
  return frmMain.sSocketState == word;
}

// What is received is bytes, of which each is one character here, as in a code page: a program is among it,
// and its bytes must come out as they came. Fails with 5 when the part isn't there.
std::size_t placeOf(std::string_view part, std::string_view text) {
  const std::size_t place = text.find(part);
  if (place == std::string_view::npos) throw Failure(error_number::kInvalidProcedureCall);
  return place;
}

std::string_view behind(std::string_view mark, std::string_view text) {
  return text.substr(placeOf(mark, text) + mark.size());
}

std::string_view cutAt(std::string_view mark, std::string_view text) {
  return text.substr(0, placeOf(mark, text));
}

std::string upperBytes(std::string_view bytes) {
  std::string upper(bytes);
  std::transform(upper.begin(), upper.end(), upper.begin(), [](char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
  });
  return upper;
}

std::string versionQuery() {
  const Application& application = *platform().application;
  return "Version=" + std::to_string(application.versionMajor()) + "%2E" +
         std::to_string(application.versionMinor());
}

// The address that the conversation asks for; none when it is about nothing known.
std::optional<std::string> wantedAddress() {
  if (isAbout(socket_state::kDLUpdate) || isAbout(socket_state::kDLAdvert)) return frmMain.sRedirect;
  if (isAbout(socket_state::kCheckUpdate)) return updateAddress("/TrelvinVerCheck.asp?" + versionQuery());
  if (isAbout(socket_state::kGetUpdate)) return updateAddress("/TrelvinUpgrade.asp?" + versionQuery());
  const std::string adverts = "http://" + advertHost();
  if (isAbout(socket_state::kGetAdvert)) {
    return adverts + "/ProgramAdvert.asp?Site=Trelvin&Format=Banner&Type=Flash+4&" + versionQuery();
  }
  if (isAbout(socket_state::kGetBook)) return adverts + "/ProgramBook.asp?Site=Trelvin&" + versionQuery();
  return std::nullopt;
}

// The whole address stands in the request line, as a proxy would want it, though no proxy is ever asked.
void ask(const std::string& address) {
  frmMain.wsck1.sendData("GET " + address + " HTTP/1.0\r\nAccept: */*\r\n\r\n");
}

void countDownload(std::int32_t bytesTotal) {
  frmMain.lDownloaded = longOf(static_cast<double>(frmMain.lDownloaded) + bytesTotal);
  setStatus("Update found, downloading " + std::to_string(frmMain.lDownloaded) + " bytes");
}

// Where a redirect answer leads. A chunk that names no place gives a nonsense address, counted from where its
// place would have been.
std::string redirectIn(const std::string& chunk, const std::string& upperChunk) {
  constexpr std::string_view kMark = "LOCATION:";
  const std::size_t found = upperChunk.find(kMark);
  const std::size_t place = found == std::string::npos ? 0 : found + 1;  // counted from 1
  // The mark and one blank; the mark's first letter is counted by the place.
  const std::size_t dropped = place + kMark.size();
  if (dropped > chunk.size()) throw Failure(error_number::kInvalidProcedureCall);
  return std::string(cutAt(kLineEnd, std::string_view(chunk).substr(dropped)));
}

void followRedirect(const std::string& chunk, const std::string& upperChunk) {
  frmMain.sRedirect = redirectIn(chunk, upperChunk);
  frmMain.sReceived.clear();
  frmMain.wsck1.close();
  if (isAbout(socket_state::kGetAdvert)) {
    frmMain.sSocketState = socket_state::kDLAdvert;
  } else if (isAbout(socket_state::kGetUpdate)) {
    frmMain.sSocketState = socket_state::kDLUpdate;
  }
  // The host is the same one: that of the new address stands in the request line and nowhere else.
  frmMain.wsck1.connect();
}

void readVersion() {
  const std::string version(cutAt("@@", behind("@@CurrentVersion=", frmMain.sReceived)));
  frmMain.wsck1.close();
  GetUpgrade(numberOf(version));
}

void launchUpgrade() {
  writeLog("Launching upgrade...");
  // Looked for beside the program, though it was written to the current directory. The state of a window that
  // is neither minimized nor maximized is 0, which as a show command hides: an upgrade shows itself.
  bound(platform().opener)
      .open({.file = platform().application->path() + "\\Upgrade.exe",
             .showCommand = frmMain.windowState,
             .ownedByMainWindow = false});
  frmMain.timExit.enabled = true;
}

void takeUpgrade() {
  frmMain.sReceived.erase(0, placeOf(kEmptyLine, frmMain.sReceived) + kEmptyLine.size());
  platform().files->writeText("Upgrade.exe", frmMain.sReceived);
  frmMain.wsck1.close();
  writeLog("Download of update complete");
  const Answer answer = platform().dialogs->showMessage(
      {.text = "An upgrade has been downloaded, do you wish to upgrade now?\r\n"
               "(This operation will close Trelvin)\r\n"
               "If not, please run Upgrade.exe later",
       .buttons = Buttons::kYesNo,
       .title = "Upgrade Trelvin"});
  if (answer == Answer::kYes) launchUpgrade();
}

}  // namespace

void mnuChkUpdates_Click() {
  handled("frmMain_ChkUpdates Error ", [] {
    setStatus("Checking for updates...");
    writeLog("Checking for update, version is " + programVersion());
    if (frmMain.wsck1.state() > kSocketClosed) frmMain.wsck1.close();
    frmMain.timAd1.enabled = false;
    frmMain.wsck1.remoteHost = updateHost();
    frmMain.wsck1.remotePort = kHttpPort;
    frmMain.sSocketState = socket_state::kCheckUpdate;
    frmMain.wsck1.connect();
  });
}

void wsck1_Connect() {
  handled("frmMain_wsck1_connect Error ", [] {
    frmMain.sReceived.clear();
    frmMain.lDownloaded = 0;
    if (const std::optional<std::string> address = wantedAddress()) ask(*address);
  });
}

void wsck1_DataArrival(std::int32_t bytesTotal) {
  handled("frmMain_wsck1_dataarrival Error ", [&] {
    if (frmMain.wsck1.state() == kSocketError) {
      addOutput("Winsock error state");
      return;
    }
    const std::string chunk = frmMain.wsck1.getData();
    frmMain.sReceived += chunk;
    if (isAbout(socket_state::kDLUpdate)) countDownload(bytesTotal);
    // Of this chunk alone: an answer that is split within these words is no redirect.
    const std::string upperChunk = upperBytes(chunk);
    if (upperChunk.find("302 OBJECT MOVED") != std::string::npos) followRedirect(chunk, upperChunk);
  });
}

void wsck1_Close() {
  handled("frmMain_wsck1_Close Error ", [] {
    if (isAbout(socket_state::kCheckUpdate)) {
      readVersion();
    } else if (isAbout(socket_state::kDLUpdate)) {
      takeUpgrade();
    }
    frmMain.lDownloaded = 0;
  });
}

void wsck1_Error(std::int32_t number, const std::string& description) {
  handled("frmMain_wsck1Error Error ", [&] {
    const std::string text = "Winsock Error " + std::to_string(number) + " " + description;
    addOutput(text);
    writeLog(text);
  });
}

void GetUpgrade(double dVersion) {
  handled("frmMain_GetUpgrade Error ", [&] {
    if (numberOf(programVersion()) < dVersion) {
      tellUserAndLog("Updates are available, please go to " + updateAddress("/Trelvin/Download.asp"));
    } else {
      setStatus("No updates available, Ready");
      tellUserAndLog("No updates available");
    }
  });
}

}  // namespace trelvin
