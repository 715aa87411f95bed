// How a grid's cells are painted, and what one types into those that may be typed into.
#pragma once

#include <QStyledItemDelegate>

namespace scorvane::forms {

class GridDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  // A box for digits; its cell keeps its text until it is left, and for good with Esc.
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace scorvane::forms
