// Commands that go back and forth in what was done to a league, and keep copies of it.
#include <fmt/format.h>

#include "app/Backup.h"
#include "app/Commands.h"
#include "common/Paths.h"
#include "history/History.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"

namespace scorvane::cli {
namespace {

template <typename Step>
void Walk(const CommonOptions& common, const std::string& path, int count, const char* did,
          const char* nothing, Step step) {
  Context context(common, path);
  for (int i = 0; i < count; ++i) {
    const std::optional<std::string> label = step(context.Session());
    if (!label) {
      if (i == 0) throw CommandError(nothing);
      context.Say("There is no more.");
      return;
    }
    context.Say(fmt::format("{}: {}.", did, *label));
  }
}

}  // namespace

void History(const CommonOptions& common, const std::string& path, bool clear) {
  Context context(common, path,
                  clear ? app::LeagueSession::Use::WithoutImport : app::LeagueSession::Use::Looking);
  if (clear) {
    const std::size_t changes = history::List(context.League()).size();
    history::Clear(context.League());
    context.Say(fmt::format("Forgot {}.", Plural(changes, "change")));
    return;
  }
  OutputTable table;
  table.columns = {{"ID", true}, {"Time"}, {"Change"}, {"Touched"}, {"State"}};
  for (const engine::LoggedChange& change : history::List(context.League())) {
    table.rows.push_back({engine::Value(static_cast<std::int32_t>(change.id)),
                          engine::Value(history::TimeText(change)), engine::Value(change.label),
                          engine::Value(history::Summary(change)),
                          engine::Value(change.undone ? "undone" : "")});
  }
  Print(table, common.format, common.decimal);
}

void Undo(const CommonOptions& common, const std::string& path, int count) {
  Walk(common, path, count, "Undone", "There is nothing to undo.",
       [](app::LeagueSession& session) { return app::Undo(session); });
}

void Redo(const CommonOptions& common, const std::string& path, int count) {
  Walk(common, path, count, "Done again", "There is nothing to redo.",
       [](app::LeagueSession& session) { return app::Redo(session); });
}

void Backup(const CommonOptions& common, const std::string& path, const std::string& file) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  const std::string to =
      file.empty() ? app::BackupPath(app::ReadBackupOptions(context.Template()), context.League().Name())
                   : file;
  if (context.engine.DefaultWorkspace().FindDatabase(to) != nullptr)
    throw CommandError("A backup does not go in the place of its own league.");
  if (!file.empty() && common::FileExists(to)) throw CommandError(fmt::format("\"{}\" already exists!", to));
  app::BackUp(context.engine, context.League(), to);
  context.Say(fmt::format("Wrote {}.", to));
}

void Restore(const CommonOptions& common, const std::string& path, const std::string& file, bool yes) {
  Context context(common);
  if (!common::FileExists(file)) throw CommandError(fmt::format("\"{}\" does not exist!", file));
  NeedConsent(
      context, yes,
      fmt::format("This will put the backup \"{}\" in the place of \"{}\". What is there will be backed up "
                  "first. Do you want to continue?",
                  file, path));
  const std::string kept =
      app::Restore(context.engine, path, file, app::ReadBackupOptions(context.Template()));
  context.Say(fmt::format("Restored {} from {}.", path, file));
  if (!kept.empty()) context.Say(fmt::format("What was there is kept as {}.", kept));
}

}  // namespace scorvane::cli
