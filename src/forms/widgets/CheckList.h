// A list of which any number can be ticked, by the mouse or with the space bar.
#pragma once

#include <QListWidget>
#include <cstdint>
#include <vector>

namespace scorvane::forms {

class CheckList : public QListWidget {
 public:
  CheckList(const QString& name, const QString& reader, QWidget* parent) : QListWidget(parent) {
    setObjectName(name);
    setAccessibleName(reader);
    setUniformItemSizes(true);
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
