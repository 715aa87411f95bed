#include "forms/SeasonMenu.h"

#include <fmt/format.h>

#include <QDir>
#include <QStatusBar>
#include <QStyle>
#include <algorithm>
#include <optional>
#include <utility>

#include "app/Backup.h"
#include "app/Commands.h"
#include "common/Paths.h"
#include "forms/SavePage.h"
#include "forms/frmHistory.h"
#include "forms/frmPenalties.h"
#include "forms/frmPlayoff.h"
#include "forms/frmPublish.h"
#include "forms/frmSeasonView.h"
#include "forms/frmTeams.h"
#include "forms/frmWhatIf.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Icons.h"
#include "forms/widgets/Text.h"
#include "history/History.h"

namespace scorvane::forms {
namespace {

constexpr const char* kLeagueFilter = "Scorvane File (*.lgx)|*.lgx|All Files (*.*)|*.*";
constexpr int kMenuCharacters = 60;
constexpr int kLineCharacters = 80;

// "&Undo Merge A && B into C": an ampersand in a name is no mnemonic.
QString EntryText(const QString& verb, const std::optional<engine::LoggedChange>& change) {
  if (!change) return verb;
  return verb + QLatin1Char(' ') +
         Shortened(change->label, kMenuCharacters).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

}  // namespace

template <typename Form>
void SeasonMenu::ShowForm() {
  Guarded(context_.ui, [&] { Form(context_, window_).exec(); });
  AfterCommand();
}

SeasonMenu::SeasonMenu(FormContext& context, QMainWindow* window, QMenu* menu, Host host)
    : QObject(window), context_(context), window_(window), host_(std::move(host)) {
  int index = 0;
  const auto add = [&](const char* icon, const QString& caption, const QList<QKeySequence>& keys,
                       auto command) {
    QAction* item = menu->addAction(CommandIcon(icon), caption);
    item->setObjectName(QStringLiteral("mnuSeason_%1").arg(index++));
    item->setShortcuts(keys);
    connect(item, &QAction::triggered, this, command);
    return item;
  };
  undo_ = add("edit-undo", tr("&Undo"), {Qt::CTRL | Qt::Key_Z}, [this] { Step(Direction::Undo); });
  redo_ = add("edit-redo", tr("&Redo"), {Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::SHIFT | Qt::Key_Z},
              [this] { Step(Direction::Redo); });
  history_ = add("document-open-recent", tr("&History..."), {}, &SeasonMenu::ShowHistory);
  menu->addSeparator();
  ++index;
  backUp_ = add("document-save-as", tr("&Back Up..."), {}, &SeasonMenu::BackUp);
  add("document-revert", tr("R&estore..."), {}, &SeasonMenu::Restore);
  menu->addSeparator();
  index = 10;
  penalties_ = add("dialog-warning", tr("&Penalties..."), {}, &SeasonMenu::ShowForm<frmPenalties>);
  teams_ = add("system-users", tr("&Teams..."), {}, &SeasonMenu::ShowForm<frmTeams>);
  playoff_ = add("games-highscores", tr("P&layoff..."), {}, &SeasonMenu::ShowForm<frmPlayoff>);
  whatIf_ = add("dialog-question", tr("&What If..."), {}, &SeasonMenu::ShowForm<frmWhatIf>);
  menu->addSeparator();
  index = 15;
  season_ = add("office-chart-line", tr("Season &View"), {Qt::Key_F5}, &SeasonMenu::ShowSeason);
  publish_ = add("applications-internet", tr("Publish &Site..."), {}, &SeasonMenu::ShowForm<frmPublish>);
  spreadsheet_ =
      add("x-office-spreadsheet", tr("Season &as Spreadsheet..."), {}, &SeasonMenu::SaveSpreadsheet);
  // Another program may have changed the league since.
  connect(menu, &QMenu::aboutToShow, this, &SeasonMenu::UpdateItems);

  lblStatus_ = new QLabel(window);
  lblStatus_->setObjectName(QStringLiteral("lblStatus"));
  lblStatus_->setTextFormat(Qt::PlainText);
  lblStatus_->setIndent(window->style()->pixelMetric(QStyle::PM_LayoutLeftMargin) - 2);  // below the buttons
  lblStatus_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  window->statusBar()->addWidget(lblStatus_, 1);
  UpdateItems();
}

SeasonMenu::~SeasonMenu() = default;

void SeasonMenu::Say(const QString& text) {
  QStringList lines = {text, Q(context_.session.TakeBackupFault())};
  lines.removeAll(QString());
  lblStatus_->setText(lines.join(QLatin1Char('\n')));
  lblStatus_->setToolTip(ToolTipText(lblStatus_->text()));
}

void SeasonMenu::UpdateItems() {
  const bool open = context_.session.IsOpen();
  std::optional<engine::LoggedChange> undo;
  std::optional<engine::LoggedChange> redo;
  if (open) {
    Guarded(context_.ui, [&] {
      // Newest first: what is undone stands before what is done.
      for (engine::LoggedChange& change : history::List(context_.session.League())) {
        const bool undone = change.undone;
        (undone ? redo : undo) = std::move(change);
        if (!undone) break;
      }
    });
  }
  nextUndo_ = undo ? undo->id : 0;
  nextRedo_ = redo ? redo->id : 0;
  undo_->setText(EntryText(tr("&Undo"), undo));
  redo_->setText(EntryText(tr("&Redo"), redo));
  undo_->setEnabled(undo.has_value());
  redo_->setEnabled(redo.has_value());
  history_->setEnabled(open);
  backUp_->setEnabled(open);
  bool races = false;
  if (open) Guarded(context_.ui, [&] { races = app::CountRaces(context_.session.League()) > 0; });
  for (QAction* item : {teams_, playoff_, season_, publish_}) item->setEnabled(open);
  for (QAction* item : {penalties_, whatIf_, spreadsheet_}) item->setEnabled(races);
}

void SeasonMenu::LeagueChanged() {
  UpdateItems();
  told_ = nextUndo_;
  context_.session.TakeBackupFault();  // of the league that was open before
  Say({});
  RefreshSeason();
}

void SeasonMenu::OthersChanged() {
  UpdateItems();
  told_ = nextUndo_;
  Say(tr("Another program has changed this league; what it holds now is shown."));
  RefreshSeason();
}

void SeasonMenu::AfterCommand() {
  UpdateItems();
  RefreshSeason();
  const std::int64_t before = std::exchange(told_, nextUndo_);
  if (nextUndo_ <= before) return;
  Guarded(context_.ui, [&] {
    const auto changes = history::List(context_.session.League());
    const auto isNew = [before](const engine::LoggedChange& change) {
      return !change.undone && change.id > before;
    };
    const auto count = std::count_if(changes.begin(), changes.end(), isNew);
    const auto last = std::find_if(changes.begin(), changes.end(), isNew);
    if (last == changes.end()) return;
    const QString what = Shortened(DoneText(last->label), kLineCharacters);
    Say(count == 1 ? tr("%1. Ctrl+Z takes it back.").arg(what)
                   : tr("%1, the last of %2 changes. Ctrl+Z takes it back.").arg(what).arg(count));
  });
}

void SeasonMenu::Step(Direction direction) {
  const bool undo = direction == Direction::Undo;
  Guarded(context_.ui, [&] {
    const std::int64_t named = undo ? nextUndo_ : nextRedo_;
    UpdateItems();
    if (named != (undo ? nextUndo_ : nextRedo_)) {
      host_.show();
      OthersChanged();
      return;
    }
    const auto label = TakeStep(context_, direction);
    host_.show();
    UpdateItems();
    RefreshSeason();
    told_ = nextUndo_;
    if (!label) return;
    const QString what = Shortened(*label, kLineCharacters);
    Say(undo ? tr("Undone: %1. Ctrl+Y does it again.").arg(what)
             : tr("Done again: %1. Ctrl+Z takes it back.").arg(what));
  });
}

void SeasonMenu::ShowHistory() {
  Guarded(context_.ui, [&] {
    bool walked = false;
    frmHistory dialog(
        context_,
        [&] {
          walked = true;
          host_.show();
          RefreshSeason();
        },
        window_);
    dialog.exec();
    UpdateItems();
    told_ = nextUndo_;
    if (!walked) return;
    Say(nextRedo_ != 0 ? tr("What was taken back, Ctrl+Y does again, one by one.") : QString());
  });
}

void SeasonMenu::ShowSeason() {
  Guarded(context_.ui, [&] {
    if (view_ == nullptr) {
      // Without a parent it may stand behind the main window, too; it goes with that all the same.
      view_ = std::make_unique<frmSeasonView>(context_);
      view_->setAttribute(Qt::WA_QuitOnClose, false);
    } else {
      view_->Refresh();
    }
    view_->show();
    view_->raise();
    view_->activateWindow();
  });
}

void SeasonMenu::RefreshSeason() {
  if (view_ != nullptr && view_->isVisible()) view_->Refresh();
}

void SeasonMenu::SaveSpreadsheet() {
  Guarded(context_.ui, [&] {
    const std::string path = SaveSeason(context_);
    if (!path.empty()) Say(tr("Wrote the season as %1.").arg(Q(path)));
  });
}

// ---- copies

void SeasonMenu::BackUp() {
  Guarded(context_.ui, [&] {
    const std::string preset =
        app::BackupPath(app::ReadBackupOptions(context_.templateDb), context_.session.League().Name());
    common::FileRequest request;
    request.filter = kLeagueFilter;
    request.title = "Back Up";
    request.folder = common::GetFolder(preset);
    request.name = common::GetFileTitle(preset);
    // Only in a folder that is there can one look around; it goes again when it stays empty.
    const bool made = !QDir(Q(request.folder)).exists() && QDir().mkpath(Q(request.folder));
    const std::string chosen = context_.ui.SaveFile(request);
    if (chosen.empty()) {
      if (made) QDir().rmdir(Q(request.folder));
      return;
    }
    const std::string path = app::WithLeagueExtension(chosen);
    if (context_.engine.DefaultWorkspace().FindDatabase(path) != nullptr) {
      context_.ui.ShowMessage({"A backup does not go in the place of its own league.", "Back Up",
                               common::MessageIcon::Exclamation});
      return;
    }
    const common::Message question{"The file \"" + path + "\" already exists!  Overwrite it?", "File Exists",
                                   common::MessageIcon::None};
    if (common::FileExists(path) && context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes)
      return;
    const WaitCursor wait;
    app::BackUp(context_.engine, context_.session.League(), path);
    Say(tr("Wrote the backup %1.").arg(Q(path)));
  });
}

SeasonMenu::Replacement SeasonMenu::AskWhatToRestore() {
  common::FileRequest backup;
  backup.filter = kLeagueFilter;
  backup.title = "Restore";
  backup.folder = common::JoinPath(app::BackupFolder(app::ReadBackupOptions(context_.templateDb)), "");
  const std::vector<std::string> chosen = context_.ui.OpenFiles(backup);
  if (chosen.empty()) return {};
  std::string path;
  if (context_.session.IsOpen()) {
    path = context_.session.League().Name();
  } else {
    // A league that does not open any more is what backups are for.
    common::FileRequest league;
    league.filter = kLeagueFilter;
    league.title = "Restore As";
    path = context_.ui.SaveFile(league);
    if (path.empty()) return {};
    path = app::WithLeagueExtension(path);
  }
  return {chosen.front(), path};
}

void SeasonMenu::Restore() {
  std::string path;
  std::string from;
  std::string kept;
  const bool asked = Guarded(context_.ui, [&] {
    const Replacement replacement = AskWhatToRestore();
    if (replacement.path.empty()) return;
    if (common::IsSameFile(replacement.from, replacement.path)) {
      context_.ui.ShowMessage(
          {"That is the league itself, and no backup of it.", "Restore", common::MessageIcon::Exclamation});
      return;
    }
    const common::Message question{
        fmt::format(
            "This puts the backup\r\n\"{}\"\r\nin the place of\r\n\"{}\".\r\n{}Do you want to continue?",
            replacement.from, replacement.path,
            common::FileExists(replacement.path) ? "What is there now is backed up first.\r\n" : ""),
        "Restore", common::MessageIcon::Question};
    if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
    from = replacement.from;
    path = replacement.path;
  });
  if (!asked || path.empty()) return;
  const bool wasOpen = context_.session.IsOpen();
  host_.close();
  const bool restored = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    kept = app::Restore(context_.engine, path, from, app::ReadBackupOptions(context_.templateDb));
  });
  if (restored || wasOpen) host_.open(path);
  if (!restored) return;
  context_.ui.ShowMessage(
      {kept.empty() ? "The league was restored."
                    : "The league was restored.  What was there before is kept as\r\n\"" + kept + "\".",
       "Restore", common::MessageIcon::Information});
  Say(tr("Restored from %1.").arg(Q(from)));
}

}  // namespace scorvane::forms
