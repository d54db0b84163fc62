// Text files as Windows programs leave them: in UTF-8, in the system's code page or in UTF-16 behind a mark.
#pragma once

#include <string>
#include <string_view>

namespace trelvin {

// The bytes that are no UTF-8 are taken as characters of Windows-1252, the code page of western Windows: a
// file written there keeps its accents, and no byte is lost. What is UTF-8 passes as it is.
std::string utf8OrWindows1252(std::string_view bytes);

// UTF-16, low byte first. A half of a surrogate pair that stands alone survives the way there and back, in
// the three bytes that UTF-8 would have for it; an odd last byte is dropped.
std::string utf8FromUtf16(std::string_view bytes);
std::string utf16FromUtf8(std::string_view text);

// A file's content apart from how it is stored, so that a change is written in the file's own manner.
struct FileText {
  enum class Form { kBytes, kUtf8Mark, kUtf16Mark };
  std::string text;  // of Form::kBytes and kUtf8Mark: the bytes as they are
  Form form = Form::kBytes;

  [[nodiscard]] static FileText fromBytes(std::string bytes);
  [[nodiscard]] std::string toBytes() const;
  // The line end of the file, or the one of Windows when it has none yet.
  [[nodiscard]] std::string_view lineEnd() const;
};

}  // namespace trelvin
