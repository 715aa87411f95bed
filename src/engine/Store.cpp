#include "engine/Store.h"

#include <sqlite3.h>

#include "engine/EngineError.h"
#include "platform/Platform.h"

namespace scorvane::engine {

void StatementCloser::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}
void ConnectionCloser::operator()(sqlite3* connection) const {
  sqlite3_close(connection);
}

void ThrowStoreError(sqlite3* connection, int code, const std::string& path) {
  // A full disk shows itself in many ways: no room for a journal's name, or none when what was taken is to be
  // kept.
  const bool failed = (code & 0xFF) == SQLITE_IOERR || (code & 0xFF) == SQLITE_CANTOPEN;
  if (failed && connection != nullptr && platform::IsDiskFull(sqlite3_system_errno(connection)))
    throw EngineError(kDiskFull);
  if (failed && !path.empty() && !platform::HasRoomBeside(path)) throw EngineError(kDiskFull);
  switch (code & 0xFF) {
    case SQLITE_FULL:
      throw EngineError(kDiskFull);
    case SQLITE_READONLY:
      throw EngineError(kReadOnly);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      throw EngineError(kFileInUse, path, platform::LockHolder(path));
    case SQLITE_NOMEM:
      throw EngineError(kOutOfMemory);
    case SQLITE_NOTADB:
      throw EngineError(kUnrecognizedFormat, path);
    case SQLITE_CORRUPT:
      throw EngineError(kDatabaseDamaged, path);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      throw EngineError(kCannotOpenFile, path);
    case SQLITE_IOERR:
      throw EngineError(kDiskError, path);
    case SQLITE_TOOBIG:
      throw EngineError(kTooComplex, "a text or the statement is too long");
    default:
      throw EngineError(kTooComplex,
                        connection == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(connection));
  }
}

void Bind(sqlite3_stmt* statement, int index, const Value& value) {
  switch (value.GetType()) {
    case Value::Type::Null:
      sqlite3_bind_null(statement, index);
      break;
    case Value::Type::Boolean:
      sqlite3_bind_int(statement, index, value.ToBoolean() ? -1 : 0);
      break;
    case Value::Type::Long:
      sqlite3_bind_int(statement, index, value.ToLong());
      break;
    case Value::Type::Single:
    case Value::Type::Double:
    case Value::Type::Date:
      sqlite3_bind_double(statement, index, value.ToDouble());
      break;
    case Value::Type::Text:
      sqlite3_bind_text(statement, index, value.Text().data(), static_cast<int>(value.Text().size()),
                        SQLITE_STATIC);
      break;
  }
}

}  // namespace scorvane::engine
