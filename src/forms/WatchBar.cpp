#include "forms/WatchBar.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <utility>

#include "common/Paths.h"
#include "forms/Undoing.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kSoon = 1000;     // milliseconds between two looks in which a file must stay as it is
constexpr int kLater = 10'000;  // where the system reports no changes: networks, folders that are not there
constexpr int kMostNamed = 3;
constexpr int kNameCharacters = 40;
constexpr int kMostListed = 20;  // in the tool tip

}  // namespace

WatchBar::WatchBar(FormContext& context, Import import, QWidget* parent)
    : QFrame(parent), context_(context), threads_(new QThreadPool) {
  setObjectName(QStringLiteral("fraWatch"));
  setFrameShape(QFrame::StyledPanel);
  threads_->setMaxThreadCount(1);
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &WatchBar::Look);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &WatchBar::Look);

  lblFiles_ = new QLabel(this);
  lblFiles_->setObjectName(QStringLiteral("lblWatch"));
  lblFiles_->setTextFormat(Qt::PlainText);
  lblFiles_->setWordWrap(true);
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(lblFiles_, 1);
  const auto add = [&](const char* name, const QString& caption, const QString& toolTip, auto command) {
    auto* button = new QPushButton(caption, this);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, std::move(command));
    layout->addWidget(button);
  };
  add("cmdWatchImport", tr("Im&port"), tr("Import these result files"), [this, import = std::move(import)] {
    // A copy: what is imported is no longer offered.
    const std::vector<std::string> paths = offered_;
    import(paths);
  });
  add("cmdNotNow", tr("&Not Now"), tr("Leave these files until they change or the league is opened again"),
      &WatchBar::NotNow);
  hide();
}

WatchBar::~WatchBar() {
  ++round_;
  // A look into a folder on a network that does not answer holds up nobody's quitting.
  if (threads_->waitForDone(kSoon)) delete threads_;
}

void WatchBar::LeagueOpened() {
  const bool open = context_.session.IsOpen();
  league_ = open ? context_.session.League().Name() : std::string();
  Begin(open ? app::ReadWatchChoice(context_.templateDb, league_) : app::WatchChoice());
}

void WatchBar::FolderChosen() {
  if (league_.empty()) return;
  app::WatchChoice choice = app::ReadWatchChoice(context_.templateDb, league_);
  if (choice.folder == choice_.folder && choice.on == choice_.on) return;
  choice.since = 0;
  Begin(std::move(choice));
}

void WatchBar::Begin(app::WatchChoice choice) {
  choice_ = std::move(choice);
  ++round_;
  looks_ = {};
  looking_ = false;
  timer_.stop();
  if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
  Offer();
  Look();
}

void WatchBar::Look() {
  if (looking_ || !choice_.IsWatching() || !context_.session.IsOpen()) return;
  looking_ = true;
  // The bar may be gone before a look into a folder that does not answer ends.
  const QPointer<WatchBar> bar(this);
  threads_->start([bar, round = round_, folder = choice_.folder, simType = context_.state.simType] {
    auto files = app::ListResultFiles(folder, simType);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [bar, round, files = std::move(files)] {
          if (bar && round == bar->round_) bar->Found(files);
        },
        Qt::QueuedConnection);
  });
}

void WatchBar::Found(const std::optional<std::vector<app::FolderFile>>& files) {
  looking_ = false;
  const QString folder = Q(choice_.folder);
  // A folder that went and came again is another one to the watcher.
  if (!files && !watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
  if (files && watcher_.directories().isEmpty()) watcher_.addPath(folder);
  looks_.Take(files.value_or(std::vector<app::FolderFile>()), choice_.since);
  LookAgain(looks_.IsSettled() ? kLater : kSoon);
  Offer();
}

void WatchBar::LookAgain(int milliseconds) {
  timer_.start(milliseconds);
}

void WatchBar::ShowsRaces(const std::vector<std::int32_t>& ids) {
  if (ids == races_) return;
  races_ = ids;
  compared_.clear();
  if (context_.session.League().Name() == league_) Offer();
}

void WatchBar::Offer() {
  const std::vector<std::string> ready = choice_.IsWatching() ? looks_.Ready() : std::vector<std::string>();
  if (ready == compared_ && !ready.empty()) return;
  if (!ready.empty()) {
    // Under a dialog the league's staged races are the dialog's.
    if (QApplication::activeModalWidget() != nullptr) return LookAgain(kSoon);
    try {
      offered_ = app::NewResultFiles(context_.session, ready);
    } catch (const std::exception&) {
      // Another program is writing; or the league cannot be written to, and so not be imported into.
      return LookAgain(kLater);
    }
  } else {
    offered_.clear();
  }
  compared_ = ready;
  setVisible(!offered_.empty());
  if (offered_.empty()) return;
  QStringList names;
  QStringList all;
  for (const std::string& path : offered_) {
    const QString name = Q(common::GetFileTitle(path));
    if (names.size() < kMostNamed) names << Shortened(Utf8(name), kNameCharacters);
    if (all.size() < kMostListed) all << name;
  }
  const auto count = static_cast<int>(offered_.size());
  const QString list = names.join(QStringLiteral(", "));
  const QString text = count == 1            ? tr("New result file: %1")
                       : count <= kMostNamed ? tr("%2 new result files: %1")
                                             : tr("%2 new result files: %1 and others");
  lblFiles_->setText(count == 1 ? text.arg(list) : text.arg(list, QString::number(count)));
  if (count > kMostListed) all << QStringLiteral("...");
  lblFiles_->setToolTip(ToolTipText(all.join(QLatin1Char('\n'))));
}

void WatchBar::NotNow() {
  looks_.PutOff();
  Offer();
}

}  // namespace scorvane::forms
