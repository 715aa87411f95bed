#include "forms/MatrixModel.h"

#include <QCoreApplication>
#include <QFont>
#include <algorithm>

#include "forms/Undoing.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

QString Say(const char* text) {
  return QCoreApplication::translate("MatrixModel", text);
}

}  // namespace

void MatrixModel::Show(const site::SiteModel* season, Cells cells) {
  beginResetModel();
  season_ = season;
  cells_ = cells;
  drivers_.clear();
  if (season != nullptr) {
    drivers_ = season->standings;
    // Who stands in no table comes last.
    for (std::uint32_t d = 0; d < season->drivers.size(); ++d)
      if (season->drivers[d].position == 0 && !season->drivers[d].results.empty()) drivers_.push_back(d);
  }
  endResetModel();
}

int MatrixModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(drivers_.size());
}

int MatrixModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() || season_ == nullptr ? 0 : static_cast<int>(season_->races.size()) + 1;
}

QVariant MatrixModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (season_ == nullptr || section < 0) return {};
  if (orientation == Qt::Vertical) {
    if (role != Qt::DisplayRole || section >= rowCount()) return {};
    const site::SiteDriver& driver = season_->drivers[drivers_[static_cast<std::size_t>(section)]];
    const QString place = driver.position == 0 ? QStringLiteral("--") : QString::number(driver.position);
    return place + QLatin1Char(' ') + Q(driver.name);
  }
  if (section >= columnCount()) return {};
  if (section == 0) return role == Qt::DisplayRole ? QVariant(Say("Points")) : QVariant();
  const QString race = Q(RaceName(season_->races[static_cast<std::size_t>(section) - 1]));
  switch (role) {
    case Qt::DisplayRole:
      return QString::number(section);
    case Qt::ToolTipRole:
      return ToolTipText(race);
    case Qt::AccessibleTextRole:
      return QStringLiteral("%1 %2").arg(section).arg(race);
    default:
      return {};
  }
}

const site::SiteResult* MatrixModel::ResultAt(const QModelIndex& index) const {
  const auto race = static_cast<std::uint32_t>(index.column() - 1);
  const auto& results = season_->drivers[drivers_[static_cast<std::size_t>(index.row())]].results;
  const auto found = std::lower_bound(
      results.begin(), results.end(), race,
      [this](std::uint32_t result, std::uint32_t wanted) { return season_->results[result].race < wanted; });
  if (found == results.end() || season_->results[*found].race != race) return nullptr;
  return &season_->results[*found];
}

QVariant MatrixModel::TotalData(const site::SiteDriver& driver, int role) const {
  if (role == Qt::DisplayRole) return QString::number(driver.Points());
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
  return {};
}

QVariant MatrixModel::data(const QModelIndex& index, int role) const {
  if (season_ == nullptr || index.row() >= rowCount() || index.column() >= columnCount()) return {};
  const site::SiteDriver& driver = season_->drivers[drivers_[static_cast<std::size_t>(index.row())]];
  if (index.column() == 0) return TotalData(driver, role);
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::Alignment(Qt::AlignCenter));
  const site::SiteResult* result = ResultAt(index);
  if (result == nullptr) return {};
  const bool won = result->finish == std::int16_t{1};
  const auto number = [](const auto& known) {
    return known ? QString::number(*known) : QStringLiteral("--");
  };
  const QString shown = cells_ == Cells::Finish ? number(result->finish) : number(result->points);
  switch (role) {
    case Qt::DisplayRole:
      return shown;
    case Qt::FontRole: {
      if (!won && !result->dropped) return {};
      QFont font;
      font.setBold(won);
      font.setStrikeOut(result->dropped);
      return font;
    }
    // What the font says, in words.
    case Qt::AccessibleTextRole:
      return shown + (won ? Say(", won") : QString()) + (result->dropped ? Say(", dropped") : QString());
    case Qt::ToolTipRole:
      return ToolTipText(Say("%1, %2: finish %3, %4 points%5")
                             .arg(Q(driver.name), Q(RaceName(season_->races[result->race])),
                                  number(result->finish), number(result->points),
                                  result->dropped ? Say(", dropped") : QString()));
    default:
      return {};
  }
}

}  // namespace scorvane::forms
