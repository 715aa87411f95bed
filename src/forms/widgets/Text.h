// Between the program's UTF-8 texts and Qt's.
#pragma once

#include <QDir>
#include <QString>
#include <string>
#include <string_view>

namespace scorvane::forms {

inline QString Q(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string Utf8(const QString& text) {
  return text.toStdString();
}

// A path of Qt's, which separates with "/" everywhere, as the system's users write it.
inline std::string PathUtf8(const QString& path) {
  return Utf8(QDir::toNativeSeparators(path));
}

}  // namespace scorvane::forms
