#include "forms/frmAddRaces.h"

#include <QDragEnterEvent>
#include <QEventLoop>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "app/Commands.h"
#include "common/Paths.h"
#include "forms/Drops.h"
#include "forms/frmEditRace.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "import/ExportedStandings.h"

namespace scorvane::forms {
namespace {

constexpr int kListCharacters = 48;
constexpr int kListLines = 12;
constexpr int kPathRole = Qt::UserRole + 1;  // of a listed file; its staged race is the user's role

// Lists the folders of files that have one below each other, and leaves four blanks behind the widest item
// before the list scrolls.
class FileItems : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QString folder = Text(index).section(QLatin1Char('\t'), 1);
    const int text = folder.isEmpty() ? option.fontMetrics.horizontalAdvance(Text(index))
                                      : FolderStart(option) + option.fontMetrics.horizontalAdvance(folder);
    size.setWidth(text + option.fontMetrics.horizontalAdvance(QStringLiteral("    ")));
    return size;
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const QString folder = Text(index).section(QLatin1Char('\t'), 1);
    if (folder.isEmpty()) return;
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(option.rect.adjusted(FolderStart(option), 0, 0, 0), Qt::AlignVCenter, folder);
    painter->restore();
  }

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = Text(index).section(QLatin1Char('\t'), 0, 0);
  }

 private:
  static QString Text(const QModelIndex& index) { return index.data(Qt::DisplayRole).toString(); }

  // Behind the longest name; asked once for every change of the list.
  int FolderStart(const QStyleOptionViewItem& option) const {
    const auto* list = static_cast<const QListWidget*>(parent());
    if (measured_ != list->count()) {
      measured_ = list->count();
      longest_ = 0;
      for (int row = 0; row < measured_; ++row) {
        const QString name = list->item(row)->text().section(QLatin1Char('\t'), 0, 0);
        longest_ = std::max(longest_, option.fontMetrics.horizontalAdvance(name));
      }
    }
    return longest_ + option.fontMetrics.horizontalAdvance(QStringLiteral("    "));
  }

  mutable int measured_ = -1;
  mutable int longest_ = 0;
};

}  // namespace

frmAddRaces::frmAddRaces(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context), showAlerts_(import::ShowsImportAlerts(context.templateDb)) {
  setObjectName(QStringLiteral("frmAddRaces"));
  setWindowTitle(tr("Import"));
  setAcceptDrops(true);
  app::PrepareImport(context.session.League(), context.templateDb, context.state);
  auto* layout = new QGridLayout(this);
  layout->addWidget(BuildList(), 0, 0);
  layout->addLayout(BuildOptions(), 1, 0);
  layout->addLayout(BuildButtons(), 0, 1, 2, 1);
  layout->setColumnStretch(0, 1);
  layout->setRowStretch(0, 1);
  setTabOrder(lstRaces_, cboLRM_);
  setTabOrder(cboLRM_, buttons_[kAdd]);
  SelectionChanged();
  buttons_[kImport]->setEnabled(false);
  buttons_[kAdd]->setFocus();
}

QWidget* frmAddRaces::BuildList() {
  auto* part = new QWidget(this);
  auto* layout = new QVBoxLayout(part);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* label = new QLabel(tr("&Standing files to import:"), part);
  lstRaces_ = new QListWidget(part);
  lstRaces_->setObjectName(QStringLiteral("lstRaces"));
  lstRaces_->setToolTip(tr("List of files to be imported."));
  lstRaces_->setAccessibleName(tr("Standing files to import"));
  lstRaces_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lstRaces_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  lstRaces_->setTextElideMode(Qt::ElideNone);
  lstRaces_->setItemDelegate(new FileItems(lstRaces_));
  const QFontMetrics metrics = lstRaces_->fontMetrics();
  lstRaces_->setMinimumSize(metrics.averageCharWidth() * 16, metrics.height() * 4);
  resize(metrics.averageCharWidth() * kListCharacters + 140, metrics.height() * kListLines + 140);
  lstRaces_->installEventFilter(this);
  connect(lstRaces_, &QListWidget::itemSelectionChanged, this, &frmAddRaces::SelectionChanged);
  connect(lstRaces_, &QListWidget::itemDoubleClicked, this, &frmAddRaces::EditFile);
  label->setBuddy(lstRaces_);
  layout->addWidget(label);
  layout->addWidget(lstRaces_, 1);

  auto* note = new QLabel(tr("These standing files will be merged into a single event.  Only unique drivers "
                             "will be retained."),
                          part);
  note->setObjectName(QStringLiteral("lblNote"));
  note->setTextFormat(Qt::PlainText);
  note->setWordWrap(true);
  note->setVisible(context_.state.leagueType == common::kOffline);
  layout->addWidget(note);
  return part;
}

