// Between the program's UTF-8 texts and Qt's.
#pragma once

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

}  // namespace scorvane::forms
