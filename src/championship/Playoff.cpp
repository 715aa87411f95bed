#include "championship/Playoff.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "championship/Presets.h"
#include "common/Formats.h"
#include "common/RuleError.h"
#include "common/SqlText.h"
#include "db/Tables.h"
#include "engine/Names.h"

namespace scorvane::championship {
namespace {

using Json = nlohmann::ordered_json;
using common::RuleError;

constexpr int kMostDepth = 8;
constexpr std::size_t kMostName = 50;  // bytes
constexpr int kMostPoints = 1000000;
constexpr std::size_t kMostLate = 100;

// Reads the members of one object; what nobody asked for is a mistake of the writer's.
class Reader {
 public:
  Reader(const Json& object, std::string where, std::initializer_list<const char*> known)
      : object_(object), where_(std::move(where)) {
    if (!object.is_object()) throw RuleError(fmt::format("{} is an object: {{ ... }}.", where_));
    for (const auto& [key, value] : object.items()) {
      if (std::find(known.begin(), known.end(), key) != known.end()) continue;
      std::string names;
      for (const char* name : known) names += (names.empty() ? "" : ", ") + std::string(name);
      throw RuleError(fmt::format("{} has \"{}\", which is none of: {}.", where_, Shortened(key), names));
    }
  }

  bool Has(const char* key) const { return object_.contains(key) && !object_[key].is_null(); }
  const Json& operator[](const char* key) const { return object_[key]; }

  int Whole(const char* key, int lowest, int highest, std::optional<int> missing = std::nullopt) const {
    if (!Has(key)) {
      if (missing) return *missing;
      throw RuleError(fmt::format("{} needs \"{}\".", where_, key));
    }
    const Json& value = object_[key];
    const bool whole =
        value.is_number_integer() && !(value.is_number_unsigned() && value.get<std::uint64_t>() > 1U << 31U);
    const std::int64_t number = whole ? value.get<std::int64_t>() : 0;
    if (!whole || number < lowest || number > highest)
      throw RuleError(
          fmt::format("{}: \"{}\" is a whole number from {} to {}.", where_, key, lowest, highest));
    return static_cast<int>(number);
  }

  bool Flag(const char* key, bool missing) const {
    if (!Has(key)) return missing;
    if (!object_[key].is_boolean()) throw RuleError(fmt::format("{}: \"{}\" is true or false.", where_, key));
    return object_[key].get<bool>();
  }

  std::string Name(const char* key, const std::string& missing) const {
    if (!Has(key)) return missing;
    const std::string text = object_[key].is_string() ? object_[key].get<std::string>() : std::string();
    const std::string name(common::TrimBlanks(text));
    if (name.empty() || name.size() > kMostName ||
        std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }))
      throw RuleError(
          fmt::format("{}: \"{}\" is a text of at most {} bytes in one line.", where_, key, kMostName));
    return name;
  }

  const Json& List(const char* key, std::size_t most) const {
    if (!Has(key) || !object_[key].is_array() || object_[key].size() > most)
      throw RuleError(fmt::format("{}: \"{}\" is a list of at most {}.", where_, key, most));
    return object_[key];
  }

  const std::string& Where() const { return where_; }

 private:
  static std::string Shortened(const std::string& key) {
    return key.size() <= kMostName ? key : key.substr(0, kMostName) + "...";
  }

  const Json& object_;
  std::string where_;
};

