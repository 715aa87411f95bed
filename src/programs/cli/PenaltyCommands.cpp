// Commands of the stewards: what is taken off results, and why.
#include <fmt/format.h>

#include <charconv>

#include "app/Commands.h"
#include "common/Formats.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/DriverNames.h"
#include "scoring/Penalties.h"

namespace scorvane::cli {
namespace {

std::int32_t NumberOf(const char* flag, const std::string& text) {
  std::int32_t number = 0;
  const std::string_view trimmed = common::TrimBlanks(text);
  const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
  if (error != std::errc() || end != trimmed.data() + trimmed.size() || number < 1)
    throw WrongUse(fmt::format("{} takes a whole number from 1 on, not '{}'.", flag, text));
  return number;
}

// What the options say, whatever the league holds. Throws WrongUse.
scoring::Penalty PenaltyOf(const PenaltyOptions& options) {
  if (!options.id || common::TrimBlanks(options.driver).empty())
    throw WrongUse("penalty add takes a RACEID and a DRIVER.");
  const int kinds = (options.points ? 1 : 0) + (options.position ? 1 : 0) + (options.disqualify ? 1 : 0);
  if (kinds != 1) throw WrongUse("A penalty takes one of --points N, --position P and --disqualify.");
  if (!options.reason || scoring::CleanReason(*options.reason).empty())
    throw WrongUse("A penalty needs a reason: --reason TEXT.");
  scoring::Penalty penalty;
  penalty.raceId = *options.id;
  penalty.reason = *options.reason;
  if (options.points) {
    penalty.kind = scoring::PenaltyKind::Points;
    penalty.amount = NumberOf("--points", *options.points);
  } else if (options.position) {
    penalty.kind = scoring::PenaltyKind::Position;
    penalty.amount = NumberOf("--position", *options.position);
  } else {
    penalty.kind = scoring::PenaltyKind::Disqualification;
  }
  return penalty;
}

void Add(const CommonOptions& common, const PenaltyOptions& options) {
  scoring::Penalty penalty = PenaltyOf(options);
  Context context(common, options.path);
  const RaceFacts race = NeedRace(context.League(), penalty.raceId);
  const drivers::Driver driver = NeedDriver(context.League(), options.driver);
  penalty.driverId = driver.id;
  const std::int32_t id = app::AddPenalty(context.Session(), penalty);
  context.Say(fmt::format("{} in {}: {}. `penalty {} remove {}` takes it back.", driver.name, race.name,
                          scoring::Describe(penalty), options.path, id));
}

void Remove(const CommonOptions& common, const PenaltyOptions& options) {
  if (!options.id) throw WrongUse("penalty remove takes the penalty's ID, as `penalty list` shows it.");
  Context context(common, options.path);
  const scoring::Penalty penalty = scoring::ReadPenalty(context.League(), *options.id);
  app::RemovePenalties(context.Session(), {penalty.id});
  context.Say(fmt::format("Took back {}'s penalty in {} ({}).", penalty.driver, penalty.race,
                          scoring::Describe(penalty)));
}

}  // namespace

OutputTable PenaltyTable(engine::Database& league) {
  OutputTable table;
  table.columns = {{"ID", true}, {"RaceID", true}, {"Race"}, {"Driver"}, {"Penalty"}, {"Reason"}, {"Given"}};
  for (const scoring::Penalty& penalty : scoring::ListPenalties(league)) {
    table.rows.push_back({engine::Value(penalty.id), engine::Value(penalty.raceId),
                          engine::Value(penalty.race), engine::Value(penalty.driver),
                          engine::Value(scoring::Describe(penalty)), engine::Value(penalty.reason),
                          engine::Value(penalty.given)});
  }
  return table;
}

void Penalties(const CommonOptions& common, const PenaltyOptions& options) {
  if (options.action == "add") return Add(common, options);
  if (options.points || options.position || options.disqualify || options.reason || !options.driver.empty())
    throw WrongUse(
        fmt::format("penalty {} takes no DRIVER, no kind of penalty and no reason.", options.action));
  if (options.action == "remove") return Remove(common, options);
  if (options.id) throw WrongUse("penalty list takes nothing but the league.");
  Context context(common, options.path, app::LeagueSession::Use::Looking);
  Print(PenaltyTable(context.League()), common.format, common.decimal);
}

}  // namespace scorvane::cli
