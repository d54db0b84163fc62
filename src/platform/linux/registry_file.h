// A registry in one file, in the registry editor's own text form.
#pragma once

#include <memory>
#include <string>

#include "platform/registry.h"

namespace trelvin {

// The file is read as the editor would import it, from top to bottom: a later value replaces an earlier one,
// "x"=- takes a value out and [-key] a key with all below it. Keys and names match in any case. UTF-8 and,
// behind its mark, UTF-16 as the editor writes it; bytes that are no UTF-8 are read as Windows-1252. Texts
// come back in UTF-8 without a NUL, whichever way they are stored.
//
// It holds a password, so every write leaves it readable by its owner alone. What isn't understood is kept.
// Codes: 2 no such key or value, 5 no right or a read-only file, 13 a value that makes no sense, 14 out of
// memory, 112 disk full, 87 for a name with a line end or a NUL, 1016 for the rest.
std::unique_ptr<Registry> makeRegistryFile(std::string nativePath);

}  // namespace trelvin
