// A list of which any number can be ticked, by the mouse or with the space bar.
#pragma once

#include <QApplication>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <cstdint>
#include <vector>

#include "forms/widgets/Contrast.h"

namespace scorvane::forms {

// Draws the frames of the ticks in a colour that can be seen: a style takes the window's, on which they are
// lost in a dark list.
class TickDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    const QStyle* style = option.widget == nullptr ? QApplication::style() : option.widget->style();
    const QRect box = style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &item, option.widget);
    const QPalette& colors = option.palette;
    painter->save();
    painter->setPen(ReadableOn(colors.color(QPalette::Base), colors.color(QPalette::Mid),
                               colors.color(QPalette::Text), kSeen));
    painter->drawRect(box.adjusted(0, 0, -1, -1));
    painter->restore();
  }
};

class CheckList : public QListWidget {
 public:
  CheckList(const QString& name, const QString& reader, QWidget* parent) : QListWidget(parent) {
    setObjectName(name);
    setAccessibleName(reader);
    setUniformItemSizes(true);
    setItemDelegate(new TickDelegate(this));
  }

  void Add(const QString& text, std::int32_t key) {
    auto* item = new QListWidgetItem(text, this);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(Qt::Unchecked);
    item->setData(Qt::UserRole, key);
  }

  // What the ticked entries are, from the top.
  std::vector<std::int32_t> Ticked() const {
    std::vector<std::int32_t> ticked;
    for (int row = 0; row < count(); ++row)
      if (item(row)->checkState() == Qt::Checked) ticked.push_back(item(row)->data(Qt::UserRole).toInt());
    return ticked;
  }
};

}  // namespace scorvane::forms
