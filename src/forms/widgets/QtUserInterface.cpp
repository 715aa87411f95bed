#include "forms/widgets/QtUserInterface.h"

#include <QApplication>
#include <QColorDialog>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMessageBox>
#include <QUrl>

#include "common/Paths.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "forms/widgets/frmProgress.h"

namespace scorvane::forms {
namespace {

// The dialog that waits for the user, else the main window. It need not be active yet: at start-up the
// desktop may still be placing it, or the splash may be.
QWidget* FrontWindow() {
  if (QWidget* modal = QApplication::activeModalWidget()) return modal;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible() && qobject_cast<QMainWindow*>(window) != nullptr) return window;
  return QApplication::activeWindow();
}

QMessageBox::Icon Icon(common::MessageIcon icon) {
  switch (icon) {
    case common::MessageIcon::None:
      return QMessageBox::NoIcon;
    case common::MessageIcon::Information:
      return QMessageBox::Information;
    case common::MessageIcon::Question:
      return QMessageBox::Question;
    case common::MessageIcon::Exclamation:
      return QMessageBox::Warning;
    case common::MessageIcon::Critical:
      return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons QtButtons(common::Buttons buttons) {
  switch (buttons) {
    case common::Buttons::OkOnly:
      return QMessageBox::Ok;
    case common::Buttons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case common::Buttons::YesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

// What leaving a box without an answer means: the answer that changes least.
QMessageBox::StandardButton EscapeButton(common::Buttons buttons) {
  switch (buttons) {
    case common::Buttons::OkOnly:
      return QMessageBox::Ok;
    case common::Buttons::YesNo:
      return QMessageBox::No;
    case common::Buttons::YesNoCancel:
      return QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

// The Esc key and the close box press `escape`.
QMessageBox::StandardButton ShowBox(const common::Message& message, QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton escape) {
  const PlainCursor plain;
  QMessageBox box(Icon(message.icon), Q(message.title), Q(message.text), buttons, FrontWindow());
  box.setObjectName(QStringLiteral("MessageBox"));
  box.setTextFormat(Qt::PlainText);
  box.setEscapeButton(escape);
  // Enter does not lose what cannot be had again; of a question with Cancel, its first button keeps all.
  if (escape == QMessageBox::No) box.setDefaultButton(QMessageBox::No);
  return static_cast<QMessageBox::StandardButton>(box.exec());
}

class DialogProgress : public common::Progress {
 public:
  DialogProgress(const std::string& caption, int maximum) : dialog_(Q(caption), maximum, FrontWindow()) {}
  void SetInfo(const std::string& line) override { dialog_.SetInfo(Q(line)); }
  void SetMaximum(int maximum) override { dialog_.SetMaximum(maximum); }
  void SetValue(int value) override { dialog_.SetValue(value); }

 private:
  frmProgress dialog_;
};

// A dialog that is told no folder, or one that is not there, starts where the last file was chosen.
void Prepare(QFileDialog& dialog, const common::FileRequest& request, const QString& lastFolder) {
  if (!request.title.empty()) dialog.setWindowTitle(Q(request.title));
  const QString filters = QtFilter(request.filter);
  dialog.setNameFilter(filters);
  const QStringList entries = filters.split(QStringLiteral(";;"));
  if (request.filterIndex < entries.size()) dialog.selectNameFilter(entries[request.filterIndex]);
  if (!request.folder.empty() && QFileInfo::exists(Q(request.folder))) {
    dialog.setDirectory(Q(request.folder));
  } else if (!lastFolder.isEmpty()) {
    dialog.setDirectory(lastFolder);
  }
  if (!request.name.empty()) dialog.selectFile(Q(request.name));
}

}  // namespace

QString QtFilter(const std::string& filter) {
  const QStringList parts = Q(filter).split(QLatin1Char('|'));
  QStringList entries;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QStringList patterns;
    for (const QString& pattern : parts[i + 1].split(QLatin1Char(';'))) {
      if (pattern == QLatin1String("*.*")) {
        patterns << QStringLiteral("*");
        continue;
      }
      patterns << pattern;
      if (pattern.toUpper() != pattern) patterns << pattern.toUpper();
    }
    const QString name = parts[i].section(QLatin1Char('('), 0, 0).trimmed();
    entries << name + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QStringLiteral(")");
  }
  return entries.join(QStringLiteral(";;"));
}

QString WithSuffix(const QString& path, const QString& nameFilter) {
  const QString patterns = nameFilter.section(QLatin1Char('('), -1).section(QLatin1Char(')'), 0, 0);
  QString wanted;
  for (const QString& pattern : patterns.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    if (!pattern.startsWith(QLatin1String("*."))) return path;
    const QString suffix = pattern.mid(1);
    if (path.endsWith(suffix, Qt::CaseInsensitive) ||
        path.endsWith(suffix + QLatin1Char('l'), Qt::CaseInsensitive))
      return path;
    if (wanted.isEmpty()) wanted = suffix;
  }
  return path + wanted;
}

void QtUserInterface::ShowMessage(const common::Message& message) {
  ShowBox(message, QMessageBox::Ok, QMessageBox::Ok);
}

common::Answer QtUserInterface::Ask(const common::Message& message, common::Buttons buttons) {
  const QMessageBox::StandardButton escape = EscapeButton(buttons);
  QMessageBox::StandardButton pressed = ShowBox(message, QtButtons(buttons), escape);
  if ((QtButtons(buttons) & pressed) == 0) pressed = escape;
  switch (pressed) {
    case QMessageBox::Yes:
      return common::Answer::Yes;
    case QMessageBox::No:
      return common::Answer::No;
    case QMessageBox::Cancel:
      return common::Answer::Cancel;
    default:
      return common::Answer::Ok;
  }
}

std::vector<std::string> QtUserInterface::OpenFiles(common::FileRequest& request) {
  const PlainCursor plain;
  QFileDialog dialog(FrontWindow());
  dialog.setFileMode(request.several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
  Prepare(dialog, request, folder_);
  request.folder = common::JoinPath(PathUtf8(dialog.directory().absolutePath()), "");
  std::vector<std::string> paths;
  if (dialog.exec() != QDialog::Accepted) return paths;
  folder_ = QFileInfo(dialog.selectedFiles().value(0)).absolutePath();
  for (const QString& path : dialog.selectedFiles()) paths.push_back(PathUtf8(path));
  return paths;
}

std::string QtUserInterface::SaveFile(const common::FileRequest& request) {
  const PlainCursor plain;
  QFileDialog dialog(FrontWindow());
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setOption(QFileDialog::DontConfirmOverwrite);
  Prepare(dialog, request, folder_);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  folder_ = QFileInfo(dialog.selectedFiles().value(0)).absolutePath();
  return PathUtf8(WithSuffix(dialog.selectedFiles().constFirst(), dialog.selectedNameFilter()));
}

std::string QtUserInterface::PickFolder(const std::string& title, const std::string& folder) {
  const PlainCursor plain;
  return PathUtf8(QFileDialog::getExistingDirectory(FrontWindow(), Q(title), Q(folder)));
}

bool QtUserInterface::PickColor(std::uint32_t& color) {
  const QColor initial(static_cast<int>(color & 0xFFU), static_cast<int>(color >> 8U & 0xFFU),
                       static_cast<int>(color >> 16U & 0xFFU));
  const PlainCursor plain;
  const QColor picked = QColorDialog::getColor(initial, FrontWindow());
  if (!picked.isValid()) return false;
  color = static_cast<std::uint32_t>(picked.red()) | static_cast<std::uint32_t>(picked.green()) << 8U |
          static_cast<std::uint32_t>(picked.blue()) << 16U;
  return true;
}

std::unique_ptr<common::Progress> QtUserInterface::StartProgress(const std::string& caption, int maximum) {
  return std::make_unique<DialogProgress>(caption, maximum);
}

bool QtUserInterface::ShellOpen(const std::string& path) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(Q(path)));
}

}  // namespace scorvane::forms
