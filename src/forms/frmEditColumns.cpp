#include "forms/frmEditColumns.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

enum Button { kSave, kCancel, kSelectAll, kDeselectAll, kUp, kDown };

}  // namespace

frmEditColumns::frmEditColumns(FormContext& context, std::int32_t reportId, const QString& reportName,
                               QWidget* parent)
    : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmEditColumns"));
  setWindowTitle(tr("Columns for \"%1\"").arg(reportName));
  lstColumns_ = new QListWidget(this);
  lstColumns_->setObjectName(QStringLiteral("lstColumns"));
  lstColumns_->setMinimumHeight(lstColumns_->fontMetrics().height() * 17);
  lstColumns_->installEventFilter(this);
  auto* label = new QLabel(tr("Select the columns you want to see:"), this);
  label->setBuddy(lstColumns_);
  lstColumns_->setAccessibleName(label->text());
  for (const reports::ColumnChoice& column : reports::ReadColumnChoices(context.templateDb, reportId)) {
    auto* item = new QListWidgetItem(Q(column.name), lstColumns_);
    item->setData(Qt::UserRole, column.reportFieldId);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(column.shown ? Qt::Checked : Qt::Unchecked);
  }

  auto* left = new QVBoxLayout;
  left->addWidget(label);
  left->addWidget(lstColumns_);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left, 1);
  buttons_ = AddButtonColumn(layout, this,
                             {{kUp, tr("Up"), tr("Move column up (Ctrl-Up)")},
                              {kDown, tr("Down"), tr("Move column down (Ctrl-Down))")},
                              {kSelectAll, tr("Select All"), tr("Select all columns to be seen")},
                              {kDeselectAll, tr("Deselect All"), tr("Select all columns to not be seen")},
                              {kSave, tr("Save"), QString()},
                              {kCancel, tr("Cancel"), QString()}},
                             4);

  // Ctrl-Up and Ctrl-Down work wherever the keyboard is.
  for (QPushButton* button : findChildren<QPushButton*>()) button->installEventFilter(this);
  connect(lstColumns_, &QListWidget::itemChanged, this, [this] { UpdateButtons(); });
  connect(lstColumns_, &QListWidget::currentRowChanged, this, [this] { UpdateButtons(); });
  connect(buttons_[kUp], &QPushButton::clicked, this, [this] { Move(-1); });
  connect(buttons_[kDown], &QPushButton::clicked, this, [this] { Move(1); });
  connect(buttons_[kSelectAll], &QPushButton::clicked, this, [this] { TickAll(true); });
  connect(buttons_[kDeselectAll], &QPushButton::clicked, this, [this] { TickAll(false); });
  connect(buttons_[kSave], &QPushButton::clicked, this, &frmEditColumns::Save);
  connect(buttons_[kCancel], &QPushButton::clicked, this, &QDialog::reject);
  lstColumns_->setCurrentRow(0);
  UpdateButtons();
  lstColumns_->setFocus();
}

bool frmEditColumns::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool moves = key->key() == Qt::Key_Up || key->key() == Qt::Key_Down;
    if (moves && (key->modifiers() & Qt::ControlModifier) != 0) {
      const Qt::KeyboardModifiers held = key->modifiers() & ~Qt::KeypadModifier;
      if (held == Qt::ControlModifier) Move(key->key() == Qt::Key_Up ? -1 : 1);
      return true;  // the list's own cursor stays
    }
  }
  return QDialog::eventFilter(watched, event);
}

void frmEditColumns::Move(int step) {
  const int row = lstColumns_->currentRow();
  const int target = row + step;
  if (row < 0 || target < 0 || target >= lstColumns_->count()) return;
  QListWidgetItem* item = lstColumns_->takeItem(row);
  lstColumns_->insertItem(target, item);
  lstColumns_->setCurrentRow(target);
  UpdateButtons();
}

void frmEditColumns::TickAll(bool ticked) {
  for (int row = 0; row < lstColumns_->count(); ++row)
    lstColumns_->item(row)->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
}

void frmEditColumns::UpdateButtons() {
  const int row = lstColumns_->currentRow();
  buttons_[kUp]->setEnabled(row > 0);
  buttons_[kDown]->setEnabled(row >= 0 && row < lstColumns_->count() - 1);
  buttons_[kSave]->setEnabled(reports::CanSave(Choices()));
}

std::vector<reports::ColumnChoice> frmEditColumns::Choices() const {
  std::vector<reports::ColumnChoice> choices;
  for (int row = 0; row < lstColumns_->count(); ++row) {
    const QListWidgetItem* item = lstColumns_->item(row);
    choices.push_back(
        {item->data(Qt::UserRole).toInt(), Utf8(item->text()), item->checkState() == Qt::Checked});
  }
  return choices;
}

void frmEditColumns::Save() {
  if (!Guarded(context_.ui, [&] { reports::SaveColumnChoices(context_.templateDb, Choices()); })) return;
  cancelled_ = false;
  accept();
}

}  // namespace scorvane::forms
