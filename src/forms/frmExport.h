// The export dialog: the texts, colours, table and font of a page, kept in the league's settings.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <array>

#include "forms/FormContext.h"
#include "forms/widgets/ColorSquare.h"
#include "forms/widgets/EntryBox.h"
#include "reports/PageExport.h"

namespace scorvane::forms {

class frmExport : public QDialog {
 public:
  frmExport(FormContext& context, reports::PageSubject subject, QWidget* parent = nullptr);

  // Replace what the league's settings offer.
  void ReportName(const std::string& name);
  void Heading(const std::string& heading);
  void Caption(const std::string& caption);

  reports::PageTexts Texts() const;
  reports::PageLook Look() const;
  bool Cancelled() const { return cancelled_; }

 private:
  QWidget* BuildTextTab();
  QWidget* BuildTableTab();
  QWidget* BuildPageTab();
  ColorSquare* Square(int index, const QString& name);
  QPlainTextEdit* TextBox(const char* name, const QString& label);
  void Load();
  void ApplyRules();
  void LeaveLayoutBox(std::size_t index);
  void BrowseImage();
  void Preview();
  void Export();

  FormContext& context_;
  reports::PageSubject subject_;
  QPlainTextEdit* txtHeading_ = nullptr;
  QPlainTextEdit* txtRepName_ = nullptr;
  QPlainTextEdit* txtCaption_ = nullptr;
  std::array<ColorSquare*, 18> lblColor_{};
  std::array<QLabel*, 10> lblRowColors_{};
  std::array<QCheckBox*, 5> chkRowColors_{};
  std::array<EntryBox*, 3> txtLayout_{};
  QCheckBox* chkBGImage_ = nullptr;
  EntryBox* txtBGImage_ = nullptr;
  QPushButton* browse_ = nullptr;
  QComboBox* cboFontList_ = nullptr;
  QComboBox* cboFontSize_ = nullptr;
  bool cancelled_ = true;
};

}  // namespace scorvane::forms
