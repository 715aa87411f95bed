// A row of cmdButton_* at the foot of a dialog.
#pragma once

#include <QBoxLayout>
#include <QPushButton>
#include <map>
#include <vector>

namespace scorvane::forms {

struct ButtonText {
  int index = 0;
  QString caption;
  QString toolTip = {};
};

// Adds the buttons from left to right, at the right of the row; by their indexes. None is the default button.
inline std::map<int, QPushButton*> AddButtons(QBoxLayout* layout, QWidget* parent,
                                              const std::vector<ButtonText>& texts) {
  std::map<int, QPushButton*> buttons;
  auto* row = new QHBoxLayout;
  row->addStretch();
  for (const ButtonText& text : texts) {
    auto* button = new QPushButton(text.caption, parent);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(text.index));
    button->setToolTip(text.toolTip);
    button->setAutoDefault(false);
    row->addWidget(button);
    buttons[text.index] = button;
  }
  layout->addLayout(row);
  return buttons;
}

// The same from top to bottom; the buttons from `lower` on stand at the foot.
inline std::map<int, QPushButton*> AddButtonColumn(QBoxLayout* layout, QWidget* parent,
                                                   const std::vector<ButtonText>& texts, std::size_t lower) {
  std::map<int, QPushButton*> buttons;
  auto* column = new QVBoxLayout;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    auto* button = new QPushButton(texts[i].caption, parent);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(texts[i].index));
    button->setToolTip(texts[i].toolTip);
    button->setAutoDefault(false);
    if (i == lower) column->addStretch();
    column->addWidget(button);
    buttons[texts[i].index] = button;
  }
  layout->addLayout(column);
  return buttons;
}

}  // namespace scorvane::forms
