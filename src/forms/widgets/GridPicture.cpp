#include "forms/widgets/GridPicture.h"

#include <QAbstractItemDelegate>
#include <QHeaderView>
#include <QPainter>
#include <cmath>

namespace scorvane::forms {
namespace {

constexpr double kMostSide = 30'000;        // of pixels; the system's painters end at 32,767
constexpr double kMostPixels = 60'000'000;  // 240 MB while it is painted

QSize PictureSize(const QTableView& view) {
  const QHeaderView* columns = view.horizontalHeader();
  const QHeaderView* rows = view.verticalHeader();
  const int left = rows->isHidden() ? 0 : rows->width();
  const int top = columns->isHidden() ? 0 : columns->height();
  return {left + columns->length() + 1, top + rows->length() + 1};
}

}  // namespace

bool FitsPicture(const QTableView& view) {
  const QSizeF pixels = QSizeF(PictureSize(view)) * view.devicePixelRatioF();
  return view.model()->rowCount() > 0 && pixels.width() <= kMostSide && pixels.height() <= kMostSide &&
         pixels.width() * pixels.height() <= kMostPixels;
}

QImage PictureOf(const QTableView& view) {
  if (!FitsPicture(view)) return {};
  // A second view of the same rows, as large as they are, that is never shown.
  QTableView whole;
  whole.setPalette(view.palette());
  whole.setFont(view.font());
  whole.setStyle(view.style());
  whole.setFrameShape(QFrame::NoFrame);
  whole.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  whole.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  whole.setModel(view.model());
  whole.setItemDelegate(view.itemDelegate());
  whole.setWordWrap(view.wordWrap());
  whole.setTextElideMode(view.textElideMode());
  whole.setIconSize(view.iconSize());
  whole.setShowGrid(view.showGrid());
  whole.setAlternatingRowColors(view.alternatingRowColors());
  whole.setSelectionMode(QAbstractItemView::NoSelection);
  const QHeaderView* columns = view.horizontalHeader();
  const QHeaderView* rows = view.verticalHeader();
  whole.horizontalHeader()->setVisible(!columns->isHidden());
  whole.horizontalHeader()->setHighlightSections(false);
  whole.horizontalHeader()->setFixedHeight(columns->height());
  whole.horizontalHeader()->setMinimumSectionSize(1);
  whole.horizontalHeader()->setSortIndicatorShown(columns->isSortIndicatorShown());
  whole.horizontalHeader()->setSortIndicator(columns->sortIndicatorSection(), columns->sortIndicatorOrder());
  whole.verticalHeader()->setVisible(!rows->isHidden());
  whole.verticalHeader()->setFixedWidth(rows->isHidden() ? 0 : rows->width());
  whole.verticalHeader()->setDefaultAlignment(rows->defaultAlignment());
  whole.verticalHeader()->setTextElideMode(rows->textElideMode());
  whole.verticalHeader()->setDefaultSectionSize(rows->defaultSectionSize());
  for (int column = 0; column < columns->count(); ++column) {
    whole.setColumnHidden(column, columns->isSectionHidden(column));
    if (!columns->isSectionHidden(column)) whole.setColumnWidth(column, columns->sectionSize(column));
  }
  const QSize size = PictureSize(view);
  whole.resize(size);
  const double scale = view.devicePixelRatioF();
  QImage picture((QSizeF(size) * scale).toSize(), QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  picture.fill(view.palette().color(QPalette::Base));
  whole.render(&picture);
  return picture;
}

}  // namespace scorvane::forms
