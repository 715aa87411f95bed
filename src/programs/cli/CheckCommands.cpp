// Commands for files that have been through something: conversion, and a look over a league.
#include <fmt/format.h>

#include <filesystem>

#include "common/Paths.h"
#include "db/LeagueCheck.h"
#include "db/OldFile.h"
#include "engine/EngineError.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"

namespace scorvane::cli {

void Convert(const CommonOptions& common, const std::string& from, const std::string& to) {
  Context context(common);
  if (!common::FileExists(from)) throw CommandError(fmt::format("\"{}\" does not exist!", from));
  if (!db::IsOldFormat(from))
    throw CommandError(fmt::format("\"{}\" is no database file of the old format.", from));
  if (common::FileExists(to)) throw CommandError(fmt::format("\"{}\" already exists!", to));
  db::ConvertOldFile(context.engine, from, to, db::OldFileReader());
  try {
    // Opened once, it is brought up to date.
    Context opened(common, to);
    opened.Session().TellReplacedRules();
  } catch (...) {
    std::error_code error;
    std::filesystem::remove(common::SystemPath(to), error);
    throw;
  }
  fmt::print("Converted {} to {}.\n", from, to);
}

void Check(const CommonOptions& common, const std::string& path) {
  Context context(common);
  if (!common::FileExists(path)) throw CommandError(fmt::format("\"{}\" does not exist!", path));
  if (db::IsOldFormat(path))
    throw CommandError(fmt::format("\"{}\" is of the old database format; `convert` brings it over.", path));
  engine::OpenOptions readOnly;
  readOnly.readOnly = true;
  const auto league = context.engine.DefaultWorkspace().OpenDatabase(path, readOnly);
  const std::vector<std::string> faults = db::CheckLeague(*league, context.Template());
  OutputTable table;
  table.columns = {{"Fault"}};
  for (const std::string& fault : faults) table.rows.push_back({engine::Value(fault)});
  if (common.format != OutputFormat::Table || !faults.empty()) Print(table, common.format, common.decimal);
  if (!faults.empty()) throw CommandError(fmt::format("{} is not in order.", path));
  if (common.format == OutputFormat::Table) fmt::print("{} is in order.\n", path);
}

}  // namespace scorvane::cli
