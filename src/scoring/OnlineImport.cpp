#include "scoring/OnlineImport.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include <fmt/format.h>

#include "common/Formats.h"
#include "common/SqlText.h"
#include "scoring/DriverIdentity.h"

namespace scorvane::scoring {
namespace {

// The fields of a recordset, found once.
template <std::size_t count>
std::array<std::size_t, count> FieldIndexes(const engine::Recordset& rows,
                                            const std::array<const char*, count>& names) {
  std::array<std::size_t, count> indexes;
  for (std::size_t i = 0; i < count; ++i) indexes[i] = rows.FieldIndex(names[i]);
  return indexes;
}

class Importer {
 public:
  Importer(engine::Database& league, char decimal, common::Progress& progress)
      : league_(league), decimal_(decimal), progress_(progress) {}

  void Run() {
    auto races = league_.OpenRecordset("SELECT * FROM STNRace");
    for (; !races.AtEnd(); races.MoveNext()) {
      AddRace(races);
      AddResults(races["STNRaceID"].ToLong(), common::GetMaxID(league_, "Race", "RaceID"));
    }
  }

 private:
  void AddRace(const engine::Recordset& race) {
    static constexpr std::array<const char*, 10> kFields = {
        "Name",     "FileName",      "Length",   "Laps",        "RaceTime",
        "AvgSpeed", "VictoryMargin", "Cautions", "LeadChanges", "Weather"};
    sql_ =
        "INSERT INTO Race (Name, FileName, Length, Laps, RaceTime, "
        "AvgSpeed, VictoryMargin, Cautions, LeadChanges, Weather) VALUES (";
    for (const char* field : kFields) {
      AppendQuotedValue(race[field]);
      sql_ += ',';
    }
    sql_.back() = ')';
    league_.Execute(sql_);
  }

  void AddResults(std::int32_t stagedRaceId, std::int32_t raceId) {
    enum Field {
      kName,
      kStart,
      kFinish,
      kLapsRun,
      kLapsLed,
      kReasonOut,
      kPoints,
      kBonus,
      kPrizeMoney,
      kQualifying
    };
    auto rows = league_.OpenRecordset(fmt::format("SELECT * FROM STNStats WHERE STNRaceID={}", stagedRaceId));
    const auto fields = FieldIndexes<10>(rows, {"DriverName", "Start", "Finish", "LapsRun", "LapsLed",
                                                "ReasonOut", "Points", "Bonus", "PrizeMoney", "Qualifying"});
    for (; !rows.AtEnd(); rows.MoveNext()) {
      progress_.SetValue(++done_);
      const std::string& name = rows.At(fields[kName]).Text();
      if (common::TrimBlanks(name).empty()) continue;
      sql_ =
          "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, "
          "LapsLed, Status, Points, Bonus, PrizeMoney, Qualifying) "
          "VALUES (";
      common::AppendNumber(sql_, raceId);
      sql_ += ',';
      common::AppendNumber(sql_, DriverKey(name));
      for (const Field field : {kStart, kFinish, kLapsRun, kLapsLed}) AppendNumber(rows.At(fields[field]));
      sql_ += ',';
      AppendQuotedValue(rows.At(fields[kReasonOut]));
      for (const Field field : {kPoints, kBonus}) AppendNumber(rows.At(fields[field]));
      sql_ += ',';
      AppendQuotedValue(rows.At(fields[kPrizeMoney]));
      sql_ += ',';
      AppendQuotedValue(rows.At(fields[kQualifying]));
      sql_ += ')';
      league_.Execute(sql_);
    }
  }

  // A season has the same few drivers in every race: each spelling of a name is looked up once.
  std::int32_t DriverKey(const std::string& name) {
    const auto known = drivers_.find(name);
    if (known != drivers_.end()) return known->second;
    const std::int32_t key = FindOrAddDriver(league_, name);
    drivers_.emplace(name, key);
    return key;
  }

  void AppendNumber(const engine::Value& value) {
    sql_ += ',';
    if (value.IsNull()) {
      sql_ += "NULL";
    } else {
      common::AppendNumber(sql_, value.ToLong());
    }
  }

  void AppendQuotedValue(const engine::Value& value) {
    if (value.IsText()) {
      common::AppendQuoted(sql_, value.Text());
    } else {
      common::AppendQuoted(sql_, value.ToText(decimal_));
    }
  }

  engine::Database& league_;
  char decimal_;
  common::Progress& progress_;
  int done_ = 0;
  std::string sql_;  // the statement being built; one buffer for all of them
  std::unordered_map<std::string, std::int32_t> drivers_;
};

}  // namespace

void ImportStagedRaces(engine::Database& league, common::ProcessState& state, common::UserInterface& ui) {
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::Keep);
  const std::int32_t count =
      league.OpenRecordset("SELECT Count(STNStatsID) As NumRecs FROM STNStats")["NumRecs"].ToLong();
  const auto progress = ui.StartProgress("Importing Results", count);
  progress->SetInfo("Progress...");
  Importer(league, state.decimalSeparator, *progress).Run();
  unit.Commit();
}

}  // namespace scorvane::scoring
