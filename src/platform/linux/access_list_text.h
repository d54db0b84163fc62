// An access list as text: one entry a line, type;flags;mask;more;account.
//
//   allow;OICI;0x001200a9;;WEB1\editors
//   deny;;0x00010000;;Everyone
//
// The fifteen values of an entry carry the fields of an entry of a Windows access list:
//
//    1        type: 0 allow, 1 deny, 2 audit, 3 alarm, 5 to 8 the same four for one kind of object, ...
//    2        flags: the bits of Flag below
//    3        mask of the rights
//    4        for types 5 to 8: 1 when an object's GUID is given, 2 when an inheriting object's is
//    5 to 8   GUID of the object: its 16 bytes, four to a value, the lowest first
//    9 to 12  GUID of the object that inherits, likewise
//   13 to 15  nothing; kept like the others
//
// In a line the type is a word (allow, deny, audit, alarm) or a number, the flags are the letter pairs of
// Flag or a number, and more holds those of the values 4 to 15 that aren't 0: 4=0x1,5=0xbf967aba. Numbers are
// hexadecimal, with 0x. The account is whatever stands behind the fourth semicolon. Each of the values,
// whatever it is, comes back as it was.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/shared/record_list.h"

namespace trelvin::access_list_text {

// The place of a value in a record: its index less 1.
enum Field : std::uint8_t { kType = 0, kFlags = 1, kMask = 2 };

enum Flag : std::int32_t {
  kObjectInherit = 0x01,     // OI: files inherit the entry
  kContainerInherit = 0x02,  // CI: folders inherit it
  kNoPropagate = 0x04,       // NP: those who inherit it pass it no further
  kInheritOnly = 0x08,       // IO: it says nothing about the folder that holds it
  kInherited = 0x10,         // ID: it was inherited
  kAuditSuccess = 0x40,      // SA
  kAuditFailure = 0x80,      // FA
};

using Record = AccessRecord;

// The entry's line, with the line feed at its end. The account has to be one that nothing is wrong with.
std::string format(const Record& record);

// The entries of a text; the empty text has none, and the last line feed may be missing. Throws
// std::invalid_argument, whose text names entry and field, for anything that format doesn't write.
std::vector<Record> parse(std::string_view text);

// What is wrong with an account's name; empty for a well-formed one: DOMAIN\name, or a name alone, such as
// Everyone, of 256 characters at the most and without control characters. Whether the account exists isn't
// asked: no machine here knows the accounts of the server that the file is meant for.
std::string faultOfAccount(std::string_view account);

// A text fit for a line of the log, however long it is and whatever it holds.
std::string quoted(std::string_view text);

}  // namespace trelvin::access_list_text
