#include "engine/Changes.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include "engine/ChangeRecord.h"
#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

bool IsOurs(std::string_view table) {
  return table.starts_with("sv_") || table.starts_with("sqlite_");
}

bool Names(const std::vector<std::string>& list, std::string_view name) {
  return std::any_of(list.begin(), list.end(),
                     [&](const std::string& known) { return SameName(known, name); });
}

// Row keys in runs, which is how rows are added.
class KeyRanges {
 public:
  void Add(std::int64_t key) {
    if (last_ != runs_.end() && key == last_->second + 1) {
      ++last_->second;
      return;
    }
    last_ = runs_.emplace(key, key).first;
  }
  bool Contains(std::int64_t key) const {
    const auto behind = runs_.upper_bound(key);
    return behind != runs_.begin() && key <= std::prev(behind)->second;
  }
  void Remove(std::int64_t key) {
    auto run = std::prev(runs_.upper_bound(key));
    const auto [first, last] = *run;
    runs_.erase(run);
    if (first < key) runs_.emplace(first, key - 1);
    if (key < last) runs_.emplace(key + 1, last);
    last_ = runs_.end();
  }
  // Runs that follow each other without a gap, as later ones may have closed it.
  std::vector<KeyRange> Merged() const {
    std::vector<KeyRange> merged;
    for (const auto& [first, last] : runs_) {
      if (!merged.empty() && merged.back().last + 1 == first) {
        merged.back().last = last;
      } else {
        merged.push_back({first, last});
      }
    }
    return merged;
  }

 private:
  using Runs = std::map<std::int64_t, std::int64_t>;
  Runs runs_;
  Runs::iterator last_ = runs_.end();
};

struct TouchedTable {
  std::string name;
  KeyRanges inserted;
  std::unordered_map<std::int64_t, std::string> old;  // rows as they were, by their key
};

template <typename ColumnValue>
std::string PackRow(int columns, ColumnValue value) {
  std::string packed;
  for (int i = 0; i < columns; ++i) PackValue(packed, value(i));
  return packed;
}

// The rows of a table as they are now.
class RowReader {
 public:
  RowReader(Database::Impl& impl, const std::string& table)
      : statement_(impl.Prepare(fmt::format(
            "SELECT * FROM {} WHERE _rowid_ BETWEEN ?1 AND ?2 ORDER BY _rowid_", StoreName(table)))) {
    for (int i = 0; i < sqlite3_column_count(statement_.get()); ++i)
      columns_.emplace_back(sqlite3_column_name(statement_.get(), i));
  }

  const std::vector<std::string>& Columns() const { return columns_; }

  // Calls `row` with the statement for each.
  template <typename Row>
  void Each(std::int64_t first, std::int64_t last, Row row) {
    sqlite3_stmt* statement = statement_.get();
    sqlite3_bind_int64(statement, 1, first);
    sqlite3_bind_int64(statement, 2, last);
    int code = 0;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) row(statement);
    sqlite3_reset(statement);
    if (code != SQLITE_DONE) ThrowStoreError(sqlite3_db_handle(statement), code, {});
  }

  std::optional<std::string> Packed(std::int64_t key) {
    std::optional<std::string> packed;
    const auto columns = static_cast<int>(columns_.size());
    Each(key, key, [&](sqlite3_stmt* s) {
      packed = PackRow(columns, [s](int i) { return sqlite3_column_value(s, i); });
    });
    return packed;
  }

 private:
  StatementPtr statement_;
  std::vector<std::string> columns_;
};

// The checksum of the rows that a record is about, as they are now.
class Checksum {
 public:
  Checksum(const ChangeRules& rules, const std::string& table, const std::vector<std::string>& columns) {
    std::string field = table + ".";
    const std::size_t prefix = field.size();
    for (const std::string& column : columns) {
      field.replace(prefix, std::string::npos, column);
      counts_.push_back(!Names(rules.derivedFields, field));
    }
  }
  void Add(sqlite3_stmt* row) {
    for (std::size_t i = 0; i < counts_.size(); ++i)
      if (counts_[i]) AddValue(sqlite3_column_value(row, static_cast<int>(i)));
    ++rows_;
  }
  std::uint64_t Value() const { return hash_ ^ rows_; }