PlayoffStage ParseStage(const Json& json, std::size_t number, const PlayoffStage* before) {
  const Reader reader(json, fmt::format("Stage {}", number),
                      {"name", "after", "drivers", "by", "winnersWithin", "leaderIsWinner", "within",
                       "wildCards", "wildCardsWithin", "points", "step", "winBonus", "bonusCounts"});
  PlayoffStage stage;
  stage.name = reader.Name("name", fmt::format("Stage {}", number));
  stage.after = reader.Whole("after", 1, kMostRacesBefore);
  stage.drivers = reader.Whole("drivers", 1, kMostStageDrivers);
  if (reader.Has("by")) {
    const Json& by = reader["by"];
    if (by != "points" && by != "wins")
      throw RuleError(fmt::format("{}: \"by\" is \"points\" or \"wins\".", reader.Where()));
    stage.byWins = by == "wins";
  }
  stage.winnersWithin = reader.Whole("winnersWithin", 0, kMostStageDrivers, 0);
  stage.leaderIsWinner = reader.Flag("leaderIsWinner", false);
  stage.within = reader.Whole("within", 0, kMostPoints, 0);
  stage.wildCards = reader.Whole("wildCards", 0, kMostStageDrivers, 0);
  stage.wildCardsWithin = reader.Whole("wildCardsWithin", 0, kMostStageDrivers, 0);
  if (reader.Has("points")) stage.points = reader.Whole("points", -kMostPoints, kMostPoints);
  stage.step = reader.Whole("step", 0, kMostPoints, 0);
  stage.winBonus = reader.Whole("winBonus", 0, kMostPoints, 0);
  stage.bonusCounts = reader.Flag("bonusCounts", true);
  if (!stage.points && (stage.step != 0 || stage.winBonus != 0))
    throw RuleError(
        fmt::format("{}: \"step\" and \"winBonus\" need \"points\" to start from.", reader.Where()));
  if (before != nullptr && stage.after <= before->after)
    throw RuleError(fmt::format("{} begins after more races than the stage before it.", reader.Where()));
  if (before != nullptr && stage.drivers > before->drivers + before->wildCards)
    throw RuleError(fmt::format("{} has no more drivers than the stage before it.", reader.Where()));
  return stage;
}

Json ParseJson(std::string_view text) {
  if (text.size() > kMostPlayoffBytes)
    throw RuleError(fmt::format("A playoff's description has at most {} bytes.", kMostPlayoffBytes));
  const auto callback = [](int depth, Json::parse_event_t, Json&) {
    if (depth > kMostDepth) throw RuleError("A playoff's description is not nested that deeply.");
    return true;
  };
  try {
    return Json::parse(text, callback);
  } catch (const Json::exception& error) {
    const auto* fault = dynamic_cast<const Json::parse_error*>(&error);
    const std::size_t byte = fault != nullptr ? std::min(fault->byte, text.size()) : 0;
    const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(byte), '\n') + 1;
    throw RuleError(fmt::format("A playoff's description is JSON, and in line {} this is none.", line));
  }
}

PlayoffFormat ReadFormat(const Json& json) {
  const Reader reader(json, "A playoff", {"name", "source", "stages", "late"});
  PlayoffFormat format;
  format.name = reader.Name("name", "Playoff");
  for (const Json& stage : reader.List("stages", kMostStages)) {
    format.stages.push_back(
        ParseStage(stage, format.stages.size() + 1, format.stages.empty() ? nullptr : &format.stages.back()));
  }
  if (format.stages.empty()) throw RuleError("A playoff has one stage or more.");
  if (reader.Has("late")) {
    for (const Json& item : reader.List("late", kMostLate)) {
      const Reader late(item, "A late race", {"race", "before"});
      constexpr int kHighest = std::numeric_limits<std::int32_t>::max();
      format.late.push_back({late.Whole("race", 1, kHighest), late.Whole("before", 1, kHighest)});
    }
  }
  return format;
}

}  // namespace

PlayoffFormat ParsePlayoff(std::string_view text) {
  return ReadFormat(ParseJson(text));
}

