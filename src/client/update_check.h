// Asks the maker's web server which version is current. One conversation at a time goes over the socket of
// the main window; its state word tells the socket's events what it is about. Only the check is ever started;
// download, advert and book page stand ready behind their words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trelvin {

// The words of frmMain.sSocketState. It is empty until the first check and is never cleared.
namespace socket_state {
inline constexpr std::string_view kCheckUpdate = "CheckUpdate";
inline constexpr std::string_view kGetUpdate = "GetUpdate";  // a redirect turns it into kDLUpdate
inline constexpr std::string_view kDLUpdate = "DLUpdate";    // what comes is the upgrade program
inline constexpr std::string_view kGetAdvert = "GetAdvert";  // a redirect turns it into kDLAdvert
inline constexpr std::string_view kDLAdvert = "DLAdvert";
inline constexpr std::string_view kGetBook = "GetBook";
}  // namespace socket_state

void mnuChkUpdates_Click();

void wsck1_Connect();
void wsck1_DataArrival(std::int32_t bytesTotal);
void wsck1_Close();
void wsck1_Error(std::int32_t number, const std::string& description);

// Tells the user whether the version is newer than this program's. A version is read as a number: 1.10 is 1.1
// and older than 1.9.
void GetUpgrade(double dVersion);

}  // namespace trelvin
