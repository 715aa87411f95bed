#include "sheets/Sheet.h"

#include <fmt/format.h>

#include <fstream>

#include "common/Csv.h"
#include "common/Formats.h"
#include "common/NewFile.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "platform/Platform.h"

namespace scorvane::sheets {
FileKind KindOf(std::string_view path) {
  const std::string extension = common::LowerCase(common::GetExtension(path));
  if (extension == "xlsx") return FileKind::Xlsx;
  return extension == "csv" ? FileKind::Csv : FileKind::None;
}

void Refuse(const std::string& path, const std::string& why) {
  throw common::RuleError(fmt::format("'{}' could not be written: {}.", path, why));
}

void RefuseDatabase(const std::string& path) {
  using namespace std::string_view_literals;
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  std::string start(19, ' ');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  if (start.starts_with("SQLite format 3"sv) || start.starts_with("\0\1\0\0Standard Jet"sv))
    throw common::RuleError(fmt::format("'{}' is a league or another database, and stays as it is.", path));
}

void WriteCsv(const std::string& path, const Sheet& sheet) {
  RefuseDatabase(path);
  platform::RemoveTemporariesBeside(path);
  common::NewFile file(path);
  std::string text;
  const auto line = [&text](const auto& cells, const auto& textOf) {
    const std::size_t begin = text.size();
    for (const auto& cell : cells) {
      if (text.size() > begin || &cell != &cells.front()) text += ',';
      text += common::CsvCell(textOf(cell));
    }
    text += '\n';
  };
  line(sheet.columns, [](const Column& column) { return column.name; });
  for (const auto& row : sheet.rows) line(row, [](const Cell& cell) { return cell.value.ToText('.'); });
  if (!file.Write(text) || !file.Finish()) Refuse(path, file.WhyNot());
}

}  // namespace scorvane::sheets
