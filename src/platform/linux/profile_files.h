// Job files in the format of Windows' private profiles.
#pragma once

#include <memory>

#include "platform/linux/paths.h"
#include "platform/profile.h"

namespace trelvin {

// Sections, keys and values are UTF-8; bytes of a file that are none are read as Windows-1252 (file_text.h),
// and a file in UTF-16 behind its mark stays one. Blanks are U+0020 and tabs. A line is a key when it has "="
// behind a name and is no comment (";"); a section is what stands between "[" and the first "]".
//
// writeString refuses, and returns false, what could not be read back from its place: a line break or a NUL
// anywhere, a section without a name or with "]", a key without a name, with "=", or that begins like a
// comment or a section. Other lines stay as they are, byte for byte. A file without any write bit can't be
// written.
std::unique_ptr<ProfileFiles> makeProfileFiles(PathMapping toNative);

}  // namespace trelvin
