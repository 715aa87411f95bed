#include "sheets/Sheet.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "common/Csv.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "platform/Platform.h"
#include "sheets/NewFile.h"

namespace scorvane::sheets {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& path, std::string_view reason) {
  throw common::RuleError(fmt::format("'{}' could not be written: {}.", path, reason));
}

}  // namespace

NewFile::NewFile(const std::string& path) : path_(path) {
  std::error_code error;
  if (fs::is_directory(common::SystemPath(path), error)) Fail(path, "it is a folder");
  const std::string folder = common::GetFolder(path);
  if (!folder.empty() && !fs::is_directory(common::SystemPath(folder), error))
    Fail(path, "there is no such folder");
  platform::RemoveTemporariesBeside(path);
  temporary_ = platform::TemporaryBeside(path);
}

NewFile::~NewFile() {
  std::error_code error;
  if (!done_) fs::remove(common::SystemPath(temporary_), error);
}

void NewFile::Refused() const {
  Fail(path_, platform::HasRoomBeside(path_) ? "the folder or the file may not be written to"
                                             : "there is not enough space on the disk");
}

void NewFile::Finish() {
  try {
    platform::ReplaceFile(temporary_, path_);
  } catch (const std::system_error&) {
    Refused();
  }
  done_ = true;
}

FileKind KindOf(std::string_view path) {
  const std::string extension = common::LowerCase(common::GetExtension(path));
  if (extension == "xlsx") return FileKind::Xlsx;
  return extension == "csv" ? FileKind::Csv : FileKind::None;
}

void WriteCsv(const std::string& path, const Sheet& sheet) {
  NewFile file(path);
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
  std::ofstream out(common::SystemPath(file.Name()), std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) file.Refused();
  file.Finish();
}

}  // namespace scorvane::sheets
