// Connection strings: keyword=value pairs with semicolons between them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

struct Attribute {
  std::string keyword;  // without blanks around it
  std::string value;    // without blanks around it; braces are kept
};

// The pairs in their order. A semicolon within a value in braces is part of the value. So is one that no
// keyword follows: a folder's name may hold a semicolon, and the program puts paths into its strings as they
// are.
std::vector<Attribute> attributesOf(std::string_view connectionString);

// The value without its pair of braces, if it has one; doubled closing braces within count once.
std::string unbraced(std::string_view value);

// The value of the first attribute of that keyword, in any case, without braces; empty when there is none.
std::string attributeOf(const std::vector<Attribute>& attributes, std::string_view keyword);

// The string as a driver manager wants it: without blanks at its end, and with ODBC's own keywords in place
// of ADO's "User Id" and "Password". A string that holds neither is otherwise left as it stands.
std::string driverManagerString(std::string_view connectionString);

}  // namespace trelvin
