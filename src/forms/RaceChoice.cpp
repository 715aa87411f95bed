#include "forms/RaceChoice.h"

#include <QSignalBlocker>

#include "app/RaceList.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kFewestCharacters = 16;

}  // namespace

RaceChoice::RaceChoice(const QString& name, const QString& reader, QWidget* parent) : QComboBox(parent) {
  setObjectName(name);
  setAccessibleName(reader);
  // A long name widens its list, not the window.
  setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(kFewestCharacters);
}

void RaceChoice::Fill(engine::Database& league, const Others& others) {
  const QSignalBlocker quiet(this);
  const QVariant before = currentData();
  const bool filled = count() > 0;
  clear();
  for (const auto& [text, race] : others) addItem(text, race ? QVariant(*race) : QVariant());
  for (const app::ListedRace& race : app::ListRaces(league)) addItem(RaceText(race.id, race.name), race.id);
  if (const int index = filled && before.isValid() ? findData(before) : -1; index >= 0)
    setCurrentIndex(index);
}

std::optional<std::int32_t> RaceChoice::Chosen() const {
  const QVariant chosen = currentData();
  return chosen.isValid() ? std::optional<std::int32_t>(chosen.toInt()) : std::nullopt;
}

QString RaceText(std::int32_t id, const std::string& name) {
  return QStringLiteral("%1 %2").arg(id).arg(Q(name)).trimmed();
}

}  // namespace scorvane::forms