 private:
  void AddValue(sqlite3_value* value) {
    const int type = sqlite3_value_type(value);
    Mix(static_cast<std::uint64_t>(type));
    if (type == SQLITE_INTEGER) {
      Mix(static_cast<std::uint64_t>(sqlite3_value_int64(value)));
    } else if (type == SQLITE_FLOAT) {
      const double number = sqlite3_value_double(value);
      std::uint64_t bits = 0;
      std::memcpy(&bits, &number, sizeof bits);
      Mix(bits);
    } else if (type != SQLITE_NULL) {
      const auto* bytes = static_cast<const unsigned char*>(sqlite3_value_blob(value));
      auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
      Mix(size);
      for (; size >= 8; size -= 8, bytes += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        Mix(word);
      }
      std::uint64_t word = 0;
      if (size > 0) std::memcpy(&word, bytes, size);
      Mix(word);
    }
  }
  void Mix(std::uint64_t word) {
    hash_ = (hash_ ^ word) * 0x9E3779B97F4A7C15U;
    hash_ ^= hash_ >> 29U;
  }

  std::vector<bool> counts_;
  std::uint64_t hash_ = 0x5343524FU;
  std::uint64_t rows_ = 0;
};

bool IsChecked(const ChangeRules& rules, const std::string& table, std::int64_t key) {
  return std::none_of(rules.uncheckedRows.begin(), rules.uncheckedRows.end(),
                      [&](const auto& row) { return row.second == key && SameName(row.first, table); });
}

std::uint64_t ChecksumOf(RowReader& rows, const ChangeRules& rules, const TableRecord& table) {
  Checksum sum(rules, table.name, rows.Columns());
  for (const KeyRange& range : table.inserted)
    rows.Each(range.first, range.last, [&](sqlite3_stmt* row) { sum.Add(row); });
  for (const OldRow& old : table.old) {
    if (old.existsNow && IsChecked(rules, table.name, old.key))
      rows.Each(old.key, old.key, [&](sqlite3_stmt* row) { sum.Add(row); });
  }
  return sum.Value();
}

}  // namespace

// ---- recording

