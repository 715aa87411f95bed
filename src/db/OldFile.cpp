#include "db/OldFile.h"

#include <fmt/format.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "common/Paths.h"
#include "common/SqlText.h"
#include "db/LeftCopy.h"
#include "engine/EngineError.h"
#include "platform/Platform.h"

namespace scorvane::db {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr char kOldHeader[] = "\0\1\0\0Standard Jet DB";  // what such a file begins with
constexpr std::uintmax_t kLargest = 512ULL << 20U;

std::string TextOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

int NumberOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_number_integer() ? found->get<int>() : 0;
}

bool FlagOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_boolean() && found->get<bool>();
}

// The types that a league file can have; others (pictures, replication keys) have no place in one.
std::optional<engine::FieldType> TypeFromCode(int code) {
  switch (code) {
    case 1:
      return engine::FieldType::Boolean;
    case 2:
      return engine::FieldType::Byte;
    case 3:
      return engine::FieldType::Integer;
    case 4:
      return engine::FieldType::Long;
    case 5:  // currency
    case 7:
    case 16:  // decimal
      return engine::FieldType::Double;
    case 6:
      return engine::FieldType::Single;
    case 8:
      return engine::FieldType::Date;
    case 10:
      return engine::FieldType::Text;
    case 12:
      return engine::FieldType::Memo;
    default:
      return std::nullopt;
  }
}

// A value as a literal of the statement. Numbers keep all their digits.
void AppendValue(std::string& sql, const Json& value) {
  if (value.is_boolean()) {
    sql += value.get<bool>() ? "True" : "False";
  } else if (value.is_number_integer()) {
    fmt::format_to(std::back_inserter(sql), "{}", value.get<std::int64_t>());
  } else if (value.is_number()) {
    fmt::format_to(std::back_inserter(sql), "{}", value.get<double>());
  } else if (value.is_string() && !value.get_ref<const std::string&>().empty()) {
    common::AppendLiteral(sql, value.get_ref<const std::string&>());
  } else {
    sql += "Null";
  }
}

// Takes the reader's lines and builds the new file from them.
class Builder {
 public:
  explicit Builder(engine::Database& league) : league_(league) {}

  // False when a line makes no sense; what is wrong stands in `fault` then.
  bool Take(std::string_view line) {
    try {
      const Json value = Json::parse(line);
      if (value.is_array()) {
        AddRow(value);
      } else if (value.contains("fields")) {
        FinishTable();
        AddTable(value);
      } else if (value.contains("relation")) {
        FinishTable();
        AddRelation(value);
      } else if (value.contains("end")) {
        FinishTable();
        complete_ = NumberOf(value, "end") == rows_;
      }
      return true;
    } catch (const Json::exception&) {
      fault = "what was read of it makes no sense, so the file seems to be damaged.";
      return false;
    } catch (const std::exception& e) {
      fault = e.what();
      return false;
    }
  }

  bool Complete() const {
    return complete_ && league_.FindTableDef("Driver") != nullptr &&
           league_.FindTableDef("Stats") != nullptr && league_.FindTableDef("Race") != nullptr;
  }

  // Once all rows are there, so that their order does not matter.
  void AppendRelations() {
    for (engine::Relation& relation : relations_) league_.AppendRelation(std::move(relation));
  }

  std::string fault;

 private:
  void AddTable(const Json& table) {
    engine::TableDef def;
    def.Name = TextOf(table, "table");
    kept_.clear();
    std::string names;
    for (const Json& described : table.at("fields")) {
      const auto type = TypeFromCode(NumberOf(described, "type"));
      kept_.push_back(type.has_value());
      if (!type) continue;
      engine::Field field;
      field.Name = TextOf(described, "name");
      field.Type = *type;
      field.Size = NumberOf(described, "size");
      if (FlagOf(described, "counter")) field.Attributes = engine::kAutoIncrField | engine::kFixedField;
      field.Required = FlagOf(described, "required") && *type != engine::FieldType::Boolean;
      field.AllowZeroLength = FlagOf(described, "zeroLength");
      field.DefaultValue = TextOf(described, "default");
      names += (names.empty() ? "[" : ", [") + field.Name + "]";
      def.Fields.push_back(std::move(field));
    }
    for (const Json& described : table.at("indexes")) {
      engine::Index index;
      index.Name = TextOf(described, "name");
      index.Primary = FlagOf(described, "primary");
      index.Unique = FlagOf(described, "unique") || index.Primary;
      index.Required = FlagOf(described, "required") || index.Primary;
      for (const Json& field : described.at("fields")) {
        if (def.FindField(field.get<std::string>()) != nullptr)
          index.Fields.push_back(field.get<std::string>());
      }
      if (!index.Fields.empty() && def.FindIndex(index.Name) == nullptr)
        def.Indexes.push_back(std::move(index));
    }
    counter_ = NumberOf(table, "counter");
    table_ = def.Name;
    insert_ = "INSERT INTO [" + def.Name + "] (" + names + ") VALUES (";
    league_.AppendTableDef(std::move(def));
  }

