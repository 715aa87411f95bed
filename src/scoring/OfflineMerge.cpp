#include "scoring/OfflineMerge.h"

#include <memory>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "common/SqlText.h"
#include "scoring/DriverIdentity.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace scorvane::scoring {
namespace {

constexpr int kPasses = 3;

bool UsesNewCriteria(std::int16_t simType) {
  return simType >= common::kNascarRacing4 && simType <= common::kNascarRacing2003;
}

std::string_view CriteriaFilter(std::int16_t simType) {
  return UsesNewCriteria(simType) ? " WHERE [N4] = True " : " ";
}

class Merger {
 public:
  Merger(engine::Database& league, common::ProcessState& state, common::Progress& progress, int drivers)
      : league_(league), state_(state), progress_(progress), column_(PointColumn()) {
    progress_.SetMaximum(kPasses * drivers);
  }

  void Run() {
    league_.Execute(
        "DELETE * FROM STNStats A WHERE (SELECT Count(B.STNStatsID) AS NumRaces "
        "FROM STNStats AS B WHERE ((B.DriverName)=A.DriverName);)>1");
    league_.Execute(
        fmt::format("UPDATE STNRace INNER JOIN STNStats ON STNRace.STNRaceID = STNStats.STNRaceID "
                    "SET STNStats.AvgSpeed = Val({});",
                    SpeedText()));
    NumberStarts();
    NumberFinishes(SortClause());
    ApplyBonusPoints(league_, state_, mergedId_, true);
    AddResults(AddRace());
  }

 private:
  // The points that a Legends file states tell which table they are from; they go when the files are merged.
  int PointColumn() {
    if (state_.simType != common::kNascarLegends || state_.useCustomPointSystem) return 0;
    const auto first = league_.OpenRecordset("SELECT TOP 1 STNRaceID FROM STNRace");
    return first.AtEnd() ? 0 : PointStep(league_, first.At(0).ToLong(), true).value_or(0);
  }

  // The files' speeds as Val reads them: it knows the point only.
  std::string SpeedText() const {
    const char decimal = state_.decimalSeparator;
    return decimal == '.' ? "[STNRace].[AvgSpeed]"
                          : fmt::format("Replace([STNRace].[AvgSpeed],'{}','.')", decimal);
  }

  void NumberStarts() {
    auto rows = league_.OpenRecordset("SELECT STNRaceID, Start, Bonus FROM STNStats ORDER BY Qualifying DESC",
                                      engine::RecordsetType::Dynaset);
    for (std::int32_t start = 1; !rows.AtEnd(); ++start, rows.MoveNext()) {
      mergedId_ = rows["STNRaceID"].ToLong();
      rows.Edit();
      rows.Set("Start", start);
      rows.Set("Bonus", 0);
      rows.Update();
      Step();
    }
  }

  std::string SortClause() {
    std::string terms;
    auto criteria = league_.OpenRecordset(
        fmt::format("SELECT Query FROM RankCriteria{}ORDER BY Priority", CriteriaFilter(state_.simType)));
    for (; !criteria.AtEnd(); criteria.MoveNext()) {
      const std::string& term = criteria.At(0).Text();
      if (term.find_first_not_of(' ') == std::string::npos) continue;
      terms += terms.empty() ? "" : ", ";
      terms += term;
    }
    return " ORDER BY " + (terms.empty() ? "Finish" : terms);
  }

  void NumberFinishes(const std::string& sortClause) {
    auto rows =
        league_.OpenRecordset("SELECT STNRaceID, Finish, Points, PrizeMoney FROM STNStats " + sortClause,
                              engine::RecordsetType::Dynaset, engine::kFileTextLimits);
    for (std::int32_t finish = 1; !rows.AtEnd(); ++finish, rows.MoveNext()) {
      Score score = ScoreByPosition(state_, finish, column_);
      rows.Edit();
      rows.Set("STNRaceID", mergedId_);
      rows.Set("Finish", finish);
      rows.Set("Points", std::move(score.points));
      if (state_.useCustomPointSystem) rows.Set("PrizeMoney", std::move(score.prizeMoney));
      rows.Update();
      Step();
    }
  }

