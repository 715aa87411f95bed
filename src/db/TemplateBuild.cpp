#include "db/TemplateBuild.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/SqlText.h"
#include "db/Tables.h"

namespace scorvane::db {

TemplateError::TemplateError(const std::string& file, int line, const std::string& problem)
    : std::runtime_error(line == 0 ? fmt::format("{}: {}", file, problem)
                                   : fmt::format("{}:{}: {}", file, line, problem)) {}

namespace {

using engine::Field;
using engine::FieldType;
using engine::TableDef;

constexpr int kCounter = engine::kAutoIncrField | engine::kFixedField;

TableDef TemplatePointSystemTable() {
  return {"PointSystem",
          {
              Column("Position", FieldType::Integer, 0, engine::kFixedField, true),
              Column("Kirrelon", FieldType::Integer),
              Column("LPoints1", FieldType::Integer),
              Column("LPoints2", FieldType::Integer),
              Column("LPoints3", FieldType::Integer),
          },
          {PrimaryKey("Position")}};
}

TableDef ReportTable() {
  return {"Report",
          {
              Column("ReportID", FieldType::Long, 0, kCounter),
              Column("Name", FieldType::Text, 50),
              Column("Sequence", FieldType::Integer),
              Column("Query", FieldType::Memo),
          },
          {PrimaryKey("ReportID")}};
}

TableDef ReportFieldTable() {
  return {"ReportField",
          {
              Column("ReportFieldID", FieldType::Long, 0, kCounter),
              Column("ReportID", FieldType::Long),
              Column("Sequence", FieldType::Integer),
              Column("Name", FieldType::Text, 50),
              Column("ColWidth", FieldType::Integer),
              Column("ColAlignment", FieldType::Integer),
              Column("ColFormat", FieldType::Text, 50),
              Column("Hidden", FieldType::Boolean),
              Column("Field", FieldType::Text, 50),
          },
          {PrimaryKey("ReportFieldID")}};
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A source file, line by line, that knows where it is when something is wrong.
class Source {
 public:
  explicit Source(std::string path) : path_(std::move(path)), stream_(path_, std::ios::binary) {
    if (!stream_) Fail("the file cannot be read");
  }

  // False at the end of the file.
  bool Next() {
    if (!std::getline(stream_, line_)) return false;
    ++number_;
    if (line_.ends_with('\r')) line_.pop_back();
    return true;
  }
  // Passes over blank lines and comments.
  bool NextContent() {
    while (Next()) {
      const std::string_view content = Trim(line_);
      if (!content.empty() && content.front() != '#') return true;
    }
    return false;
  }
  const std::string& Line() const { return line_; }

  [[noreturn]] void Fail(const std::string& problem) const { throw TemplateError(path_, number_, problem); }

  // Runs a statement made from the current line.
  void Store(engine::Database& database, const std::string& sql) const {
    try {
      database.Execute(sql);
    } catch (const engine::EngineError& error) {
      Fail(error.Description());
    }
  }

  // A whole number of the current line, as its digits.
  std::string Number(std::string_view text) const {
    int number = 0;
    const char* const first = text.data();
    const char* const end = first + text.size();
    const auto [stop, problem] = std::from_chars(first, end, number);
    if (problem != std::errc() || stop != end) Fail(fmt::format("\"{}\" is no whole number", text));
    return std::to_string(number);
  }

 private:
  std::string path_;
  std::ifstream stream_;
  std::string line_;
  int number_ = 0;
};

// The cells of the current line.
std::vector<std::string> Cells(const Source& source) {
  const std::string& line = source.Line();
  std::vector<std::string> cells(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char character = line[i];
    if (quoted && character == '"' && i + 1 < line.size() && line[i + 1] == '"') {
      cells.back() += '"';
      ++i;
    } else if (character == '"') {
      quoted = !quoted;
    } else if (character == ',' && !quoted) {
      cells.emplace_back();
    } else {
      cells.back() += character;
    }
  }
  if (quoted) source.Fail("a double quote is not closed");
  return cells;
}

std::string CellAsLiteral(const Source& source, const Field& field, std::string_view cell) {
  const std::string_view text = Trim(cell);
  if (text.empty()) return "NULL";
  switch (field.Type) {
    case FieldType::Text:
    case FieldType::Memo:
      return common::QuoteSQL(text);
    case FieldType::Boolean:
      if (text != "True" && text != "False") source.Fail(fmt::format("\"{}\" is not True or False", text));
      return std::string(text);
    default:
      return source.Number(text);
  }
}

void LoadTable(engine::Database& database, const TableDef& table, const std::string& folder) {
  database.AppendTableDef(table);

  Source source(folder + "/" + table.Name + ".csv");
  std::vector<std::string> names;
  names.reserve(table.Fields.size());
  for (const Field& field : table.Fields) names.push_back(field.Name);
  if (!source.NextContent() || Cells(source) != names) {
    source.Fail(fmt::format("the fields should be {}", fmt::join(names, ",")));
  }
  while (source.NextContent()) {
    const std::vector<std::string> cells = Cells(source);
    if (cells.size() != names.size()) {
      source.Fail(fmt::format("{} cells stand where {} belong", cells.size(), names.size()));
    }
    std::vector<std::string> literals;
    literals.reserve(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      literals.push_back(CellAsLiteral(source, table.Fields[i], cells[i]));
    }
    source.Store(database, fmt::format("INSERT INTO [{}] ([{}]) VALUES ({})", table.Name,
                                       fmt::join(names, "],["), fmt::join(literals, ",")));
  }
}

std::vector<std::string_view> SplitColumn(std::string_view line) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t bar = line.find('|');
    parts.push_back(Trim(line.substr(0, bar)));
    if (bar == std::string_view::npos) return parts;
    line.remove_prefix(bar + 1);
  }
}

// The alignment codes of the grid that shows the report.
std::optional<int> AlignmentCode(std::string_view word) {
  if (word == "left") return 0;
  if (word == "centre") return 4;
  if (word == "right") return 6;
  return std::nullopt;
}

void StoreColumn(engine::Database& database, const Source& source, int report, int sequence) {
  const std::vector<std::string_view> parts = SplitColumn(source.Line());
  const bool hidden = parts.size() == 6 && parts[5] == "hidden";
  if (parts.size() != 5 && !hidden) {
    source.Fail("a column is: heading | twips | alignment | format | field, and | hidden when it is hidden");
  }
  const std::optional<int> alignment = AlignmentCode(parts[2]);
  if (!alignment) source.Fail(fmt::format("the alignment \"{}\" is not left, centre or right", parts[2]));
  if (parts[0].empty() || parts[4].empty()) source.Fail("a column needs a heading and a field");
  source.Store(
      database,
      fmt::format("INSERT INTO ReportField (ReportID, Sequence, Name, ColWidth, ColAlignment, "
                  "ColFormat, Hidden, Field) VALUES ({},{},{},{},{},{},{},{})",
                  report, sequence, common::QuoteSQL(parts[0]), source.Number(parts[1]), *alignment,
                  common::QuoteSQL(parts[3]), hidden ? "True" : "False", common::QuoteSQL(parts[4])));
}

void LoadReport(engine::Database& database, const std::filesystem::path& path) {
  Source source(path.string());
  const std::string file = path.filename().string();
  const std::string id = source.Number(std::string_view(file).substr(0, file.find('-')));

  constexpr std::string_view kNameLabel = "report:";
  if (!source.NextContent() || !source.Line().starts_with(kNameLabel)) {
    source.Fail("the first line should be \"report:\" and the report's name");
  }
  const std::string name = common::QuoteSQL(Trim(std::string_view(source.Line()).substr(kNameLabel.size())));
  // The query follows below, but its columns need the row to be there.
  source.Store(database,
               fmt::format("INSERT INTO Report (ReportID, Name, Sequence) VALUES ({},{},{})", id, name, id));

  if (!source.NextContent() || Trim(source.Line()) != "columns:") source.Fail("here \"columns:\" belongs");
  int sequence = 0;
  while (source.NextContent() && Trim(source.Line()) != "query:") {
    StoreColumn(database, source, std::stoi(id), ++sequence);
  }
  if (sequence == 0) source.Fail("the report has no columns");

  std::string query;
  while (source.Next()) {
    if (!query.empty()) query += '\n';
    query += source.Line();
  }
  if (query.find_first_not_of(" \t\n") == std::string::npos) source.Fail("the report has no query");
  source.Store(database,
               fmt::format("UPDATE Report SET Query={} WHERE ReportID={}", common::QuoteSQL(query), id));
}

}  // namespace

void BuildTemplate(engine::DBEngine& engine, const std::string& sourceFolder, const std::string& path) {
  const std::unique_ptr<engine::Database> database = engine.DefaultWorkspace().CreateDatabase(path);
  engine::UnitOfWork unit(*database);

  LoadTable(*database, SettingsTable(), sourceFolder);
  LoadTable(*database, TemplatePointSystemTable(), sourceFolder);
  LoadTable(*database, BonusTable(), sourceFolder);
  LoadTable(*database, RankCriteriaTable(), sourceFolder);

  database->AppendTableDef(ReportTable());
  database->AppendTableDef(ReportFieldTable());
  database->AppendRelation(CascadingRelation("ReportFields", "Report", "ReportField", "ReportID"));
  std::vector<std::filesystem::path> reports;
  for (const auto& entry : std::filesystem::directory_iterator(sourceFolder + "/reports")) {
    if (entry.path().extension() == ".report") reports.push_back(entry.path());
  }
  std::sort(reports.begin(), reports.end());
  for (const std::filesystem::path& report : reports) LoadReport(*database, report);
  unit.Commit();
}

}  // namespace scorvane::db