QLayout* frmAddRaces::BuildOptions() {
  auto* layout = new QVBoxLayout;
  auto* row = new QHBoxLayout;
  cboLRM_ = new QComboBox(this);
  cboLRM_->setObjectName(QStringLiteral("cboLRM"));
  cboLRM_->addItems({tr("Speed"), tr("Time")});
  cboLRM_->setCurrentIndex(context_.state.lapReportingMethod);
  cboLRM_->setToolTip(
      tr("Sets the way files added to the import list will have their qualifying values interpreted."));
  cboLRM_->setAccessibleName(tr("Interpret Qualifying as"));
  auto* label = new QLabel(tr("Interpret &Qualifying as:"), this);
  label->setObjectName(QStringLiteral("lblLRM"));
  label->setBuddy(cboLRM_);
  // Pages of the newer simulations say themselves what they hold.
  const bool asks = context_.state.simType <= common::kNascarRacing2;
  label->setVisible(asks);
  cboLRM_->setVisible(asks);
  row->addWidget(label);
  row->addWidget(cboLRM_);
  row->addStretch();
  layout->addLayout(row);

  auto* alerts = new QLabel(showAlerts_ ? QString() : tr("Alerts are OFF"), this);
  alerts->setObjectName(QStringLiteral("lblAlerts"));
  layout->addWidget(alerts);
  return layout;
}

QLayout* frmAddRaces::BuildButtons() {
  struct Text {
    QString caption;
    QString toolTip;
    void (frmAddRaces::*command)();
  };
  const std::array<Text, kButtons> texts = {
      {{tr("&Add"), tr("Add files to import list."), &frmAddRaces::AddFiles},
       {tr("&Remove"), tr("Remove selected files from import list."), &frmAddRaces::RemoveFiles},
       {tr("&Edit"), tr("Edit selected file information."), &frmAddRaces::EditFile},
       {tr("&Import"), {}, &frmAddRaces::Import},
       {tr("Cancel"), {}, &frmAddRaces::reject}}};
  auto* layout = new QVBoxLayout;
  for (int i = 0; i < kButtons; ++i) {
    const Text& text = texts[static_cast<std::size_t>(i)];
    auto* button = new QPushButton(text.caption, this);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(i));
    button->setToolTip(text.toolTip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, text.command);
    if (i == kImport) layout->addStretch();
    layout->addWidget(button);
    buttons_[static_cast<std::size_t>(i)] = button;
  }
  return layout;
}

// Enter in the list opens the file that the keyboard is at; Insert and Delete are Add and Remove.
bool frmAddRaces::eventFilter(QObject* watched, QEvent* event) {
  if (watched == lstRaces_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      EditFile();
      return true;
    }
    if (key == Qt::Key_Insert || key == Qt::Key_Delete) {
      buttons_[key == Qt::Key_Insert ? kAdd : kRemove]->click();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void frmAddRaces::SelectionChanged() {
  const auto selected = lstRaces_->selectedItems().size();
  buttons_[kEdit]->setEnabled(selected == 1);
  // A button that is switched off under the keyboard would leave it nowhere.
  if (selected == 0 && (buttons_[kRemove]->hasFocus() || buttons_[kEdit]->hasFocus())) lstRaces_->setFocus();
  buttons_[kRemove]->setEnabled(selected > 0);
}

void frmAddRaces::AddFiles() {
  Guarded(context_.ui, [&] {
    common::FileRequest request;
    request.filter = app::ResultFileFilter(context_.state.simType);
    request.folder = app::ResultFolder(context_.state);
    request.several = true;
    const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
    defaultFolder_ = request.folder;
    if (!chosen.empty()) ReadFiles(chosen);
  });
  SelectFirst();
}

void frmAddRaces::AddPaths(const std::vector<std::string>& paths) {
  Guarded(context_.ui, [&] {
    const std::vector<std::string> files = app::ExpandFolders(paths, context_.state.simType);
    if (defaultFolder_.empty()) defaultFolder_ = app::ResultFolder(context_.state);
    if (!files.empty()) {
      ReadFiles(files);
      return;
    }
    context_.ui.ShowMessage({"There are no result files of the league's simulation in what was dropped.",
                             "Import", common::MessageIcon::Information});
  });
  SelectFirst();
}

void frmAddRaces::SelectFirst() {
  if (lstRaces_->count() > 0 && lstRaces_->selectedItems().isEmpty()) lstRaces_->setCurrentRow(0);
}

void frmAddRaces::dragEnterEvent(QDragEnterEvent* event) {
  if (!DraggedResults(event->mimeData()).empty()) event->acceptProposedAction();
}

void frmAddRaces::dropEvent(QDropEvent* event) {
  const std::vector<std::string> paths = DraggedResults(event->mimeData());
  if (paths.empty()) return;
  event->acceptProposedAction();
  // Later, so that the program they come from does not wait until they are read.
  QTimer::singleShot(0, this, [this, paths] { AddPaths(paths); });
}

void frmAddRaces::ReadFiles(const std::vector<std::string>& paths) {
  const bool several = paths.size() > 1;
  if (several) hide();
  StageFiles(paths);
  if (several) ShowAgain();
}

bool frmAddRaces::StageFiles(const std::vector<std::string>& paths) {
  app::StagedFiles staged;
  const bool done = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    staged = app::StageFiles(context_.session.League(), context_.state, context_.ui, paths,
                             {cboLRM_->currentIndex(), showAlerts_});
  });
  for (const app::StagedFile& file : staged.files) ListFile(file);
  if (lstRaces_->count() > 0) buttons_[kImport]->setEnabled(true);
  if (done && !showAlerts_ && staged.failed > 0)
    context_.ui.ShowMessage(app::FailedFilesWarning(staged.failed));
  return done && staged.failed == 0;
}