  void AddRow(const Json& row) {
    if (row.size() != kept_.size()) throw std::runtime_error("a row does not fit its table");
    std::string sql = insert_;
    bool first = true;
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (!kept_[i]) continue;
      if (!first) sql += ", ";
      first = false;
      AppendValue(sql, row[i]);
    }
    league_.Execute(sql + ")");
    ++rows_;
  }

  // The next key is higher than any that the old file gave out, also to rows that are gone.
  void FinishTable() {
    if (table_.empty()) return;
    const engine::TableDef* table = league_.FindTableDef(table_);
    for (const engine::Field& field : table->Fields)
      if (field.IsCounter() && counter_ > 0) league_.SetCounter(table_, counter_);
    table_.clear();
  }

  void AddRelation(const Json& described) {
    engine::Relation relation;
    relation.Name = TextOf(described, "relation");
    relation.Table = TextOf(described, "table");
    relation.ForeignTable = TextOf(described, "foreignTable");
    relation.FieldName = TextOf(described, "field");
    relation.ForeignName = TextOf(described, "foreignField");
    relation.Attributes = NumberOf(described, "attributes");
    // Those of the system's own tables, and over several fields, a league has none of.
    if (NumberOf(described, "columns") == 1 && league_.FindTableDef(relation.Table) != nullptr &&
        league_.FindTableDef(relation.ForeignTable) != nullptr)
      relations_.push_back(std::move(relation));
  }

  engine::Database& league_;
  std::string table_;
  std::string insert_;
  std::vector<bool> kept_;  // the columns that come over
  std::vector<engine::Relation> relations_;
  std::int32_t counter_ = 0;
  int rows_ = 0;
  bool complete_ = false;
};

std::string WhatHappened(platform::ChildEnd end, const std::string& fault) {
  switch (end) {
    case platform::ChildEnd::NotStarted:
      return "The reader for old league files (scorvane-mdbread) is not there.";
    case platform::ChildEnd::TimedOut:
      return "Reading it took too long, as it does when such a file is damaged.";
    case platform::ChildEnd::Crashed:
      return "It could not be read: the file seems to be damaged.";
    default:
      return fault.empty()
                 ? "It could not be read: it is damaged, protected by a password, or no league file."
                 : "It could not be brought over: " + fault;
  }
}

// The reader writes numbers with a point, whatever the user's separator is.
class DecimalPoint {
 public:
  explicit DecimalPoint(engine::Workspace& workspace)
      : workspace_(workspace), usual_(workspace.DecimalSeparator()) {
    workspace_.SetDecimalSeparator('.');
  }
  DecimalPoint(const DecimalPoint&) = delete;
  DecimalPoint& operator=(const DecimalPoint&) = delete;
  ~DecimalPoint() { workspace_.SetDecimalSeparator(usual_); }

 private:
  engine::Workspace& workspace_;
  const char usual_;
};

// Copies a file to the disk, or leaves nothing.
void CopyWhole(const std::string& from, const std::string& to) {
  std::error_code error;
  const bool copied = fs::copy_file(common::SystemPath(from), common::SystemPath(to), error);
  if (copied && platform::FlushFile(to)) return;
  std::error_code ignored;
  fs::remove(common::SystemPath(to), ignored);
  if (error) throw std::system_error(error, to);
  throw engine::EngineError(engine::kDiskError, to);
}

}  // namespace

bool IsOldFormat(const std::string& path) {
  char header[sizeof kOldHeader - 1] = {};
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  file.read(header, sizeof header);
  return file.gcount() == sizeof header && std::memcmp(header, kOldHeader, sizeof header) == 0;
}

void ConvertOldFile(engine::DBEngine& engine, const std::string& from, const std::string& to,
                    const std::string& reader) {
  const std::string untouched = fmt::format("\"{}\" was not converted and is as it was.\r\n", from);
  std::error_code error;
  if (fs::file_size(common::SystemPath(from), error) > kLargest)
    throw std::runtime_error(untouched + "It is too large to be a league file.");
  if (common::FileExists(to)) throw engine::EngineError(engine::kDatabaseExists, to);
  // It gets its name when it is complete.
  platform::RemoveTemporariesIn(common::GetFolder(to));
  const std::string fresh = platform::TemporaryBeside(to);
  auto league = engine.DefaultWorkspace().CreateDatabase(fresh);
  const DecimalPoint point(engine.DefaultWorkspace());
  try {
    engine::UnitOfWork unit(*league);
    Builder builder(*league);
    const platform::ChildEnd end =
        platform::RunChild(reader, {from}, {}, [&](std::string_view line) { return builder.Take(line); });
    if (end != platform::ChildEnd::Done || !builder.Complete())
      throw std::runtime_error(untouched + WhatHappened(end, builder.fault));
    builder.AppendRelations();
    unit.Commit();
    if (!league->CheckIntegrity().empty())
      throw std::runtime_error(untouched + "Its rows contradict each other.");
    league.reset();
    ReplaceDatabase(engine, fresh, to);
  } catch (...) {
    league.reset();
    RemoveWithJournal(fresh);
    throw;
  }
}

std::string ConvertInPlace(engine::DBEngine& engine, const std::string& path, const std::string& reader) {
  const auto lock = platform::FileLock::TryLock(path);
  if (!lock) throw engine::EngineError(engine::kFileInUse, path, platform::LockHolder(path));
  platform::RemoveTemporariesBeside(path);
  const std::string fresh = platform::TemporaryBeside(path);
  std::error_code error;
  ConvertOldFile(engine, path, fresh, reader);
  try {
    // The copy is complete and on the disk before the original's name is given away.
    std::string kept;
    for (int number = 1; kept.empty(); ++number) {
      const std::string candidate = common::GetFolder(path) + common::GetFileTitle(path, true) +
                                    " (original" + (number > 1 ? fmt::format(" {}", number) : "") + ").lgx";
      if (!fs::exists(common::SystemPath(candidate), error)) kept = candidate;
    }
    CopyWhole(path, kept);
    try {
      ReplaceDatabase(engine, fresh, path);
    } catch (...) {
      fs::remove(common::SystemPath(kept), error);
      throw;
    }
    return kept;
  } catch (...) {
    RemoveWithJournal(fresh);
    throw;
  }
}

std::string OldFileReader() {
  return common::JoinPath(platform::ProgramFolder(), "scorvane-mdbread");
}

}  // namespace scorvane::db
