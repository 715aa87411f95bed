#include "championship/Standings.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace scorvane::championship {
namespace {

class Ranking {
 public:
  Ranking(const Season& season, int dropped) : season_(season), dropped_(dropped) {}

  // The table after the first `races` races, without a playoff.
  std::vector<Standing> After(std::size_t races) const {
    std::vector<Standing> table;
    const std::size_t best = CountingResults(races, dropped_);
    for (std::size_t i = 0; i < season_.drivers.size(); ++i) {
      if (season_.drivers[i].excluded) continue;
      Standing standing;
      standing.driver = i;
      standing.totals = TotalOf(season_.drivers[i], 0, races, best);
      standing.points = standing.totals.points;
      if (standing.totals.starts > 0) table.push_back(std::move(standing));
    }
    Sort(table);
    return table;
  }

  static void Sort(std::vector<Standing>& table) {
    std::sort(table.begin(), table.end(), [](const Standing& a, const Standing& b) {
      if (a.tier != b.tier) return a.tier < b.tier;
      if (const int order = Compare(a, b); order != 0) return order > 0;
      return a.driver < b.driver;  // they come by name
    });
  }

  // Points, then count-back; 0 when nothing but the name tells two drivers apart.
  static int Compare(const Standing& a, const Standing& b) {
    if (a.points != b.points) return a.points > b.points ? 1 : -1;
    return CountBack(a.totals, b.totals);
  }

  const SeasonDriver& Driver(const Standing& standing) const { return season_.drivers[standing.driver]; }
  std::size_t Races() const { return season_.races.size(); }

 private:
  const Season& season_;
  const int dropped_;
};

int Wins(const SeasonDriver& driver, std::size_t first, std::size_t end) {
  return static_cast<int>(
      std::count_if(driver.results.begin(), driver.results.end(), [&](const SeasonResult& result) {
        return result.finish == 1 && result.race >= first && result.race < end;
      }));
}

// One driver who may go on.
struct Candidate {
  std::size_t place = 0;  // in the table at the cut, from 0
  int wins = 0;           // 0 for who does not count as a winner
  bool wildCard = false;
};

// Who goes on into a stage, in the order of the seeds; the table is that of the cut, its first tier those who
// may.
std::vector<Candidate> Select(const Ranking& ranking, const PlayoffStage& stage,
                              const std::vector<Standing>& table, std::size_t segment, std::size_t cut) {
  const auto wins = [&](std::size_t place) { return Wins(ranking.Driver(table[place]), segment, cut); };
  std::vector<Candidate> order;
  for (std::size_t place = 0; place < table.size(); ++place) {
    Candidate candidate{place, 0, false};
    const bool highEnough = stage.winnersWithin == 0 || place < static_cast<std::size_t>(stage.winnersWithin);
    if (stage.byWins && highEnough) candidate.wins = wins(place);
    if (stage.byWins && stage.leaderIsWinner && place == 0) candidate.wins = std::numeric_limits<int>::max();
    order.push_back(candidate);
  }
  // The table's own order holds among those with as many wins.
  const auto byWins = [](const Candidate& a, const Candidate& b) { return a.wins > b.wins; };
  std::stable_sort(order.begin(), order.end(), byWins);

  const auto level = [&](const Candidate& a, const Candidate& b) {
    return a.wins == b.wins && Ranking::Compare(table[a.place], table[b.place]) == 0;
  };
  std::size_t count = std::min(order.size(), static_cast<std::size_t>(stage.drivers));
  while (count > 0 && count < order.size() && level(order[count - 1], order[count])) ++count;
  std::vector<Candidate> chosen(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count));
  std::vector<Candidate> rest(order.begin() + static_cast<std::ptrdiff_t>(count), order.end());
  if (stage.within > 0 && !table.empty()) {
    const auto near = std::stable_partition(rest.begin(), rest.end(), [&](const Candidate& candidate) {
      return table.front().points - table[candidate.place].points <= stage.within;
    });
    chosen.insert(chosen.end(), rest.begin(), near);
    rest.erase(rest.begin(), near);
  }
  if (stage.wildCards > 0) {
    std::erase_if(rest, [&](const Candidate& candidate) {
      return stage.wildCardsWithin > 0 && candidate.place >= static_cast<std::size_t>(stage.wildCardsWithin);
    });
    for (Candidate& candidate : rest) candidate = {candidate.place, wins(candidate.place), true};
    std::stable_sort(rest.begin(), rest.end(), [](const Candidate& a, const Candidate& b) {
      return a.wins != b.wins ? a.wins > b.wins : a.place < b.place;
    });
    std::size_t cards = std::min(rest.size(), static_cast<std::size_t>(stage.wildCards));
    while (cards > 0 && cards < rest.size() && level(rest[cards - 1], rest[cards])) ++cards;
    chosen.insert(chosen.end(), rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(cards));
  }
  return chosen;
}

