// Where the user left each window, how large, and the widths that he gave the columns of its grids: kept in
// the template beside the program's options, and restored when the window comes up again.
#pragma once

#include <QJsonObject>
#include <QObject>

#include "engine/Database.h"

class QWidget;

namespace scorvane::forms {

class WindowMemory : public QObject {
 public:
  // Watches every window of the program for as long as it lives.
  explicit WindowMemory(engine::Database& templateDb);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QJsonObject Read() const;
  void Restore(QWidget& window);
  // What cannot be stored is forgotten: nobody is stopped by it.
  void Store(const QWidget& window);

  engine::Database& templateDb_;
};

}  // namespace scorvane::forms
