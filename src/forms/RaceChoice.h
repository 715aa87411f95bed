// A box in which a race of the league is chosen, behind what else may be said instead.
#pragma once

#include <QComboBox>
#include <QString>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "engine/Database.h"

namespace scorvane::forms {

class RaceChoice : public QComboBox {
 public:
  // What stands above the races; none stands for no race.
  using Others = std::vector<std::pair<QString, std::optional<std::int32_t>>>;

  RaceChoice(const QString& name, const QString& reader, QWidget* parent);

  // Fills the box anew; what was chosen stays chosen while it is there. Throws EngineError.
  void Fill(engine::Database& league, const Others& others);
  std::optional<std::int32_t> Chosen() const;
};

// "12 Dover": a race's number and its name.
QString RaceText(std::int32_t id, const std::string& name);

}  // namespace scorvane::forms
