#include "championship/Title.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "championship/Reports.h"
#include "championship/Standings.h"

namespace scorvane::championship {
namespace {

using engine::Value;

// The standings when one driver wins all that is to come, or nobody starts.
class Futures {
 public:
  Futures(Season season, int dropped, const PlayoffFormat* playoff, int remaining, const RaceMost& most)
      : season_(std::move(season)),
        dropped_(dropped),
        playoff_(playoff),
        first_(season_.races.size()),
        most_(most) {
    season_.races.resize(first_ + static_cast<std::size_t>(remaining),
                         std::numeric_limits<std::int32_t>::max());
  }

  std::vector<Standing> NobodyStarts() const { return ComputeStandings(season_, dropped_, playoff_); }

  std::vector<Standing> Wins(std::size_t driver) {
    std::vector<SeasonResult>& results = season_.drivers[driver].results;
    const std::vector<SeasonResult> kept = results;
    SeasonResult win;
    win.id = std::numeric_limits<std::int32_t>::max();
    win.finish = 1;
    win.points = most_.points;
    win.bonus = most_.bonus;
    for (win.race = first_; win.race < season_.races.size(); ++win.race) results.push_back(win);
    season_.SortResultsOf(season_.drivers[driver]);
    auto table = ComputeStandings(season_, dropped_, playoff_);
    results = kept;
    return table;
  }

 private:
  Season season_;
  const int dropped_;
  const PlayoffFormat* playoff_;
  const std::size_t first_;
  const RaceMost most_;
};

const Standing* Find(const std::vector<Standing>& table, std::size_t driver) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const Standing& standing) { return standing.driver == driver; });
  return found == table.end() ? nullptr : &*found;
}

// Nothing but the name would tell them apart.
bool Level(const Standing& a, const Standing& b) {
  return a.tier == b.tier && a.points == b.points && CountBack(a.totals, b.totals) == 0;
}

// What `behind` must gain to stand in front of `ahead`.
std::int64_t Gap(const Standing& ahead, const Standing& behind) {
  return ahead.points - behind.points + (CountBack(behind.totals, ahead.totals) > 0 ? 0 : 1);
}

}  // namespace

std::vector<TitleChance> ComputeTitle(Season season, int dropped, const PlayoffFormat* playoff, int remaining,
                                      const RaceMost& most) {
  const std::vector<Standing> now = ComputeStandings(season, dropped, playoff);
  if (now.empty()) return {};
  const std::size_t driven = season.races.size();
  const std::size_t all = driven + static_cast<std::size_t>(remaining);
  const bool cutAhead =
      playoff != nullptr &&
      std::any_of(playoff->stages.begin(), playoff->stages.end(), [&](const PlayoffStage& stage) {
        const auto after = static_cast<std::size_t>(stage.after);
        return after > driven && after <= all;
      });
  Futures futures(std::move(season), dropped, playoff, remaining, most);
  const std::vector<Standing> idle = futures.NobodyStarts();
  const Standing& leader = *Find(idle, now.front().driver);

  std::vector<TitleChance> chances;
  std::int64_t leaderNeeds = 0;
  std::size_t alive = 0;
  for (const Standing& standing : now) {
    TitleChance chance;
    chance.driver = standing.driver;
    chance.points = standing.points;
    const auto table = futures.Wins(standing.driver);
    const Standing& own = *Find(table, standing.driver);
    chance.most = own.points;
    if (Level(own, table.front()) || (cutAhead && own.tier == Standing::In)) {
      chance.state = TitleChance::CanWin;
      ++alive;
      if (standing.driver != leader.driver) {
        chance.needs = std::max<std::int64_t>(0, Gap(leader, *Find(idle, standing.driver)));
        leaderNeeds = std::max(leaderNeeds, Gap(own, leader));
      }
    }
    chances.push_back(chance);
  }
  if (alive == 1 && !cutAhead) {
    for (TitleChance& chance : chances)
      if (chance.state == TitleChance::CanWin) chance.state = TitleChance::Champion;
  }
  // Who takes the most of every race cannot be caught by who is behind him now.
  chances.front().needs = std::min(leaderNeeds, std::int64_t{most.points} * remaining);
  if (cutAhead)
    for (TitleChance& chance : chances) chance.needs.reset();
  return chances;
}

reports::ReportTable RunTitle(engine::Database& league, engine::Database& templateDb,
                              const common::ProcessState& state, int remaining,
                              std::optional<std::int32_t> afterRace, RaceMost& most) {
  const auto playoff = ReadPlayoff(league);
  Season season = ReadSeasonAfter(league, playoff, afterRace);
  most = MostOfARace(ReadRaceRules(league, templateDb, state, season));
  std::vector<std::string> names;
  for (const SeasonDriver& driver : season.drivers) names.push_back(driver.name);
  const auto chances =
      ComputeTitle(std::move(season), state.droppedRaces, playoff ? &*playoff : nullptr, remaining, most);

  const auto number = [](const char* name, int width, const char* field, const char* format = "0") {
    return reports::ReportColumn{name, width, reports::kCentred, format, false, field};
  };
  reports::ReportTable table;
  table.columns = {{"Driver", 2200, 0, "", false, "DriverName"}, number("Points", 750, "Points"),
                   number("Interval", 800, "Interval", "0;;--"), number("Most", 750, "Most"),
                   {"Title", 1000, 0, "", false, "Title"},       number("Needs", 750, "Needs")};
  constexpr const char* kStates[] = {"champion", "can win", "out"};
  for (const TitleChance& chance : chances) {
    const auto value = [](std::int64_t sum) { return Value(static_cast<double>(sum)); };
    table.rows.push_back({Value(names[chance.driver]), value(chance.points),
                          value(chances.front().points - chance.points), value(chance.most),
                          Value(kStates[chance.state]), chance.needs ? value(*chance.needs) : Value()});
  }
  return table;
}

}  // namespace scorvane::championship
