#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "engine/Collation.h"
#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/LimitGuard.h"
#include "engine/Operators.h"
#include "platform/SystemPath.h"

namespace scorvane::engine {
namespace {

namespace fs = std::filesystem;
using platform::SystemPath;

constexpr int kPatience = 5000;  // milliseconds to wait for another process that writes to a shared file
constexpr std::chrono::milliseconds kPollInterval{20};

constexpr int kLongestValue = 64 << 20;  // bytes; no row or text is longer

// The format's own first bytes, and where it keeps the application id and the version of our tables.
constexpr char kHeader[] = "SQLite format 3";
constexpr std::size_t kApplicationIdPlace = 68;
constexpr std::size_t kVersionPlace = 60;

std::string FullPath(const std::string& path) {
  std::error_code error;
  const fs::path full = fs::absolute(SystemPath(path), error);
  if (error) return path;
  return platform::PathText(full.lexically_normal());
}

// Looks before the store does: it would take any empty file for a new database, and a stranger's for ours.
void CheckHeader(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(SystemPath(path), error);
  if (status.type() == fs::file_type::not_found) throw EngineError(kFileNotFound, path);
  if (!fs::is_regular_file(status)) throw EngineError(kUnrecognizedFormat, path);
  char header[100] = {};
  std::ifstream file(SystemPath(path), std::ios::binary);
  if (!file) throw EngineError(kCannotOpenFile, path);
  file.read(header, sizeof header);
  const auto number = [&header](std::size_t place) {
    std::uint32_t whole = 0;
    for (std::size_t i = 0; i < 4; ++i) whole = whole << 8 | static_cast<unsigned char>(header[place + i]);
    return whole;
  };
  if (file.gcount() != sizeof header || std::memcmp(header, kHeader, sizeof kHeader) != 0 ||
      number(kApplicationIdPlace) != kApplicationId)
    throw EngineError(kUnrecognizedFormat, path);
  if (number(kVersionPlace) > kFormatVersion)
    throw EngineError(kUnrecognizedFormat, path, " A newer version of the program has made it.");
}

// A file from a stranger gets no say: no triggers, views, extensions or functions of its own.
void Harden(sqlite3* connection) {
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, 1);  // a compaction attaches its copy
  sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, kLongestValue);
}

// The store writes a journal beside the file, so the folder counts, too.
bool IsWritableWithFolder(const std::string& path) {
  return platform::IsWritable(path) &&
         platform::IsWritable(platform::PathText(SystemPath(path).parent_path()));
}

// Waits for its turn behind a program that replaces or compacts the file.
std::unique_ptr<platform::FileLock> ShareFile(const std::string& path) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
  for (;;) {
    if (auto lock = platform::FileLock::TryLock(path, platform::FileLock::Mode::Shared)) return lock;
    if (std::chrono::steady_clock::now() >= deadline)
      throw EngineError(kFileInUse, path, platform::LockHolder(path));
    std::this_thread::sleep_for(kPollInterval);
  }
}

// Writes a compact copy to a path that does not exist, and flushes it to the disk.
void CopyInto(sqlite3* connection, const std::string& source, const std::string& target) {
  int code = SQLITE_OK;
  {
    sqlite3_stmt* raw = nullptr;
    code = sqlite3_prepare_v2(connection, "VACUUM INTO ?1", -1, &raw, nullptr);
    const StatementPtr statement(raw);
    const Value path(target);
    if (code == SQLITE_OK) {
      Bind(statement.get(), 1, path);
      code = sqlite3_step(statement.get());
    }
  }
  const bool copied = code == SQLITE_DONE;
  if (copied && platform::FlushFile(target)) return;
  std::error_code error;
  fs::remove(SystemPath(target), error);
  fs::remove(SystemPath(target + "-journal"), error);
  if (copied) throw EngineError(platform::HasRoomBeside(target) ? kDiskError : kDiskFull, target);
  ThrowStoreError(connection, code, source);
}

ConnectionPtr OpenConnection(const std::string& path, int flags) {
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  ConnectionPtr connection(raw);
  if (code != SQLITE_OK) ThrowStoreError(nullptr, code, path);
  sqlite3_extended_result_codes(raw, 1);
  Harden(raw);
  RegisterCollation(raw);
  return connection;
}

}  // namespace

void Database::Impl::Connect(bool create, bool wantReadOnly) {
  // What a stopped program left unfinished is taken back by whoever reads the file next, and only a
  // connection that may write can do that: a reader gets one, too, where the file allows it, and is held to
  // reading.
  const bool mayWrite = !wantReadOnly || IsWritableWithFolder(path);
  const int access = create     ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE
                     : mayWrite ? SQLITE_OPEN_READWRITE
                                : SQLITE_OPEN_READONLY;
  connection = OpenConnection(path, access);
  // The store opens for reading what the disk does not open for writing: then it is the disk, not the file.
  if (!wantReadOnly && sqlite3_db_readonly(connection.get(), "main") == 1)
    throw EngineError(kCannotOpenFile, path);
  readOnly = wantReadOnly;
  sqlite3_busy_timeout(connection.get(), kPatience);
  RegisterFunctions(connection.get(), functions);
  RegisterOperators(connection.get(), functions);
}

