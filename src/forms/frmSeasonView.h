// The season at a glance, beside the main window: the points race by race, the matrix, a driver's season and
// who gained places in a race. It only looks; Refresh shows what the league holds now.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QScrollArea>
#include <QTabWidget>
#include <QTableView>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "forms/FormContext.h"
#include "forms/MatrixModel.h"
#include "forms/widgets/ChartView.h"
#include "forms/widgets/CheckList.h"
#include "forms/widgets/SelectionGrid.h"
#include "site/Model.h"

namespace scorvane::forms {

class frmSeasonView : public QDialog {
 public:
  explicit frmSeasonView(FormContext& context, QWidget* parent = nullptr);

  // To be called after every command. Drivers, driver and race that are chosen stay chosen while they are
  // there; another league begins with its first ten drivers. What cannot be read is said in the window.
  void Refresh();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  enum Tab { kPoints, kMatrix, kDriver, kRace, kTabs };

  QWidget* BuildPoints();
  QWidget* BuildMatrix();
  QWidget* BuildDriver();
  QWidget* BuildRace();
  void Read();
  void FillChoices(bool anew);
  void Tick(int count);
  // What the tab in front shows; the others when they come to the front.
  void ShowTab();
  void ShowPoints();
  void ShowMatrix();
  void ShowDriver();
  void ShowRace();
  void FillResults(const site::SiteDriver& driver, std::uint32_t index);

  FormContext& context_;
  site::SiteModel season_;
  std::string league_;  // the path of the one that is shown; empty for none
  QString hint_;        // why there is nothing to see
  std::array<bool, kTabs> shown_{};
  QTabWidget* tabs_ = nullptr;
  CheckList* lstDrivers_ = nullptr;
  QLabel* lblMost_ = nullptr;
  ChartView* chtPoints_ = nullptr;
  QComboBox* cboCells_ = nullptr;
  QTableView* fgMatrix_ = nullptr;
  MatrixModel* matrix_ = nullptr;
  QComboBox* cboDriver_ = nullptr;
  QLabel* lblSeason_ = nullptr;
  ChartView* chtFinishes_ = nullptr;
  SelectionGrid* fgResults_ = nullptr;
  QComboBox* cboRace_ = nullptr;
  ChartView* chtMovers_ = nullptr;
};

}  // namespace scorvane::forms
