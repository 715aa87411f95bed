// What the main window's commands do.
#include <QTimer>
#include <utility>

#include "app/Commands.h"
#include "common/Paths.h"
#include "forms/Help.h"
#include "forms/SavePage.h"
#include "forms/WatchBar.h"
#include "forms/frmAddRaces.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditRace.h"
#include "forms/frmExport.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmOptions.h"
#include "forms/frmPointSystem.h"
#include "forms/frmRaces.h"
#include "forms/frmSplash.h"
#include "forms/frmStats.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {

void frmRaces::NewLeagueFile() {
  Guarded(context_.ui, [&] {
    frmLGXProperties dialog(context_, this);
    dialog.NewDialog(true);
    dialog.setWindowTitle(tr("New Scorvane File"));
    dialog.exec();
    if (!context_.session.IsOpen()) ShowNoRaces();
    if (dialog.Created()) OpenLeagueFile(dialog.FileName());
  });
}

void frmRaces::OpenLeagueFileDialog() {
  common::FileRequest request;
  request.filter = "Scorvane File (*.lgx)|*.lgx";
  request.folder = platform::ApplicationFolder();
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (!chosen.empty()) OpenLeagueFile(chosen.front());
}

void frmRaces::ShowProperties() {
  Guarded(context_.ui, [&] {
    frmLGXProperties dialog(context_, this);
    dialog.NewDialog(false);
    dialog.setWindowTitle(tr("Properties - ") +
                          Q(common::GetFileTitle(context_.session.League().Name(), true)));
    dialog.exec();
  });
}

// With what was dropped on the window, if anything was, in the list.
void frmRaces::Import() {
  const std::vector<std::string> dropped = std::exchange(dropped_, {});
  ImportBy([&](frmAddRaces& dialog) {
    if (!dropped.empty()) QTimer::singleShot(0, &dialog, [&] { dialog.AddPaths(dropped); });
    dialog.exec();
  });
}

void frmRaces::ImportOffered(const std::vector<std::string>& paths) {
  // The dialog comes up where something keeps the files from being imported as they are.
  ImportBy([&](frmAddRaces& dialog) {
    if (!dialog.ImportPaths(paths)) dialog.exec();
  });
  season_->AfterCommand();
}

void frmRaces::ImportBy(const std::function<void(frmAddRaces& dialog)>& import) {
  const int before = grid_->HighestData();
  Guarded(context_.ui, [&] {
    frmAddRaces dialog(context_, this);
    import(dialog);
  });
  if (!context_.session.IsOpen()) return;
  Guarded(context_.ui, [&] { FillRaceGrid(); });
  const int newest = grid_->HighestData();
  if (newest > before) grid_->ShowData(newest);
}

void frmRaces::RemoveRaces() {
  if (HasRaces() && grid_->FirstSelected() < 0) return;
  const common::Message question{
      "This will remove the results of this race and cannot be undone.\r\nDo you want to continue?",
      "Confirmation", common::MessageIcon::None};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    for (int row = grid_->LastSelected(); row >= grid_->FirstSelected() && HasRaces(); --row)
      ids.push_back(grid_->RowData(row));
    app::Remove(context_.session, ids);
  });
  const int row = grid_->FirstSelected();
  Guarded(context_.ui, [&] { FillRaceGrid(); });
  grid_->SelectRows(row, row);
}

void frmRaces::Calculate() {
  Guarded(context_.ui, [&] {
    frmStats dialog(context_, this);
    dialog.exec();
  });
}

void frmRaces::ShowOptions() {
  Guarded(context_.ui, [&] {
    const PlainCursor plain;
    frmOptions dialog(context_, this);
    dialog.exec();
  });
  watch_->FolderChosen();
}

void frmRaces::ViewReadMe() {
  ShowReadMe(context_.ui);
}

void frmRaces::About() {
  frmSplash about(this);
  about.ShowAbout();
}

void frmRaces::EditRace() {
  Guarded(context_.ui, [&] {
    frmEditRace dialog(context_, {grid_->RowData(grid_->CurrentRow()), false}, this);
    dialog.exec();
  });
}

void frmRaces::ExportRace() {
  Guarded(context_.ui, [&] {
    engine::Database& league = context_.session.League();
    const reports::PageSubject subject{reports::PageSubject::kRace, grid_->RowData(grid_->CurrentRow())};
    const reports::PageTexts texts =
        reports::RacePageTexts(league, subject.id, context_.state.decimalSeparator);
    frmExport dialog(context_, subject, this);
    dialog.setWindowTitle(tr("Export Race Results to HTML"));
    dialog.Heading(texts.heading);
    dialog.ReportName(texts.reportName);
    dialog.Caption(texts.caption);
    dialog.exec();
    if (dialog.Cancelled()) return;
    common::FileRequest request;
    request.filter = "HTML File (*.htm)|*.htm";
    request.name = "Race Result.htm";
    SavePage(context_, subject, dialog.Texts(), request);
  });
}

void frmRaces::DriverList() {
  Guarded(context_.ui, [&] { frmDriverList(context_, this).exec(); });
}

void frmRaces::PointSystem() {
  Guarded(context_.ui, [&] {
    frmPointSystem(context_, this).exec();
    app::ReadLeagueSettings(context_.session.League(), context_.state);
  });
}

void frmRaces::OfflineSettings() {
  Guarded(context_.ui, [&] { frmOfflineSettings(context_, this).exec(); });
}

}  // namespace scorvane::forms