  std::int32_t AddRace() {
    const auto race = league_.OpenRecordset("SELECT * FROM STNRace");
    league_.Execute(fmt::format(
        "INSERT INTO Race (Name, FileName, Length, Laps, Weather) VALUES ({},'Merged',{},{},{})",
        Quoted(race["Name"]), Quoted(race["Length"]), Plain(race["Laps"]), Quoted(race["Weather"])));
    return common::GetMaxID(league_, "Race", "RaceID");
  }

  void AddResults(std::int32_t raceId) {
    for (auto rows = league_.OpenRecordset("SELECT * FROM STNStats"); !rows.AtEnd(); rows.MoveNext()) {
      const std::int32_t driver = FindOrAddDriver(league_, rows["DriverName"].Text());
      league_.Execute(fmt::format(
          "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, "
          "LapsLed, Status, Points, Bonus, PrizeMoney, Qualifying, AvgSpeed) "
          "VALUES ({},{},{},{},{},{},{},{},{},{},{},{})",
          raceId, driver, Plain(rows["Start"]), Plain(rows["Finish"]), Plain(rows["LapsRun"]),
          Plain(rows["LapsLed"]), Quoted(rows["ReasonOut"]), Plain(rows["Points"]), Plain(rows["Bonus"]),
          Quoted(rows["PrizeMoney"]), Quoted(rows["Qualifying"]), Quoted(rows["AvgSpeed"])));
      Step();
    }
  }

  std::string Quoted(const engine::Value& value) const {
    return common::QuoteSQL(value, state_.decimalSeparator);
  }
  static std::string Plain(const engine::Value& value) {
    return value.IsNull() ? "NULL" : std::to_string(value.ToLong());
  }
  void Step() { progress_.SetValue(++done_); }

  engine::Database& league_;
  common::ProcessState& state_;
  common::Progress& progress_;
  const int column_;           // of the point table
  std::int32_t mergedId_ = 0;  // the staged race that all results come to belong to
  int done_ = 0;
};

}  // namespace

bool MergeOfflineEvent(engine::Database& league, common::ProcessState& state, common::UserInterface& ui) {
  const auto progress = ui.StartProgress("Importing Results", 0);
  progress->SetInfo("Merging...");
  const std::int32_t drivers =
      league
          .OpenRecordset(
              "SELECT Count(*) AS NumUnique FROM STNStats A "
              "WHERE (SELECT Count(B.STNStatsID) AS NumRaces "
              "FROM STNStats AS B WHERE ((B.DriverName)=A.DriverName);)=1")["NumUnique"]
          .ToLong();
  if (drivers == 0) {
    ui.ShowMessage(
        {"There are no unique drivers!  All duplicate drivers\r\nare assumed to be AI drivers and are "
         "ignored!",
         "Warning", common::MessageIcon::Exclamation});
    return false;
  }
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::Keep);
  Merger(league, state, *progress, drivers).Run();
  unit.Commit();
  return true;
}

std::vector<RankCriterion> ListRankCriteria(engine::Database& league, std::int16_t simType) {
  std::vector<RankCriterion> criteria;
  auto rows = league.OpenRecordset(
      fmt::format("SELECT * FROM RankCriteria{}ORDER BY Priority", CriteriaFilter(simType)));
  for (; !rows.AtEnd(); rows.MoveNext())
    criteria.push_back({rows["RankCriteriaID"].ToLong(), rows["Name"].ToText()});
  return criteria;
}

void StoreRankCriteria(engine::Database& league, std::int16_t simType, const std::vector<std::int32_t>& ids) {
  engine::UnitOfWork unit(league);
  int priority = 0;
  for (const std::int32_t id : ids)
    league.Execute(
        fmt::format("UPDATE RankCriteria SET Priority={} WHERE RankCriteriaID={}", ++priority, id));
  if (UsesNewCriteria(simType)) league.Execute("UPDATE RankCriteria SET Priority=9999 WHERE [N4]=False");
  unit.Commit();
}

}  // namespace scorvane::scoring
