#include "forms/widgets/frmProgress.h"

#include <QApplication>
#include <QCloseEvent>
#include <QVBoxLayout>

namespace scorvane::forms {

constexpr int kRepaintMilliseconds = 40;
constexpr int kWidth = 420;

frmProgress::frmProgress(const QString& caption, int maximum, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      lblInfo_(new QLabel(this)),
      prog_(new QProgressBar(this)) {
  setObjectName(QStringLiteral("frmProgress"));
  setWindowTitle(caption);
  setWindowModality(Qt::ApplicationModal);
  lblInfo_->setObjectName(QStringLiteral("lblInfo"));
  lblInfo_->setTextFormat(Qt::PlainText);
  lblInfo_->setMinimumWidth(kWidth);
  lblInfo_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  prog_->setObjectName(QStringLiteral("Prog"));
  prog_->setAccessibleName(caption);
  prog_->setRange(0, maximum);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblInfo_);
  layout->addWidget(prog_);
  painted_.start();
  show();
  QApplication::processEvents();
}

void frmProgress::SetInfo(const QString& line) {
  info_ = line;
  Yield();
}

void frmProgress::SetMaximum(int maximum) {
  prog_->setMaximum(maximum);
}

void frmProgress::SetValue(int value) {
  value_ = value;
  Yield();
}

void frmProgress::Yield() {
  if (painted_.elapsed() < kRepaintMilliseconds && value_ < prog_->maximum()) return;
  painted_.restart();
  lblInfo_->setText(
      lblInfo_->fontMetrics().elidedText(info_, Qt::ElideMiddle, qMax(lblInfo_->width(), kWidth)));
  prog_->setValue(value_);
  QApplication::processEvents();
}

void frmProgress::closeEvent(QCloseEvent* event) {
  event->ignore();
}

void frmProgress::keyPressEvent(QKeyEvent* event) {
  event->accept();  // Esc does not close it
}

}  // namespace scorvane::forms
