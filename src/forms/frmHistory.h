// The history: what was done to the open league, newest first, and the way back to before any of it.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <functional>
#include <map>
#include <vector>

#include "engine/Changes.h"
#include "forms/FormContext.h"
#include "forms/Undoing.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmHistory : public QDialog {
 public:
  // `changed` is called whenever the league holds other rows than before. Throws EngineError.
  frmHistory(FormContext& context, std::function<void()> changed, QWidget* parent = nullptr);

 private:
  void Load();
  void UpdateButtons();
  // The chosen change, when it is one that can be taken back; null otherwise.
  const engine::LoggedChange* Chosen() const;
  void Step(Direction direction);
  void GoBack();
  void Forget();

  FormContext& context_;
  std::function<void()> changed_;
  std::vector<engine::LoggedChange> changes_;  // newest first
  SelectionGrid* grid_;
  std::map<int, QPushButton*> buttons_;
};

}  // namespace scorvane::forms