class ChangeRecorder::State {
 public:
  State(Database::Impl& impl, ChangeRules rules) : impl_(impl), rules_(std::move(rules)) {
    // A statement that empties a table, made when nobody was recording, does so without a word.
    impl_.DropDeletes();
    sqlite3_preupdate_hook(impl_.connection.get(), &State::Note, this);
    impl_.recording = true;
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { Stop(); }

  void Stop() {
    if (!impl_.recording || stopped_) return;
    stopped_ = true;
    sqlite3_preupdate_hook(impl_.connection.get(), nullptr, nullptr);
    impl_.recording = false;
  }

  std::string Finish() {
    Stop();
    if (outOfMemory_) throw EngineError(kOutOfMemory);
    std::vector<TableRecord> tables;
    for (const auto& touched : tables_) {
      TableRecord record = Take(*touched);
      if (!record.inserted.empty() || !record.old.empty()) tables.push_back(std::move(record));
    }
    return tables.empty() ? std::string() : PackRecord(tables);
  }

 private:
  static void Note(void* context, sqlite3* connection, int operation, const char*, const char* table,
                   sqlite3_int64 oldKey, sqlite3_int64 newKey) {
    auto* state = static_cast<State*>(context);
    try {
      TouchedTable* touched = state->Find(table);
      if (touched == nullptr) return;
      if (operation == SQLITE_INSERT) {
        Inserted(*touched, newKey);
      } else if (operation == SQLITE_DELETE) {
        Deleted(*touched, connection, oldKey);
      } else if (oldKey != newKey) {
        Deleted(*touched, connection, oldKey);
        Inserted(*touched, newKey);
      } else if (!touched->inserted.Contains(oldKey)) {
        Keep(*touched, connection, oldKey);
      }
    } catch (const std::bad_alloc&) {
      state->outOfMemory_ = true;
    }
  }

  static void Inserted(TouchedTable& table, std::int64_t key) {
    // A row that was deleted has come back, perhaps as another: it has been kept as it was.
    if (!table.old.empty() && table.old.contains(key)) return;
    table.inserted.Add(key);
  }
  static void Deleted(TouchedTable& table, sqlite3* connection, std::int64_t key) {
    if (table.inserted.Contains(key)) {
      table.inserted.Remove(key);
    } else {
      Keep(table, connection, key);
    }
  }
  static void Keep(TouchedTable& table, sqlite3* connection, std::int64_t key) {
    const auto [row, added] = table.old.try_emplace(key);
    if (!added) return;
    row->second = PackRow(sqlite3_preupdate_count(connection), [connection](int i) {
      sqlite3_value* value = nullptr;
      sqlite3_preupdate_old(connection, i, &value);
      return value;
    });
  }

  TouchedTable* Find(const char* name) {
    if (last_ != nullptr && last_->name == name) return last_;
    if (IsOurs(name)) return nullptr;
    for (const auto& table : tables_)
      if (table->name == name) return last_ = table.get();
    tables_.push_back(std::make_unique<TouchedTable>());
    tables_.back()->name = name;
    return last_ = tables_.back().get();
  }

  TableRecord Take(const TouchedTable& touched) {
    TableRecord record;
    record.name = touched.name;
    record.inserted = touched.inserted.Merged();
    RowReader rows(impl_, touched.name);
    record.columns = rows.Columns();
    for (const auto& [key, was] : touched.old) {
      const std::optional<std::string> is = rows.Packed(key);
      if (is && *is == was) continue;
      record.old.push_back({key, is.has_value(), was});
    }
    std::sort(record.old.begin(), record.old.end(),
              [](const OldRow& a, const OldRow& b) { return a.key < b.key; });
    record.checked = !Names(rules_.uncheckedTables, touched.name);
    if (record.checked) record.checksum = ChecksumOf(rows, rules_, record);
    return record;
  }

  Database::Impl& impl_;
  const ChangeRules rules_;
  std::vector<std::unique_ptr<TouchedTable>> tables_;
  TouchedTable* last_ = nullptr;
  bool outOfMemory_ = false;
  bool stopped_ = false;
};

ChangeRecorder::ChangeRecorder(Database& database, ChangeRules rules)
    : state_(std::make_unique<State>(*database.impl_, std::move(rules))) {}

ChangeRecorder::~ChangeRecorder() = default;

std::string ChangeRecorder::Finish() {
  return state_->Finish();
}

bool ChangeRecorder::IsRecording(const Database& database) {
  return database.impl_->recording;
}

// ---- applying

namespace {

void Done(Database::Impl& impl, const StatementPtr& statement) {
  const int code = sqlite3_step(statement.get());
  sqlite3_reset(statement.get());
  if (code == SQLITE_CONSTRAINT || (code & 0xFF) == SQLITE_CONSTRAINT) throw EngineError(kDataChanged);
  if (code != SQLITE_DONE) ThrowStoreError(impl.connection.get(), code, impl.path);
}

// Puts the rows of one table back.
class Restorer {
 public:
  Restorer(Database::Impl& impl, const ChangeRules& rules, const TableRecord& table)
      : impl_(impl), table_(table), rules_(rules), name_(StoreName(table.name)) {}

  void DeleteInserted() {
    const StatementPtr remove =
        impl_.Prepare(fmt::format("DELETE FROM {} WHERE _rowid_ BETWEEN ?1 AND ?2", name_));
    for (const KeyRange& range : table_.inserted) {
      sqlite3_bind_int64(remove.get(), 1, range.first);
      sqlite3_bind_int64(remove.get(), 2, range.last);
      Done(impl_, remove);
    }
  }

