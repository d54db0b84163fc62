// The one error state of the program, and the three ways in which routines meet a failure.
#pragma once

#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace trelvin {

// Numbers of failures, as the platform's runtime, ADSI, ADO and ODBC give them.
namespace error_number {
inline constexpr std::int32_t kInvalidProcedureCall = 5;
inline constexpr std::int32_t kOverflow = 6;
inline constexpr std::int32_t kOutOfMemory = 7;
inline constexpr std::int32_t kSubscriptOutOfRange = 9;
inline constexpr std::int32_t kTypeMismatch = 13;
inline constexpr std::int32_t kBadFileName = 52;
inline constexpr std::int32_t kFileNotFound = 53;
inline constexpr std::int32_t kDeviceIo = 57;
inline constexpr std::int32_t kFileExists = 58;
inline constexpr std::int32_t kDiskFull = 61;
inline constexpr std::int32_t kPermissionDenied = 70;
inline constexpr std::int32_t kPathFileAccess = 75;
inline constexpr std::int32_t kPathNotFound = 76;
inline constexpr std::int32_t kObjectNotSet = 91;
inline constexpr std::int32_t kInvalidUseOfNull = 94;
inline constexpr std::int32_t kInvalidPropertyValue = 380;
inline constexpr std::int32_t kInvalidPropertyArrayIndex = 381;
inline constexpr std::int32_t kCannotCreateObject = 429;
inline constexpr std::int32_t kNotSupportedByObject = 438;
inline constexpr std::int32_t kItemNotFound = 3265;     // ADO: a field of that name isn't in the set
inline constexpr std::int32_t kNoCurrentRecord = 3021;  // ADO: BOF or EOF is true
inline constexpr std::int32_t kObjectIsClosed = 3704;   // ADO: the operation needs an open object
inline constexpr std::int32_t kObjectIsOpen = 3705;     // ADO: the operation needs a closed object
inline constexpr std::int32_t kControlException = static_cast<std::int32_t>(0x80020009U);
inline constexpr std::int32_t kUnspecified = static_cast<std::int32_t>(0x80004005U);
inline constexpr std::int32_t kSqlError = static_cast<std::int32_t>(0x80040E14U);
inline constexpr std::int32_t kNoSuchTable = static_cast<std::int32_t>(0x80040E37U);
inline constexpr std::int32_t kAccessDenied = static_cast<std::int32_t>(0x80070005U);
inline constexpr std::int32_t kAdsBadPath = static_cast<std::int32_t>(0x80005000U);
inline constexpr std::int32_t kAdsBadParameter = static_cast<std::int32_t>(0x80005008U);
inline constexpr std::int32_t kAdsPropertyNotSupported = static_cast<std::int32_t>(0x80005006U);
inline constexpr std::int32_t kAdsObjectExists = static_cast<std::int32_t>(0x8000500EU);
inline constexpr std::int32_t kMetabasePathNotFound = static_cast<std::int32_t>(0x80070003U);
inline constexpr std::int32_t kServerUnavailable = static_cast<std::int32_t>(0x800706BAU);
inline constexpr std::int32_t kMetabaseDataNotFound = static_cast<std::int32_t>(0x800CC801U);
inline constexpr std::int32_t kMetabaseUnreadable = static_cast<std::int32_t>(0x800CC819U);
}  // namespace error_number

// The runtime's own description of a number, such as "Type mismatch" for 13; a general text for others.
std::string describeError(std::int32_t number);

// What a failing operation throws.
class Failure : public std::exception {
 public:
  explicit Failure(std::int32_t number) : Failure(number, describeError(number)) {}
  Failure(std::int32_t number, std::string description)
      : number_(number), description_(std::move(description)) {}

  [[nodiscard]] std::int32_t number() const { return number_; }
  [[nodiscard]] const std::string& description() const { return description_; }
  [[nodiscard]] const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::int32_t number_;
  std::string description_;
};

// One number and description, set by a failure that was met and kept until cleared.
struct ErrorState {
  std::int32_t number = 0;
  std::string description;

  void clear();
  void set(const Failure& failure);
  [[nodiscard]] bool isSet() const { return number != 0; }
};
inline ErrorState Err;  // NOLINT(readability-identifier-naming): the platform's own name for it

// 8 upper-case hex digits at the most, without leading zeros: 80070003, 5.
std::string hexOf(std::int32_t number);

// Runs one statement of a routine that ignores failures: a failure lands in Err and the next statement runs.
// Because the statement is left where it failed, an assignment in it keeps the old value.
// Returns whether the statement went through.
template <typename Statement>
bool attempt(Statement&& statement) {
  try {
    std::forward<Statement>(statement)();
    return true;
  } catch (const Failure& failure) {
    Err.set(failure);
  } catch (const std::bad_alloc&) {
    Err.set(Failure(error_number::kOutOfMemory));
  }
  return false;
}

// The condition of an If in a routine that ignores failures: one that fails falls into the first statement of
// its branch, as if it held.
template <typename Condition>
bool holdsOrFails(Condition&& condition) {
  bool holds = true;
  attempt([&] { holds = std::forward<Condition>(condition)(); });
  return holds;
}

// What a handle holds; one that holds nothing fails with 91, as any use of an unset object does.
template <typename Handle>
auto& bound(const Handle& handle) {
  if (!handle) throw Failure(error_number::kObjectNotSet);
  return *handle;
}

// Writes label, number, blank and description to the log (core/reporting.cpp). Fails when the log can't be
// written.
void logFailure(std::string_view label, const Failure& failure);

// The body of a routine that has a handler of its own. The routine is left where it failed, the handler runs,
// and the caller goes on. Returns whether it went through.
template <typename Handler, typename Body>
bool handledBy(Handler&& handler, Body&& body) {
  try {
    std::forward<Body>(body)();
    return true;
  } catch (const Failure& failure) {
    Err.set(failure);
    std::forward<Handler>(handler)(failure);
  } catch (const std::bad_alloc&) {
    const Failure failure(error_number::kOutOfMemory);
    Err.set(failure);
    std::forward<Handler>(handler)(failure);
  }
  return false;
}

// The body of a routine whose failures end in its log line: the label, which ends in " Error ", the number, a
// blank and the description.
template <typename Body>
bool handled(std::string_view label, Body&& body) {
  return handledBy([&](const Failure& failure) { logFailure(label, failure); }, std::forward<Body>(body));
}

// One statement of a routine whose handler logs and then goes on with the next statement.
template <typename Statement>
bool resumed(std::string_view label, Statement&& statement) {
  return handled(label, std::forward<Statement>(statement));
}

}  // namespace trelvin
