// The program's texts are UTF-8, Qt's are not.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace trelvin::desktop {

inline QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string fromQt(const QString& text) {
  return text.toStdString();
}

}  // namespace trelvin::desktop
