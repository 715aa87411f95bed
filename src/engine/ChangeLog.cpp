// The changes that a file remembers, in a table that TableDefs does not show.
#include <sqlite3.h>

#include "engine/ChangeRecord.h"
#include "engine/Changes.h"
#include "engine/DatabaseImpl.h"

namespace scorvane::engine {
namespace {

void Done(Database::Impl& impl, const StatementPtr& statement) {
  const int code = sqlite3_step(statement.get());
  sqlite3_reset(statement.get());
  if (code != SQLITE_DONE) ThrowStoreError(impl.connection.get(), code, impl.path);
}

std::string_view Blob(sqlite3_stmt* row, int column) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(row, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
  return bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
}

}  // namespace

std::vector<TableChange> CountChanges(std::string_view record) {
  std::vector<TableChange> counts;
  for (const TableRecord& table : UnpackRecord(record)) {
    TableChange count;
    count.table = table.name;
    for (const KeyRange& range : table.inserted) count.inserted += range.last - range.first + 1;
    for (const OldRow& row : table.old) ++(row.existsNow ? count.updated : count.deleted);
    counts.push_back(std::move(count));
  }
  return counts;
}

bool ChangeLog::Exists() const {
  const StatementPtr find =
      database_.impl_->Prepare("SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'sv_history'");
  return sqlite3_step(find.get()) == SQLITE_ROW;
}

std::vector<LoggedChange> ChangeLog::List() const {
  std::vector<LoggedChange> changes;
  if (!Exists()) return changes;
  Database::Impl& impl = *database_.impl_;
  const StatementPtr read =
      impl.Prepare("SELECT id, made, label, undone, record FROM sv_history ORDER BY id");
  int code = 0;
  while ((code = sqlite3_step(read.get())) == SQLITE_ROW) {
    LoggedChange change;
    change.id = sqlite3_column_int64(read.get(), 0);
    change.time = sqlite3_column_int64(read.get(), 1);
    change.label = Blob(read.get(), 2);
    change.undone = sqlite3_column_int(read.get(), 3) != 0;
    const std::string_view record = Blob(read.get(), 4);
    change.bytes = static_cast<std::int64_t>(record.size());
    change.counts = CountChanges(record);
    changes.push_back(std::move(change));
  }
  if (code != SQLITE_DONE) ThrowStoreError(impl.connection.get(), code, impl.path);
  return changes;
}

void ChangeLog::Add(std::string_view label, std::int64_t time, std::string_view record,
                    std::int64_t mostBytes, int mostChanges) {
  Database::Impl& impl = *database_.impl_;
  impl.Run(
      "CREATE TABLE IF NOT EXISTS sv_history (id INTEGER PRIMARY KEY AUTOINCREMENT, made INTEGER NOT NULL, "
      "label TEXT NOT NULL, undone INTEGER NOT NULL, record BLOB NOT NULL)");
  impl.Run("DELETE FROM sv_history WHERE undone <> 0");
  const StatementPtr insert =
      impl.Prepare("INSERT INTO sv_history (made, label, undone, record) VALUES (?1, ?2, 0, ?3)");
  sqlite3_bind_int64(insert.get(), 1, time);
  sqlite3_bind_text(insert.get(), 2, label.data(), static_cast<int>(label.size()), SQLITE_STATIC);
  sqlite3_bind_blob(insert.get(), 3, record.data(), static_cast<int>(record.size()), SQLITE_STATIC);
  Done(impl, insert);
  // The newest stays, however large it is.
  const StatementPtr prune = impl.Prepare(
      "DELETE FROM sv_history WHERE id IN (SELECT id FROM (SELECT id, sum(length(record)) OVER newer AS "
      "bytes, "
      "count(*) OVER newer AS place FROM sv_history WINDOW newer AS (ORDER BY id DESC)) "
      "WHERE place > 1 AND (bytes > ?1 OR place > ?2))");
  sqlite3_bind_int64(prune.get(), 1, mostBytes);
  sqlite3_bind_int(prune.get(), 2, mostChanges);
  Done(impl, prune);
}

std::string ChangeLog::Record(std::int64_t id) const {
  const StatementPtr read = database_.impl_->Prepare("SELECT record FROM sv_history WHERE id = ?1");
  sqlite3_bind_int64(read.get(), 1, id);
  return sqlite3_step(read.get()) == SQLITE_ROW ? std::string(Blob(read.get(), 0)) : std::string();
}

void ChangeLog::SetUndone(std::int64_t id, bool undone, std::string_view record) {
  Database::Impl& impl = *database_.impl_;
  const StatementPtr update = impl.Prepare("UPDATE sv_history SET undone = ?2, record = ?3 WHERE id = ?1");
  sqlite3_bind_int64(update.get(), 1, id);
  sqlite3_bind_int(update.get(), 2, undone ? 1 : 0);
  sqlite3_bind_blob(update.get(), 3, record.data(), static_cast<int>(record.size()), SQLITE_STATIC);
  Done(impl, update);
}

void ChangeLog::Clear() {
  if (!Exists()) return;
  database_.impl_->NeedWritable();
  // Nothing of what was there stays in the file, not even in pages that are free.
  database_.impl_->Run("PRAGMA secure_delete=ON");
  database_.impl_->Run("DROP TABLE sv_history");
  database_.impl_->Run("PRAGMA secure_delete=OFF");
}

}  // namespace scorvane::engine