std::string PlayoffText(const PlayoffFormat& format) {
  Json stages = Json::array();
  for (const PlayoffStage& stage : format.stages) {
    Json json = {{"name", stage.name}, {"after", stage.after}, {"drivers", stage.drivers}};
    if (stage.byWins) json["by"] = "wins";
    const auto number = [&](const char* key, int value) {
      if (value != 0) json[key] = value;
    };
    number("winnersWithin", stage.winnersWithin);
    if (stage.leaderIsWinner) json["leaderIsWinner"] = true;
    number("within", stage.within);
    number("wildCards", stage.wildCards);
    number("wildCardsWithin", stage.wildCardsWithin);
    if (stage.points) json["points"] = *stage.points;
    number("step", stage.step);
    number("winBonus", stage.winBonus);
    if (!stage.bonusCounts) json["bonusCounts"] = false;
    stages.push_back(std::move(json));
  }
  Json json = {{"name", format.name}, {"stages", std::move(stages)}};
  for (const Season::LateRace& late : format.late)
    json["late"].push_back({{"race", late.race}, {"before", late.before}});
  return json.dump(2);
}

int LatestBegin(const PlayoffFormat& format) {
  return kMostRacesBefore - (format.stages.back().after - format.stages.front().after);
}

void BeginAfter(PlayoffFormat& format, int races) {
  const int latest = LatestBegin(format);
  if (races < 1 || races > latest)
    throw RuleError(fmt::format("A playoff begins after 1 to {} races.", latest));
  const int shift = races - format.stages.front().after;
  for (PlayoffStage& stage : format.stages) stage.after += shift;
}

std::vector<PlayoffPreset> ListPlayoffPresets() {
  std::vector<PlayoffPreset> presets;
  for (const PresetFile& file : PlayoffPresetFiles())
    presets.push_back({std::string(file.name), ParseJson(file.text).value("source", "")});
  return presets;
}

PlayoffFormat PresetPlayoff(const std::string& name, std::optional<int> after) {
  std::string names;
  for (const PresetFile& file : PlayoffPresetFiles()) {
    if (!engine::SameName(file.name, common::TrimBlanks(name))) {
      names += (names.empty() ? "" : ", ") + std::string(file.name);
      continue;
    }
    PlayoffFormat format = ParsePlayoff(file.text);
    if (after) BeginAfter(format, *after);
    return format;
  }
  throw RuleError(fmt::format("There is no playoff '{}'. The presets are: {}.", name, names));
}

bool HasPlayoff(engine::Database& league) {
  return league.FindTableDef("Playoff") != nullptr &&
         !league.OpenRecordset("SELECT PlayoffID FROM Playoff WHERE PlayoffID=1").AtEnd();
}

std::optional<PlayoffFormat> ReadPlayoff(engine::Database& league) {
  if (league.FindTableDef("Playoff") == nullptr) return std::nullopt;
  const auto rows = league.OpenRecordset("SELECT Format FROM Playoff WHERE PlayoffID=1");
  if (rows.AtEnd()) return std::nullopt;
  try {
    return ParsePlayoff(rows.At(0).Text());
  } catch (const RuleError& error) {
    throw RuleError(fmt::format("The league's playoff cannot be read: {}", error.what()));
  }
}

void EnsurePlayoffTable(engine::Database& league) {
  if (league.FindTableDef("Playoff") != nullptr) return;
  league.AppendTableDef({"Playoff",
                         {db::Column("PlayoffID", engine::FieldType::Long),
                          db::Column("Format", engine::FieldType::Memo, 0, engine::kVariableField)},
                         {db::PrimaryKey("PlayoffID")}});
}

void StorePlayoff(engine::Database& league, const PlayoffFormat& format) {
  const std::string text = common::QuoteSQL(PlayoffText(format));
  engine::UnitOfWork unit(league);
  if (league.Execute("UPDATE Playoff SET Format=" + text + " WHERE PlayoffID=1") == 0)
    league.Execute("INSERT INTO Playoff (PlayoffID, Format) VALUES (1," + text + ")");
  unit.Commit();
}

void ClearPlayoff(engine::Database& league) {
  league.Execute("DELETE * FROM Playoff");
}

}  // namespace scorvane::championship
