// The matrix of a season for a table: a row a driver in the order of the standings, a column a race.
#pragma once

#include <QAbstractTableModel>
#include <cstdint>
#include <vector>

#include "site/Model.h"

namespace scorvane::forms {

class MatrixModel : public QAbstractTableModel {
 public:
  enum class Cells { Finish, Points };

  using QAbstractTableModel::QAbstractTableModel;

  // The season must live until the next call; null shows nothing.
  void Show(const site::SiteModel* season, Cells cells);

  int rowCount(const QModelIndex& parent = {}) const override;
  // The points of all, then a column a race.
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  // Null where a driver did not drive.
  const site::SiteResult* ResultAt(const QModelIndex& index) const;
  QVariant TotalData(const site::SiteDriver& driver, int role) const;

  const site::SiteModel* season_ = nullptr;
  Cells cells_ = Cells::Finish;
  std::vector<std::uint32_t> drivers_;
};

}  // namespace scorvane::forms
