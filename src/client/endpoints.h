// The two places of the product's maker on the net. Their host names are settings of the build; a build
// without its own has names that can never be anybody's.
#pragma once

#include <string>
#include <string_view>

namespace trelvin {

// Host names: of the version check, the upgrade and the web pages, and of the adverts.
std::string updateHost();
std::string advertHost();

// Address of a page on the update endpoint.
std::string updateAddress(std::string_view path);

}  // namespace trelvin