void Database::Impl::Configure() {
  Run("PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA "
      "temp_store=MEMORY; "
      "PRAGMA cache_size=-16000; PRAGMA cell_size_check=ON");
  if (readOnly) Run("PRAGMA query_only=ON");
}

// ---- Database

Database::Database(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {
  impl_->workspace->databases_.push_back(this);
}

Database::~Database() {
  auto& databases = impl_->workspace->databases_;
  databases.erase(std::remove(databases.begin(), databases.end(), this), databases.end());
  if (impl_->units > 0) sqlite3_exec(impl_->connection.get(), "COMMIT", nullptr, nullptr, nullptr);
  impl_->ClearCache();
  impl_->connection.reset();  // before the lock, which it stands under
}

// ---- Workspace

Workspace::Workspace() = default;
Workspace::~Workspace() = default;

std::unique_ptr<Database> Workspace::CreateDatabase(const std::string& path) {
  const std::string full = FullPath(path);
  std::error_code error;
  if (fs::exists(SystemPath(full), error)) throw EngineError(kDatabaseExists, full);
  if (!fs::is_directory(SystemPath(full).parent_path(), error)) throw EngineError(kInvalidPath, full);
  auto impl = std::make_unique<Database::Impl>(*this, full);
  try {
    impl->Connect(true, false);
    impl->Configure();
    impl->CreateSystemTables();
  } catch (const EngineError&) {
    // Half a database is none.
    impl.reset();
    fs::remove(SystemPath(full), error);
    fs::remove(SystemPath(full + "-journal"), error);
    throw;
  }
  impl->lock = platform::FileLock::TryLock(full, platform::FileLock::Mode::Shared);
  return std::make_unique<Database>(std::move(impl));
}

std::unique_ptr<Database> Workspace::OpenDatabase(const std::string& path, OpenOptions options) {
  const std::string full = FullPath(path);
  // Closing any handle of a file drops the locks that this process has on it: a file that is open here
  // already is not looked into again.
  Database* const open = FindDatabase(full);
  if (open == nullptr) {
    CheckHeader(full);
  } else if (options.exclusive) {
    throw EngineError(kFileInUse, full);
  }
  if (!options.readOnly && !IsWritableWithFolder(full)) throw EngineError(kCannotOpenFile, full);
  auto impl = std::make_unique<Database::Impl>(*this, full);
  if (open != nullptr) {
    impl->lock = open->impl_->lock;
  } else if (options.exclusive) {
    impl->lock = platform::FileLock::TryLock(full);
    if (!impl->lock) throw EngineError(kFileInUse, full, platform::LockHolder(full));
  } else {
    impl->lock = ShareFile(full);
  }
  impl->Connect(false, options.readOnly);
  {
    // A catalogue that takes long to read was not written by us.
    const LimitGuard guard(impl->connection.get(), kFileTextLimits);
    impl->limits = &guard;
    impl->Configure();
    impl->LoadSchema();
    impl->limits = nullptr;
  }
  impl->CheckCollation();
  impl->dataVersion = impl->DataVersion();
  return std::make_unique<Database>(std::move(impl));
}

Database* Workspace::FindDatabase(const std::string& path) const {
  const std::string full = FullPath(path);
  for (Database* database : databases_) {
    std::error_code error;
    if (database->Name() == full || fs::equivalent(SystemPath(database->Name()), SystemPath(full), error))
      return database;
  }
  return nullptr;
}

// ---- DBEngine

void DBEngine::CompactDatabase(const std::string& from, const std::string& to) {
  const std::string source = FullPath(from);
  const std::string target = FullPath(to);
  CheckHeader(source);
  std::error_code error;
  if (fs::exists(SystemPath(target), error)) throw EngineError(kDatabaseExists, target);
  const ConnectionPtr connection = OpenConnection(source, SQLITE_OPEN_READWRITE);
  CopyInto(connection.get(), source, target);
}

void Database::CopyTo(const std::string& path) {
  const std::string target = FullPath(path);
  std::error_code error;
  if (fs::exists(SystemPath(target), error)) throw EngineError(kDatabaseExists, target);
  // The store counts the copy, too, among what a connection that may only read must not write.
  struct Lifted {
    Database::Impl& impl;
    explicit Lifted(Database::Impl& of) : impl(of) {
      if (impl.readOnly) impl.Run("PRAGMA query_only=OFF");
    }
    Lifted(const Lifted&) = delete;
    Lifted& operator=(const Lifted&) = delete;
    ~Lifted() {
      if (impl.readOnly)
        sqlite3_exec(impl.connection.get(), "PRAGMA query_only=ON", nullptr, nullptr, nullptr);
    }
  };
  const Lifted lifted(*impl_);
  CopyInto(impl_->connection.get(), impl_->path, target);
}

void DBEngine::TakeBackUnfinished(const std::string& path) {
  const std::string full = FullPath(path);
  CheckHeader(full);
  const ConnectionPtr connection = OpenConnection(full, SQLITE_OPEN_READWRITE);
  const int code =
      sqlite3_exec(connection.get(), "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) ThrowStoreError(connection.get(), code, full);
}

}  // namespace scorvane::engine
