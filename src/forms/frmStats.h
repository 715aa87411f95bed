// The standings view: one report of the league at a time.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <array>
#include <cstdint>
#include <optional>

#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"
#include "reports/DroppedRaces.h"

namespace scorvane::forms {

class frmStats : public QDialog {
 public:
  // Marks the dropped races and shows the first report. What goes wrong is said in a message; the view then
  // shows what it can.
  explicit frmStats(FormContext& context, QWidget* parent = nullptr);

 private:
  void Load();
  void RunReport();
  void EditReportColumns();
  void ExportStandingsHtml();
  std::int32_t ReportID() const;

  FormContext& context_;
  QComboBox* cboStat_;
  QLabel* caption_;
  SelectionGrid* fgCalcs_;
  std::array<QPushButton*, 2> buttons_{};
  std::optional<reports::DroppedMarks> marks_;  // none where marking them failed
};

}  // namespace scorvane::forms
