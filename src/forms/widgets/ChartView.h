// A chart, painted as large as there is room. The value under the pointer is told in a tool tip; with the
// keyboard the arrows go from value to value.
#pragma once

#include <QWidget>

#include "charts/Chart.h"

namespace scorvane::forms {

// The colour of a line on the theme's paper: readable, as text must be.
QColor SeriesColor(const QPalette& palette, std::size_t series);

class ChartView : public QWidget {
 public:
  ChartView(const QString& name, const QString& reader, QWidget* parent);

  // A chart without anything to show shows the hint instead.
  void SetChart(charts::Chart chart, const QString& hint = {});
  const charts::Chart& Shown() const { return chart_; }
  // What is told now: "1. Daytona, Jeff Gordon: 175"; empty for nothing.
  QString Told() const;
  // Where a value is painted.
  QPoint PlaceOf(const charts::Value& value) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // From the chart's units to pixels.
  double Scale() const;
  QPointF Origin() const;
  charts::Point Where(const charts::Value& value) const;
  void Tell(const charts::Value* value, const QPoint& at);
  // The next value in a direction; the first one when none is told.
  const charts::Value* Next(int key) const;
  void PaintBars(QPainter& painter) const;
  void PaintLines(QPainter& painter) const;
  void PaintLabels(QPainter& painter) const;

  charts::Chart chart_;
  QString hint_;
  const charts::Value* told_ = nullptr;  // of the chart
};

}  // namespace scorvane::forms
