// Publishing the season as a site: where to, how it looks, and its address. What is chosen is kept in the
// league when it is published.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "forms/FormContext.h"
#include "forms/widgets/ColorSquare.h"
#include "forms/widgets/EntryBox.h"
#include "site/SiteSettings.h"

namespace scorvane::forms {

class frmPublish : public QDialog {
 public:
  explicit frmPublish(FormContext& context, QWidget* parent = nullptr);

 private:
  QWidget* BuildFields();
  void Load();
  void BrowseFolder();
  void BrowseTheme();
  void BrowseLogo();
  void ChooseDrivers();
  void ShowChart();
  void ShowTheme(const std::string& theme);
  void ShowLogo();
  // What can be pressed.
  void UpdateButtons();
  site::SiteSettings Settings() const;
  void Publish();
  void OpenSite();

  FormContext& context_;
  std::string logo_;                 // the picture's bytes
  std::vector<std::int32_t> chart_;  // whose points are drawn; empty: the first ten
  std::string front_;                // of the site in the folder; empty when there is none
  EntryBox* txtFolder_ = nullptr;
  QComboBox* cboTheme_ = nullptr;
  EntryBox* txtBaseUrl_ = nullptr;
  QCheckBox* chkAccent_ = nullptr;
  ColorSquare* lblAccent_ = nullptr;
  QLabel* lblLogo_ = nullptr;
  QPushButton* cmdNoLogo_ = nullptr;
  QLabel* lblChart_ = nullptr;
  QPushButton* cmdFirstTen_ = nullptr;
  QLabel* lblOutcome_ = nullptr;
  std::map<int, QPushButton*> buttons_;
};

}  // namespace scorvane::forms