  void PutBack() {
    std::string sets;
    std::string names;
    std::string places;
    for (std::size_t i = 0; i < table_.columns.size(); ++i) {
      const std::string column = StoreName(table_.columns[i]);
      if (!Names(rules_.derivedFields, table_.name + "." + table_.columns[i]))
        sets += fmt::format("{}{} = ?{}", sets.empty() ? "" : ", ", column, i + 2);
      names += ", " + column;
      places += fmt::format(", ?{}", i + 2);
    }
    // A table of one whole-number key calls its key by two names; both hold the same.
    const StatementPtr insert =
        impl_.Prepare(fmt::format("INSERT INTO {} (_rowid_{}) VALUES (?1{})", name_, names, places));
    const StatementPtr update =
        impl_.Prepare(fmt::format("UPDATE {} SET {} WHERE _rowid_ = ?1", name_, sets));
    for (const OldRow& row : table_.old) {
      const StatementPtr& statement = row.existsNow ? update : insert;
      sqlite3_bind_int64(statement.get(), 1, row.key);
      BindPacked(statement.get(), 2, row.values);
      if (!row.existsNow && (!table_.checked || !IsChecked(rules_, table_.name, row.key))) RemoveAny(row.key);
      Done(impl_, statement);
    }
  }

 private:
  // Where nothing is checked, another row may lie in the old one's place.
  void RemoveAny(std::int64_t key) {
    const StatementPtr remove = impl_.Prepare(fmt::format("DELETE FROM {} WHERE _rowid_ = ?1", name_));
    sqlite3_bind_int64(remove.get(), 1, key);
    Done(impl_, remove);
  }

  Database::Impl& impl_;
  const TableRecord& table_;
  const ChangeRules& rules_;
  const std::string name_;
};

}  // namespace

ChangeTransaction::ChangeTransaction(Database& database, ChangeRules rules)
    : database_(database), rules_(std::move(rules)) {
  Database::Impl& impl = *database_.impl_;
  impl.NeedWritable();
  if (impl.units > 0) throw EngineError(kInvalidOperation);
  // Rows go back one by one; whether all of them fit together is looked at when they are there.
  impl.Run("PRAGMA foreign_keys=OFF");
  try {
    unit_ = std::make_unique<UnitOfWork>(database_);
  } catch (...) {
    impl.Run("PRAGMA foreign_keys=ON");
    throw;
  }
}

ChangeTransaction::~ChangeTransaction() {
  if (unit_) unit_->TakeBack();
  unit_.reset();
  sqlite3_exec(database_.impl_->connection.get(), "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
}

std::string ChangeTransaction::Apply(std::string_view record) {
  Database::Impl& impl = *database_.impl_;
  const std::vector<TableRecord> tables = UnpackRecord(record);
  for (const TableRecord& table : tables) {
    if (impl.FindTable(table.name) == nullptr) throw EngineError(kDataChanged);
    RowReader rows(impl, table.name);
    if (rows.Columns() != table.columns) throw EngineError(kDataChanged);
    if (table.checked && ChecksumOf(rows, rules_, table) != table.checksum) throw EngineError(kDataChanged);
  }
  ChangeRecorder recorder(database_, rules_);
  for (const TableRecord& table : tables) Restorer(impl, rules_, table).DeleteInserted();
  for (const TableRecord& table : tables) Restorer(impl, rules_, table).PutBack();
  std::string inverse = recorder.Finish();
  CheckRelations(CountChanges(record));
  return inverse;
}

void ChangeTransaction::CheckRelations(const std::vector<TableChange>& changed) {
  Database::Impl& impl = *database_.impl_;
  const auto touched = [&](const std::string& table) {
    return std::any_of(changed.begin(), changed.end(),
                       [&](const TableChange& change) { return SameName(change.table, table); });
  };
  for (const Relation& relation : impl.relations) {
    if (!touched(relation.Table) && !touched(relation.ForeignTable)) continue;
    const StatementPtr check =
        impl.Prepare(fmt::format("PRAGMA foreign_key_check({})", StoreName(relation.ForeignTable)));
    if (sqlite3_step(check.get()) == SQLITE_ROW) throw EngineError(kDataChanged);
  }
}

void ChangeTransaction::Commit() {
  unit_->Commit();
  unit_.reset();
}

}  // namespace scorvane::engine
