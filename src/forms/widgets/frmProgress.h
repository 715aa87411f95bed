// frmProgress: a caption, a line of information and a bar, shown while a long operation runs. The rest of the
// program takes no input meanwhile, but goes on painting.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>

namespace scorvane::forms {

class frmProgress : public QDialog {
 public:
  frmProgress(const QString& caption, int maximum, QWidget* parent);

  void SetInfo(const QString& line);
  void SetMaximum(int maximum);
  void SetValue(int value);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Lets the program paint, not more often than the eye follows.
  void Yield();

  QLabel* lblInfo_;
  QProgressBar* prog_;
  QString info_;
  int value_ = 0;
  QElapsedTimer painted_;
};

}  // namespace scorvane::forms
