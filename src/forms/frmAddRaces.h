// The Import dialog: result files are read into an import list, looked at, and become races of the league.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "app/ImportFiles.h"
#include "forms/FormContext.h"

namespace scorvane::forms {

class frmAddRaces : public QDialog {
 public:
  // Empties the staging tables of the open league. Throws EngineError.
  explicit frmAddRaces(FormContext& context, QWidget* parent = nullptr);

  // While files are read, or imported, the dialog is hidden. That does not end it, as it would end Qt's own
  // loop: an answer does.
  int exec() override;

  // Reads files into the list, and of folders the result files in them, as Add does.
  void AddPaths(const std::vector<std::string>& paths);

  // As AddPaths and Import, but the dialog stays away: false when a file failed, an answer was No or nothing
  // was imported; the files that can be are in the list then.
  bool ImportPaths(const std::vector<std::string>& paths);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  enum Button { kAdd, kRemove, kEdit, kImport, kCancel, kButtons };

  QWidget* BuildList();
  QLayout* BuildOptions();
  QLayout* BuildButtons();
  void AddFiles();
  void ReadFiles(const std::vector<std::string>& paths);
  // Whether all of them are in the list now.
  bool StageFiles(const std::vector<std::string>& paths);
  void ListFile(const app::StagedFile& file);
  void RemoveFiles();
  void EditFile();
  bool MeansToLoseEdits();
  bool MeansDuplicates();
  void Import();
  bool ImportStaged();
  void SelectionChanged();
  void SelectFirst();
  void ShowAgain();

  FormContext& context_;
  bool showAlerts_;
  std::set<int> edited_;       // the staged races that were edited here
  std::string defaultFolder_;  // files that lie in it are listed without their folder
  QListWidget* lstRaces_ = nullptr;
  QComboBox* cboLRM_ = nullptr;
  std::array<QPushButton*, kButtons> buttons_{};
};

}  // namespace scorvane::forms
