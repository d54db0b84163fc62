// The installer of data sources of a Windows that has the Access driver, as far as TrelvinSetup.exe calls it:
// Wine's own makes no databases. It answers to the driver's request for a new database in the form that the
// driver's documentation gives it, and makes an empty file, which SQLite opens as an empty database. A run
// that is to find no driver sets TRELVIN_NO_ACCESS_DRIVER.
#include <algorithm>
#include <array>
#include <cwctype>
#include <optional>
#include <string>
#include <string_view>

#include "platform/windows/windows_api.h"

// It needs what windows.h brings.
#include <odbcinst.h>

namespace {

constexpr std::wstring_view kAccessDriver = L"Microsoft Access Driver (*.mdb)";
constexpr std::wstring_view kCreate = L"CREATE_DB=";
constexpr std::array<std::wstring_view, 14> kSortOrders{L"General",
                                                        L"Traditional Spanish",
                                                        L"Dutch",
                                                        L"Swedish/Finnish",
                                                        L"Norwegian/Danish",
                                                        L"Icelandic",
                                                        L"Czech",
                                                        L"Hungarian",
                                                        L"Polish",
                                                        L"Russian",
                                                        L"Turkish",
                                                        L"Arabic",
                                                        L"Hebrew",
                                                        L"Greek"};

struct Refusal {
  DWORD number;
  std::wstring text;
};

// What the last request was refused with.
std::optional<Refusal> refusal;

BOOL refuse(DWORD number, std::wstring text) {
  refusal = Refusal{number, std::move(text)};
  return FALSE;
}

std::wstring upper(std::wstring_view text) {
  std::wstring folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(),
                 [](wchar_t each) { return std::towupper(each); });
  return folded;
}

bool isSame(std::wstring_view one, std::wstring_view other) {
  return upper(one) == upper(other);
}

// The value of a keyword in a list of NUL-terminated attributes that ends with an empty one.
std::optional<std::wstring_view> valueOf(std::wstring_view keyword, const wchar_t* attributes) {
  for (std::wstring_view each(attributes); !each.empty(); each = each.data() + each.size() + 1) {
    if (isSame(each.substr(0, keyword.size()), keyword)) return each.substr(keyword.size());
  }
  return std::nullopt;
}

struct Request {
  std::wstring path;
  std::wstring order;
};

// A path with blanks stands in double quotation marks; behind it, and behind a blank, the order of sorting.
std::optional<Request> requestOf(std::wstring_view value) {
  const bool isQuoted = value.starts_with(L'"');
  if (isQuoted) value.remove_prefix(1);
  const std::size_t end = value.find(isQuoted ? L'"' : L' ');
  if (isQuoted && end == std::wstring_view::npos) return std::nullopt;
  Request request{std::wstring(value.substr(0, end)), {}};
  if (end == std::wstring_view::npos) return request;
  const std::size_t order = value.find_first_not_of(L' ', end + 1);
  if (order != std::wstring_view::npos) request.order = value.substr(order);
  return request;
}

bool isWellFormed(const Request& request) {
  const bool isFullPath =
      request.path.size() > 3 && (request.path[1] == L':' || request.path.starts_with(L"\\\\"));
  const bool isKnownOrder = request.order.empty() ||
                            std::any_of(kSortOrders.begin(), kSortOrders.end(),
                                        [&](std::wstring_view each) { return isSame(each, request.order); });
  return isFullPath && isKnownOrder;
}

BOOL create(const std::wstring& path) {
  const HANDLE file =
      ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file != INVALID_HANDLE_VALUE) {
    ::CloseHandle(file);
    return TRUE;
  }
  return refuse(ODBC_ERROR_REQUEST_FAILED, ::GetLastError() == ERROR_FILE_EXISTS
                                               ? L"Database '" + path + L"' already exists."
                                               : L"Could not create '" + path + L"'. No permission.");
}

}  // namespace

extern "C" BOOL INSTAPI SQLConfigDataSourceW(HWND /*parent*/, WORD request, LPCWSTR driver,
                                             LPCWSTR attributes) {
  refusal.reset();
  if (request != ODBC_ADD_DSN) return refuse(ODBC_ERROR_INVALID_REQUEST_TYPE, L"Invalid type of request");
  const bool isThere = ::GetEnvironmentVariableW(L"TRELVIN_NO_ACCESS_DRIVER", nullptr, 0) == 0;
  if (!isThere || !isSame(driver, kAccessDriver)) {
    return refuse(ODBC_ERROR_COMPONENT_NOT_FOUND, L"Component not found in the registry");
  }
  const auto value = valueOf(kCreate, attributes);
  const auto wanted = value ? requestOf(*value) : std::nullopt;
  if (!wanted || !isWellFormed(*wanted)) {
    return refuse(ODBC_ERROR_INVALID_KEYWORD_VALUE, L"Invalid keyword-value pairs");
  }
  return create(wanted->path);
}

extern "C" RETCODE INSTAPI SQLInstallerErrorW(WORD index, DWORD* number, LPWSTR text, WORD size,
                                              WORD* length) {
  if (index != 1 || !refusal) return SQL_NO_DATA;
  *number = refusal->number;
  *length = static_cast<WORD>(refusal->text.size());
  if (size == 0) return SQL_SUCCESS_WITH_INFO;
  const std::size_t copied = refusal->text.copy(text, size - 1U);
  text[copied] = L'\0';
  return copied == refusal->text.size() ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}
