// Small text and list helpers that every room shares.
#pragma once

#include <string>
#include <string_view>

#include "core/value.h"

namespace trelvin {

class ListControl;

// A value for the inside of a single-quoted SQL literal: Null gives the empty text, anything else its text
// with every single quote doubled. All text of users and metabases goes into SQL through here.
std::string quoteSql(const Value& value);

// Leaves one of each run of equal neighbours, so all duplicates go when the list is sorted.
void removeDuplicates(ListControl& list);

// The characters in reverse order.
std::string ReverseString(std::string_view text);

// App.Major, a point and App.Minor, without padding.
std::string programVersion();

// Text shorter than two characters gets a "0" in front.
std::string padTwoDigits(const Value& value);

}  // namespace trelvin
