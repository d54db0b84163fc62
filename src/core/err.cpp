#include "core/err.h"

#include <array>
#include <cstdio>
#include <new>

namespace trelvin {

namespace {

struct Description {
  std::int32_t number;
  const char* text;
};

constexpr std::array kDescriptions{
    Description{error_number::kInvalidProcedureCall, "Invalid procedure call or argument"},
    Description{error_number::kOverflow, "Overflow"},
    Description{error_number::kOutOfMemory, "Out of memory"},
    Description{error_number::kSubscriptOutOfRange, "Subscript out of range"},
    Description{error_number::kTypeMismatch, "Type mismatch"},
    Description{error_number::kBadFileName, "Bad file name or number"},
    Description{error_number::kFileNotFound, "File not found"},
    Description{error_number::kDeviceIo, "Device I/O error"},
    Description{error_number::kFileExists, "File already exists"},
    Description{error_number::kDiskFull, "Disk full"},
    Description{error_number::kPermissionDenied, "Permission denied"},
    Description{error_number::kPathFileAccess, "Path/File access error"},
    Description{error_number::kPathNotFound, "Path not found"},
    Description{error_number::kObjectNotSet, "Object variable or With block variable not set"},
    Description{error_number::kInvalidUseOfNull, "Invalid use of Null"},
    Description{error_number::kInvalidPropertyValue, "Invalid property value"},
    Description{error_number::kInvalidPropertyArrayIndex, "Invalid property array index"},
    Description{error_number::kCannotCreateObject, "ActiveX component can't create object"},
    Description{error_number::kNotSupportedByObject, "Object doesn't support this property or method"},
    Description{error_number::kItemNotFound,
                "Item cannot be found in the collection corresponding to the requested name or ordinal."},
    Description{error_number::kNoCurrentRecord,
                "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                "requires a current record."},
    Description{error_number::kObjectIsClosed, "Operation is not allowed when the object is closed."},
    Description{error_number::kObjectIsOpen, "Operation is not allowed when the object is open."},
    Description{error_number::kControlException, "Exception occurred."},
    Description{error_number::kUnspecified, "Unspecified error"},
    Description{error_number::kAccessDenied, "Access is denied. "},
    Description{error_number::kAdsBadPath, "An invalid directory pathname was passed"},
    Description{error_number::kAdsBadParameter, "One or more input parameters are invalid"},
    Description{error_number::kAdsPropertyNotSupported,
                "The directory property cannot be found in the cache."},
    Description{error_number::kAdsObjectExists, "The object already exists"},
    Description{error_number::kMetabasePathNotFound, "The system cannot find the path specified. "},
    Description{error_number::kServerUnavailable, "The RPC server is unavailable. "},
    Description{error_number::kMetabaseDataNotFound, "The metabase data cannot be found."},
    Description{error_number::kMetabaseUnreadable, "The metabase file cannot be read."},
};

}  // namespace

std::string describeError(std::int32_t number) {
  for (const Description& known : kDescriptions) {
    if (known.number == number) return known.text;
  }
  return "Application-defined or object-defined error";
}

void ErrorState::clear() {
  number = 0;
  description.clear();
}

void ErrorState::set(const Failure& failure) {
  number = failure.number();
  description = failure.description();
}

std::string hexOf(std::int32_t number) {
  std::array<char, 9> digits{};
  std::snprintf(digits.data(), digits.size(), "%X", static_cast<std::uint32_t>(number));
  return digits.data();
}

}  // namespace trelvin
