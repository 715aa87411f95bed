#include "forms/WindowMemory.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QJsonDocument>
#include <QMainWindow>
#include <algorithm>
#include <map>

#include "common/SettingsStore.h"
#include "forms/widgets/SelectionGrid.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kNarrowest = 12;  // of a column, in pixels
constexpr int kWidest = 4000;
constexpr const char* kPlaced = "placed";  // a window that has been put where it was

const QString kPlace = QStringLiteral("place");

// The program's own windows that can be resized; boxes with messages, files and progress come and go.
bool IsRemembered(const QWidget& window) {
  return window.isWindow() &&
         (qobject_cast<const QDialog*>(&window) || qobject_cast<const QMainWindow*>(&window)) &&
         window.objectName().startsWith(QLatin1String("frm")) &&
         window.objectName() != QLatin1String("frmProgress") &&
         window.objectName() != QLatin1String("frmSplash");
}

}  // namespace

WindowMemory::WindowMemory(engine::Database& templateDb) : templateDb_(templateDb) {
  qApp->installEventFilter(this);
}

bool WindowMemory::eventFilter(QObject* watched, QEvent* event) {
  if ((event->type() != QEvent::Show && event->type() != QEvent::Hide) || event->spontaneous()) return false;
  auto* window = qobject_cast<QWidget*>(watched);
  if (window == nullptr || !IsRemembered(*window)) return false;
  if (event->type() == QEvent::Hide) {
    if (window->property(kPlaced).toBool()) Store(*window);
  } else if (!window->property(kPlaced).toBool()) {
    window->setProperty(kPlaced, true);
    Restore(*window);
  }
  return false;
}

QJsonObject WindowMemory::Read() const {
  const std::string text = common::GetSettingValue(templateDb_, common::kWindowPlaces);
  return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

void WindowMemory::Restore(QWidget& window) {
  const QJsonObject kept = Read().value(window.objectName()).toObject();
  // Qt leaves a place that was kept on quite another screen alone, and fits what is too large.
  const QByteArray place = QByteArray::fromBase64(kept.value(kPlace).toString().toLatin1());
  if (!place.isEmpty()) window.restoreGeometry(place);
  for (auto* grid : window.findChildren<SelectionGrid*>()) {
    const QJsonObject columns = kept.value(grid->objectName()).toObject();
    std::map<QString, int> widths;
    for (auto column = columns.begin(); column != columns.end(); ++column)
      widths[column.key()] = std::clamp(column.value().toInt(), kNarrowest, kWidest);
    if (!widths.empty()) grid->SetWidths(widths);
  }
}

void WindowMemory::Store(const QWidget& window) {
  QJsonObject kept;
  kept[kPlace] = QString::fromLatin1(window.saveGeometry().toBase64());
  for (const auto* grid : window.findChildren<SelectionGrid*>()) {
    QJsonObject columns;
    for (const auto& [heading, width] : grid->Widths()) columns[heading] = width;
    if (!columns.isEmpty()) kept[grid->objectName()] = columns;
  }
  // Read again: another window of the program, or another program, may have stored its own since.
  QJsonObject all = Read();
  if (all.value(window.objectName()).toObject() == kept) return;
  all[window.objectName()] = kept;
  common::SaveSettingValue(templateDb_, common::kWindowPlaces,
                           QJsonDocument(all).toJson(QJsonDocument::Compact).toStdString());
}

}  // namespace scorvane::forms
