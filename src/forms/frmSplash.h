// The splash screen at start-up, which is the About box, too.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QTimer>

namespace scorvane::forms {

class frmSplash : public QDialog {
 public:
  explicit frmSplash(QWidget* parent = nullptr);

  // Shows it in front of everything for two seconds, without waiting.
  void ShowSplash();
  // Shows it until the user closes it.
  void ShowAbout();

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLabel* picLogo_;
  QLabel* lblInfo_;
  QLabel* lblVersion_;
  QTimer timer1_;
};

}  // namespace scorvane::forms