// Points of the races from `first` to before `end`; whether bonus points count is asked of the stage.
std::int64_t PointsOf(const SeasonDriver& driver, std::size_t first, std::size_t end, bool withBonus) {
  std::int64_t points = 0;
  for (const SeasonResult& result : driver.results)
    if (result.race >= first && result.race < end) points += result.points - (withBonus ? 0 : result.bonus);
  return points;
}

void Merge(Totals& into, const Totals& more) {
  into.points += more.points;
  into.bonus += more.bonus;
  if (more.prizeMoney) into.prizeMoney = into.prizeMoney.value_or(0) + *more.prizeMoney;
  into.lapsRun += more.lapsRun;
  into.lapsLed += more.lapsLed;
  into.starts += more.starts;
  into.poles += more.poles;
  into.dnfs += more.dnfs;
  for (std::size_t i = 0; i < into.places.size(); ++i) into.places[i] += more.places[i];
  into.startSum += more.startSum;
  into.startsKnown += more.startsKnown;
  into.finishSum += more.finishSum;
  into.finishesKnown += more.finishesKnown;
}

// One driver's way through the stages.
struct Runner {
  Standing standing;
  std::int64_t sinceFirstCut = 0;  // what he would have if he went out: the first start and all since
};

class Stages {
 public:
  Stages(const Ranking& ranking, const PlayoffFormat& format) : ranking_(ranking), format_(format) {}

  std::vector<Standing> Run() {
    std::size_t done = 0;
    for (; done < format_.stages.size() && Cut(done) <= ranking_.Races(); ++done) Begin(done);
    if (done == 0) return ranking_.After(ranking_.Races());
    Drive(done - 1, ranking_.Races());
    std::vector<Standing> table = ranking_.After(ranking_.Races());
    std::erase_if(table, [this](const Standing& standing) { return Find(standing.driver) != nullptr; });
    for (Standing& standing : table) standing.stage = "Out";
    for (Runner& runner : runners_) table.push_back(std::move(runner.standing));
    Ranking::Sort(table);
    return table;
  }

 private:
  std::size_t Cut(std::size_t stage) const { return static_cast<std::size_t>(format_.stages[stage].after); }

  Runner* Find(std::size_t driver) {
    const auto found = std::find_if(runners_.begin(), runners_.end(),
                                    [&](const Runner& runner) { return runner.standing.driver == driver; });
    return found == runners_.end() ? nullptr : &*found;
  }

  // Scores the races from a stage's begin to before `end`.
  void Drive(std::size_t stage, std::size_t end) {
    for (Runner& runner : runners_) {
      const SeasonDriver& driver = ranking_.Driver(runner.standing);
      const bool in = runner.standing.tier == Standing::In;
      const std::int64_t points = PointsOf(driver, Cut(stage), end, !in || format_.stages[stage].bonusCounts);
      runner.sinceFirstCut += points;
      runner.standing.points = in ? runner.standing.points + points : runner.sinceFirstCut;
      Merge(runner.standing.totals, TotalOf(driver, Cut(stage), end));
    }
  }

  void Begin(std::size_t number) {
    const PlayoffStage& stage = format_.stages[number];
    const std::size_t cut = Cut(number);
    std::vector<Standing> table;
    if (number == 0) {
      table = ranking_.After(cut);
    } else {
      Drive(number - 1, cut);
      for (const Runner& runner : runners_)
        if (runner.standing.tier == Standing::In) table.push_back(runner.standing);
      Ranking::Sort(table);
    }
    const auto chosen = Select(ranking_, stage, table, number == 0 ? 0 : Cut(number - 1), cut);
    if (number > 0) {
      for (Runner& runner : runners_) {
        if (runner.standing.tier != Standing::In) continue;
        runner.standing.tier = Standing::Eliminated;
        runner.standing.stage = "Out after " + format_.stages[number - 1].name;
      }
    }
    std::int64_t seed = 0;
    for (const Candidate& candidate : chosen) {
      Standing start = table[candidate.place];
      start.tier = Standing::In;
      start.stage = stage.name;
      if (stage.points) {
        const int wins = candidate.wildCard ? 0 : Wins(ranking_.Driver(start), 0, cut);
        start.points = *stage.points - seed * stage.step + std::int64_t{wins} * stage.winBonus;
      }
      ++seed;
      if (number == 0) {
        runners_.push_back({start, start.points});
      } else {
        Find(start.driver)->standing = start;
      }
    }
    // Who went out stands with all that he has scored since the first cut.
    for (Runner& runner : runners_)
      if (runner.standing.tier == Standing::Eliminated) runner.standing.points = runner.sinceFirstCut;
  }

  const Ranking& ranking_;
  const PlayoffFormat& format_;
  std::vector<Runner> runners_;
};

}  // namespace

std::vector<Standing> ComputeStandings(const Season& season, int dropped, const PlayoffFormat* playoff) {
  const Ranking ranking(season, dropped);
  return playoff != nullptr ? Stages(ranking, *playoff).Run() : ranking.After(season.races.size());
}

}  // namespace scorvane::championship