bool frmAddRaces::ImportPaths(const std::vector<std::string>& paths) {
  defaultFolder_ = app::ResultFolder(context_.state);
  const bool imported = StageFiles(paths) && MeansDuplicates() && ImportStaged();
  SelectFirst();
  return imported;
}

void frmAddRaces::ListFile(const app::StagedFile& file) {
  std::string text = common::GetFileTitle(file.path);
  const std::string folder = common::GetFolder(file.path);
  if (folder != defaultFolder_) text += "\t" + folder;
  auto* item = new QListWidgetItem(Q(text), lstRaces_);
  item->setData(Qt::UserRole, file.raceId);
  item->setData(kPathRole, Q(file.path));
}

void frmAddRaces::RemoveFiles() {
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    std::vector<int> rows;
    for (int row = lstRaces_->count() - 1; row >= 0; --row) {
      if (!lstRaces_->item(row)->isSelected()) continue;
      rows.push_back(row);
      ids.push_back(lstRaces_->item(row)->data(Qt::UserRole).toInt());
    }
    app::RemoveStagedRaces(context_.session.League(), ids);
    for (const std::int32_t id : ids) edited_.erase(id);
    for (const int row : rows) delete lstRaces_->takeItem(row);
  });
  // The neighbour of a removed file is not meant, though the keyboard is there now.
  lstRaces_->clearSelection();
}

void frmAddRaces::EditFile() {
  const QListWidgetItem* current = lstRaces_->currentItem();
  if (current == nullptr) return;
  Guarded(context_.ui, [&] {
    const int staged = current->data(Qt::UserRole).toInt();
    frmEditRace editor(context_, {staged, true}, this);
    editor.exec();
    if (editor.Edited()) edited_.insert(staged);
  });
}

bool frmAddRaces::MeansToLoseEdits() {
  if (edited_.empty()) return true;
  const common::Message question{
      "Results of this list were edited and are not imported yet.\r\nDo you want to lose these changes?",
      "Import", common::MessageIcon::Exclamation};
  return context_.ui.Ask(question, common::Buttons::YesNo) == common::Answer::Yes;
}

// Esc is pressed by mistake more easily than Cancel.
void frmAddRaces::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && !MeansToLoseEdits()) return;
  QDialog::keyPressEvent(event);
}

// What seems to be in the league already is asked about once, before anything is done.
bool frmAddRaces::MeansDuplicates() {
  std::vector<app::Duplicate> duplicates;
  const bool looked = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    std::vector<app::StagedFile> staged;
    for (int row = 0; row < lstRaces_->count(); ++row) {
      const QListWidgetItem* item = lstRaces_->item(row);
      staged.push_back({Utf8(item->data(kPathRole).toString()), item->data(Qt::UserRole).toInt()});
    }
    duplicates = app::FindDuplicates(context_.session.League(), context_.state, staged);
  });
  if (!looked) return false;
  if (duplicates.empty()) return true;
  return context_.ui.Ask(app::DuplicatesQuestion(duplicates), common::Buttons::YesNo) == common::Answer::Yes;
}

void frmAddRaces::Import() {
  if (!MeansDuplicates()) return;
  hide();
  // What failed left nothing in the league: the list stays, to be mended and imported again.
  if (ImportStaged()) {
    accept();
  } else {
    ShowAgain();
  }
}

bool frmAddRaces::ImportStaged() {
  bool imported = false;
  Guarded(context_.ui, [&] {
    app::ImportOutcome outcome;
    {
      const WaitCursor wait;
      outcome = app::Import(context_.session, context_.ui, static_cast<std::size_t>(lstRaces_->count()));
    }
    imported = outcome.done;
    for (const std::string& note : outcome.notes)
      context_.ui.ShowMessage({note, "Import", common::MessageIcon::Information});
  });
  return imported;
}

int frmAddRaces::exec() {
  setModal(true);
  setResult(Rejected);
  show();
  QEventLoop loop;
  connect(this, &QDialog::finished, &loop, &QEventLoop::quit);
  loop.exec(QEventLoop::DialogExec);
  return result();
}

// Where it was, not where a dialog comes up at first.
void frmAddRaces::ShowAgain() {
  move(pos());
  show();
  activateWindow();
}

}  // namespace scorvane::forms
