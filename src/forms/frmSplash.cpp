#include "forms/frmSplash.h"

#include <QApplication>
#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QPixmap>

#include "forms/widgets/Text.h"
#include "reports/PageLook.h"

namespace scorvane::forms {
namespace {

constexpr int kWidth = 460;
constexpr int kHeight = 260;
constexpr int kMargin = 2;
constexpr int kSplashMilliseconds = 2000;

// The product picture: a night sky over a chequered flag, the icon and the name in front of them.
QPixmap Picture(qreal scale) {
  QPixmap picture(QSize(kWidth, kHeight) * scale);
  picture.setDevicePixelRatio(scale);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  QLinearGradient sky(0, 0, 0, kHeight);
  sky.setColorAt(0, QColor(18, 28, 48));
  sky.setColorAt(1, QColor(34, 64, 104));
  painter.fillRect(0, 0, kWidth, kHeight, sky);
  constexpr int kSquare = 20;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < kWidth / kSquare; ++column) {
      // It fades out towards the top.
      const QColor color =
          (row + column) % 2 == 0 ? QColor(245, 245, 245, 90 + 60 * row) : QColor(10, 14, 24, 120);
      painter.fillRect(column * kSquare, kHeight - (3 - row) * kSquare, kSquare, kSquare, color);
    }
  }
  const QPixmap icon(QStringLiteral(":/scorvane/scorvane-%1.png").arg(scale > 1 ? 256 : 128), "PNG");
  if (!icon.isNull()) painter.drawPixmap(QRect(28, 36, 96, 96), icon);
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(46);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QRect(144, 36, kWidth - 160, 64), Qt::AlignLeft | Qt::AlignVCenter,
                   QStringLiteral("Scorvane"));
  return picture;
}

}  // namespace

frmSplash::frmSplash(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint) {
  setObjectName(QStringLiteral("frmSplash"));
  setWindowTitle(tr("Scorvane"));
  // The program ends with its main window, not with a splash that is still there.
  setAttribute(Qt::WA_QuitOnClose, false);
  picLogo_ = new QLabel(this);
  picLogo_->setObjectName(QStringLiteral("picLogo"));
  picLogo_->setPixmap(Picture(devicePixelRatioF()));
  picLogo_->setGeometry(kMargin, kMargin, kWidth, kHeight);
  picLogo_->setAccessibleName(tr("Scorvane"));
  setFixedSize(kWidth + 2 * kMargin, kHeight + 2 * kMargin);

  auto addLabel = [this](const char* name, const QString& text, const QRect& place, int pixels) {
    auto* label = new QLabel(text, picLogo_);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(pixels);
    label->setFont(font);
    QPalette colors = label->palette();
    colors.setColor(QPalette::WindowText, Qt::white);
    label->setPalette(colors);
    label->setGeometry(place);
    return label;
  };
  lblInfo_ = addLabel("lblInfo", tr("League Administration Software for Papyrus NASCAR Racing Simulations"),
                      {146, 100, kWidth - 170, 44}, 15);
  lblVersion_ =
      addLabel("lblVersion", tr("Version ") + Q(reports::ProductVersion()), {146, 146, kWidth - 170, 22}, 13);
  for (QLabel* label : {picLogo_, lblInfo_, lblVersion_}) label->installEventFilter(this);
  timer1_.setObjectName(QStringLiteral("Timer1"));
  timer1_.setSingleShot(true);
  connect(&timer1_, &QTimer::timeout, this, &QDialog::reject);
}

void frmSplash::ShowSplash() {
  setWindowFlag(Qt::WindowStaysOnTopHint);
  timer1_.start(kSplashMilliseconds);
  show();
  QApplication::processEvents();
}

void frmSplash::ShowAbout() {
  exec();
}

// A message that start-up has would stand behind the splash, which could not be clicked away: it goes first.
bool frmSplash::event(QEvent* event) {
  if (event->type() == QEvent::WindowBlocked && timer1_.isActive()) reject();
  return QDialog::event(event);
}

bool frmSplash::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonRelease) {
    reject();
    return true;
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace scorvane::forms
