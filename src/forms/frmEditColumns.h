// The columns editor: which columns of a report are shown, and in which order.
#pragma once

#include <QDialog>
#include <QListWidget>
#include <QPushButton>
#include <map>

#include "forms/FormContext.h"
#include "reports/Columns.h"

namespace scorvane::forms {

class frmEditColumns : public QDialog {
 public:
  frmEditColumns(FormContext& context, std::int32_t reportId, const QString& reportName,
                 QWidget* parent = nullptr);

  bool Cancelled() const { return cancelled_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Move(int step);
  void TickAll(bool ticked);
  void UpdateButtons();
  std::vector<reports::ColumnChoice> Choices() const;
  void Save();

  FormContext& context_;
  QListWidget* lstColumns_;
  std::map<int, QPushButton*> buttons_;
  bool cancelled_ = true;
};

}  // namespace scorvane::forms
