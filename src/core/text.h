// Text is UTF-8. Lengths and positions that the program speaks of count characters, not bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace trelvin {

// Case is folded by Unicode's simple mappings; bytes that are no UTF-8 pass as they are.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
bool equalsIgnoringCase(std::string_view left, std::string_view right);
// An order in which texts that differ only in case are neighbours, and equal texts stand next to each other.
bool sortsBefore(std::string_view left, std::string_view right);

// Only the blank U+0020 is trimmed.
std::string_view trimmed(std::string_view text);
std::string_view trimmedRight(std::string_view text);

std::size_t characterCount(std::string_view text);
// The first or last so many characters; the whole text when it has no more.
std::string_view firstCharacters(std::string_view text, std::size_t count);
std::string_view lastCharacters(std::string_view text, std::size_t count);
// What stands behind the first so many characters.
std::string_view behindCharacters(std::string_view text, std::size_t count);

std::vector<std::string> split(std::string_view text, char separator);

bool containsIgnoringCase(std::string_view text, std::string_view part);
// Every occurrence from the first character on, none within what was put in. An empty part changes nothing.
std::string replaceAll(std::string_view text, std::string_view part, std::string_view replacement);
std::string replaceAllIgnoringCase(std::string_view text, std::string_view part,
                                   std::string_view replacement);
// The same, for so many occurrences at the most.
std::string replaceIgnoringCase(std::string_view text, std::string_view part, std::string_view replacement,
                                std::size_t most);

// The characters in reverse order.
std::string reversed(std::string_view text);

}  // namespace trelvin
