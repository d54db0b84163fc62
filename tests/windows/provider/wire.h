// How the directory provider of the tests, which runs in a Windows program, speaks with its host, a Linux
// program that has the metabase files.
//
// One connection serves one network folder. The provider sends requests, the host answers each with one
// reply, in order. A message is its length in four bytes and then its bytes; whole numbers are little-endian,
// a text is its length in four bytes and its UTF-8. A value is one byte for its kind, the number of varType()
// modulo 256, and its content; a list is a count and values, an object is the number by which the host knows
// it and the name of its type. A value that is a node is such an object, too.
//
//   request   operation (1 byte), object (4 bytes), arguments (a list)
//   reply     number of a failure or 0 (4 bytes), its description (text), result (value)
//
// The end of the connection ends the use of the metabase files: the host writes what waits in journals, and
// closes its side after that.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "core/value.h"

namespace trelvin::test {

using ObjectNumber = std::uint32_t;

// The type of a node, and the one of what a Schema path leads to.
inline constexpr const char* kNodeTypeName = "IADs";
inline constexpr const char* kSchemaTypeName = "IADsClass";

enum class Operation : std::uint8_t {
  kServe,    // network folder, a native path; the first request of a connection
  kBind,     // path; gives a node
  kRelease,  // the object is not wanted any more
  // Of the object, as in platform/metabase.h, with the same arguments. Children are a list of nodes.
  kClass,
  kName,
  kAdsPath,
  kSchema,
  kChildren,
  kMandatoryProperties,
  kOptionalProperties,
  kGet,
  kPut,
  kSetInfo,
  kCreate,
  kDelete,
  kGetDataPaths,
  kAppCreate,
  kAppCreate2,
  kAppCreate3,
  kStart,
};

struct Request {
  Operation operation = Operation::kServe;
  ObjectNumber object = 0;
  Value::List arguments;
};

struct Reply {
  std::int32_t failure = 0;
  std::string description;
  Value result;
};

// What an object is on the wire, and the object behind a number.
using NumberObject = std::function<ObjectNumber(const Value::Object& object)>;
using FindObject = std::function<Value::Object(ObjectNumber number, const std::string& typeName)>;

// Messages without their length.
std::string bytesOf(const Request& request, const NumberObject& numberOf);
std::string bytesOf(const Reply& reply, const NumberObject& numberOf);
// They fail with 13 for what is no such message.
Request requestOf(std::string_view bytes, const FindObject& find);
Reply replyOf(std::string_view bytes, const FindObject& find);

// The length in front of a message.
inline constexpr std::size_t kLengthSize = 4;
std::string withLength(std::string_view message);
std::uint32_t lengthOf(std::string_view fourBytes);

}  // namespace trelvin::test
