#include "Loop.h"

#include <sqlite3.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <unordered_map>

#include "engine/Collation.h"

namespace scorvane::bench {
namespace {

class Connection {
 public:
  explicit Connection(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK)
      throw std::runtime_error("cannot open " + path);
    engine::RegisterCollation(db_);
    Run("PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA "
        "temp_store=MEMORY; "
        "PRAGMA cache_size=-16000");
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { sqlite3_close_v2(db_); }

  void Run(const char* sql) {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(db_));
  }
  sqlite3* Get() const { return db_; }

 private:
  sqlite3* db_ = nullptr;
};

class Statement {
 public:
  Statement(Connection& connection, const char* sql) : db_(connection.Get()) {
    if (sqlite3_prepare_v2(db_, sql, -1, &statement_, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(db_));
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement_); }

  void Int(int i, int value) { sqlite3_bind_int(statement_, i, value); }
  void Real(int i, double value) { sqlite3_bind_double(statement_, i, value); }
  void Null(int i) { sqlite3_bind_null(statement_, i); }
  void Text(int i, const std::string& text) {
    if (text.empty()) {
      Null(i);
    } else {
      sqlite3_bind_text(statement_, i, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
  }
  void Copy(int i, Statement& from, int column) {
    sqlite3_bind_value(statement_, i, sqlite3_column_value(from.statement_, column));
  }
  bool Step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(db_));
    return false;
  }
  void Do() {
    Step();
    Reset();
  }
  void Reset() { sqlite3_reset(statement_); }
  int Columns() { return sqlite3_column_count(statement_); }
  int Whole(int column) { return sqlite3_column_int(statement_, column); }
  double Number(int column) { return sqlite3_column_double(statement_, column); }
  std::string String(int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return text == nullptr ? std::string() : text;
  }

 private:
  sqlite3* db_;
  sqlite3_stmt* statement_ = nullptr;
};

std::string Trim(const std::string& text) {
  const std::size_t from = text.find_first_not_of(' ');
  return from == std::string::npos ? std::string() : text.substr(from, text.find_last_not_of(' ') - from + 1);
}

std::string Cut(const std::string& line, std::size_t start, std::size_t width) {
  return line.size() < start ? std::string() : Trim(line.substr(start - 1, width));
}

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = std::min(text.find('\n', from), text.size());
    lines.push_back(text.substr(from, to - from - (to > from && text[to - 1] == '\r' ? 1 : 0)));
    from = to + 1;
  }
  return lines;
}

std::vector<int> PointsOf(const std::string& templateDb) {
  Connection connection(templateDb);
  Statement read(connection, "SELECT Kirrelon FROM PointSystem ORDER BY Position");
  std::vector<int> points;
  while (read.Step()) points.push_back(read.Whole(0));
  return points;
}

constexpr const char* kLedBonus =
    "UPDATE STNStats SET Bonus=Bonus+5, Points=Points+5 WHERE STNRaceID=?1 AND LapsLed > 0";
constexpr const char* kMostLedBonus =
    "UPDATE STNStats SET Bonus=Bonus+5, Points=Points+5 WHERE STNRaceID=?1 AND LapsLed=(SELECT Max(LapsLed) "
    "FROM "
    "STNStats WHERE STNRaceID=?1)";

// Title, track, table, statistics: the same lines that the program's reader looks at.
class Stager {
 public:
  Stager(Connection& connection, const std::vector<int>& points)
      : points_(points),
        race_(connection, "INSERT INTO STNRace (Name, FileName, Length, Laps) VALUES (?1, ?2, ?3, ?4)"),
        key_(connection, "SELECT Max(STNRaceID) FROM STNRace"),
        excluded_(connection, "SELECT Exclude FROM Driver WHERE Name=?1"),
        result_(
            connection,
            "INSERT INTO STNStats (STNRaceID, Finish, Start, DriverName, LapsRun, LapsLed, Points, "
            "Qualifying, "
            "ReasonOut, PrizeMoney, Bonus, Exclude) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, NULL, 0, 0)"),
        update_(connection,
                "UPDATE STNRace SET RaceTime=?1, AvgSpeed=?2, VictoryMargin=?3, Cautions=?4, LeadChanges=?5, "
                "Weather=?6 "
                "WHERE STNRaceID=?7"),
        led_(connection, kLedBonus),
        mostLed_(connection, kMostLedBonus) {}

  void Stage(const std::string& path) {
    const std::vector<std::string> lines = LinesOf(path);
    std::size_t at = 0;
    auto data = [&]() -> const std::string& {
      while (Trim(lines.at(at)).empty() || Trim(lines[at])[0] == '*') ++at;
      return lines[at++];
    };
    const std::string name = Trim(data().substr(10));
    const std::string& track = data();
    const std::string file = path.substr(path.rfind('/') + 1);
    race_.Text(1, name);
    race_.Text(2, file);
    race_.Real(3, static_cast<double>(std::strtof(track.substr(25, 5).c_str(), nullptr)));
    race_.Int(4, std::atoi(track.substr(40, 3).c_str()));
    race_.Do();
    key_.Step();
    const int key = key_.Whole(0);
    key_.Reset();
    for (int rules = 0; rules < 2;)
      if (data().starts_with("----------")) ++rules;
    int finish = 0;
    while (!Trim(lines.at(at)).empty()) {
      const std::string& line = lines[at++];
      const std::string driver = Cut(line, 14, 27);
      if (Trim(line).starts_with("AI :") || driver.empty()) continue;
      excluded_.Text(1, driver);
      const bool excluded = excluded_.Step() && excluded_.Whole(0) != 0;
      excluded_.Reset();
      if (excluded) continue;
      ++finish;
      const std::string reason = Cut(line, 66, 12);
      result_.Int(1, key);
      result_.Int(2, finish);
      result_.Int(3, std::atoi(Cut(line, 5, 2).c_str()));
      result_.Text(4, driver);
      result_.Int(5, std::atoi(Cut(line, 42, 3).c_str()));
      result_.Int(6, std::atoi(Cut(line, 47, 3).c_str()));
      result_.Int(7, static_cast<std::size_t>(finish) <= points_.size()
                         ? points_[static_cast<std::size_t>(finish) - 1]
                         : 0);
      result_.Real(8, static_cast<double>(std::strtof(Cut(line, 57, 8).c_str(), nullptr)));
      result_.Text(9, reason);
      result_.Do();
    }
    std::string statistics[6];
    static const char* const kLabels[] = {"Race time",     "Average speed",     "Margin of victory",
                                          "Caution flags", "# of lead changes", "Weather"};
    for (int k = 0; k < 6 && at + 1 < lines.size(); ++k) {
      const std::string& line = data();
      const std::size_t hyphen = line.find('-');
      for (int i = 0; i < 6; ++i)
        if (hyphen != std::string::npos && Trim(line.substr(0, hyphen)) == kLabels[i])
          statistics[i] = Trim(line.substr(hyphen + 1));
    }
    for (int i = 0; i < 6; ++i) update_.Text(i + 1, statistics[i]);
    update_.Int(7, key);
    update_.Do();
    led_.Int(1, key);
    led_.Do();
    mostLed_.Int(1, key);
    mostLed_.Do();
  }

 private:
  const std::vector<int>& points_;
  Statement race_, key_, excluded_, result_, update_, led_, mostLed_;
};

void Store(Connection& connection) {
  Statement races(connection, "SELECT * FROM STNRace ORDER BY STNRaceID");
  Statement results(
      connection,
      "SELECT DriverName, Start, Finish, LapsRun, LapsLed, ReasonOut, Points, Bonus, PrizeMoney, "
      "Qualifying FROM STNStats WHERE STNRaceID=?1 ORDER BY rowid");
  Statement addRace(
      connection,
      "INSERT INTO Race (Name, FileName, Length, Laps, RaceTime, AvgSpeed, VictoryMargin, Cautions, "
      "LeadChanges, Weather) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)");
  Statement addResult(
      connection,
      "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Status, Points, Bonus, "
      "PrizeMoney, Qualifying, Dropped) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, 0)");
  Statement find(connection, "SELECT DriverID FROM Driver WHERE Name=?1");
  Statement add(connection, "INSERT INTO Driver (Name, Exclude, Rookie, Handicap) VALUES (?1, 0, 0, 0)");
  std::unordered_map<std::string, int> drivers;
  while (races.Step()) {
    for (int i = 1; i <= 10; ++i) addRace.Copy(i, races, i);
    addRace.Do();
    const auto race = static_cast<int>(sqlite3_last_insert_rowid(connection.Get()));
    results.Int(1, races.Whole(0));
    while (results.Step()) {
      const std::string name = results.String(0);
      auto known = drivers.find(name);
      if (known == drivers.end()) {
        find.Text(1, name);
        int key = find.Step() ? find.Whole(0) : 0;
        find.Reset();
        if (key == 0) {
          add.Text(1, name);
          add.Do();
          key = static_cast<int>(sqlite3_last_insert_rowid(connection.Get()));
        }
        known = drivers.emplace(name, key).first;
      }
      addResult.Int(1, race);
      addResult.Int(2, known->second);
      for (int i = 1; i <= 9; ++i) addResult.Copy(i + 2, results, i);
      addResult.Do();
    }
    results.Reset();
  }
}

}  // namespace

void ImportLoop(const std::string& league, const std::string& templateDb,
                const std::vector<std::string>& files) {
  const std::vector<int> points = PointsOf(templateDb);
  Connection connection(league);
  connection.Run("BEGIN IMMEDIATE; DELETE FROM STNRace");
  Stager stager(connection, points);
  for (const std::string& file : files) stager.Stage(file);
  Store(connection);
  connection.Run("COMMIT");
}

void RecalculateLoop(const std::string& league, const std::string& templateDb) {
  const std::vector<int> points = PointsOf(templateDb);
  Connection connection(league);
  connection.Run("BEGIN IMMEDIATE");
  Statement races(connection, "SELECT RaceID FROM Race");
  Statement starts(connection, "SELECT rowid FROM Stats WHERE RaceID=?1 ORDER BY Qualifying DESC, Start");
  Statement finishes(connection, "SELECT rowid FROM Stats WHERE RaceID=?1 ORDER BY Finish");
  Statement setStart(connection, "UPDATE Stats SET Start=?1 WHERE rowid=?2");
  Statement setFinish(connection,
                      "UPDATE Stats SET Finish=?1, Points=?2, PrizeMoney=NULL, Bonus=0 WHERE rowid=?3");
  Statement led(connection,
                "UPDATE Stats SET Bonus=Bonus+5, Points=Points+5 WHERE RaceID=?1 AND LapsLed > 0");
  Statement mostLed(
      connection,
      "UPDATE Stats SET Bonus=Bonus+5, Points=Points+5 WHERE RaceID=?1 AND LapsLed=(SELECT Max(LapsLed) "
      "FROM Stats WHERE RaceID=?1)");
  std::vector<int> keys;
  auto collect = [&](Statement& statement, int race) {
    keys.clear();
    statement.Int(1, race);
    while (statement.Step()) keys.push_back(statement.Whole(0));
    statement.Reset();
  };
  std::vector<int> ids;
  while (races.Step()) ids.push_back(races.Whole(0));
  for (const int race : ids) {
    collect(starts, race);
    for (std::size_t i = 0; i < keys.size(); ++i) {
      setStart.Int(1, static_cast<int>(i) + 1);
      setStart.Int(2, keys[i]);
      setStart.Do();
    }
    collect(finishes, race);
    for (std::size_t i = 0; i < keys.size(); ++i) {
      setFinish.Int(1, static_cast<int>(i) + 1);
      setFinish.Int(2, i < points.size() ? points[i] : 0);
      setFinish.Int(3, keys[i]);
      setFinish.Do();
    }
    for (Statement* bonus : {&led, &mostLed}) {
      bonus->Int(1, race);
      bonus->Do();
    }
  }
  connection.Run("COMMIT");
}

std::vector<int> StandingsStatement(const std::string& league, int dropped) {
  Connection connection(league);
  Statement standings(
      connection,
      "SELECT d.Name, sum(r.Points) AS Total, max(sum(r.Points)) OVER () - sum(r.Points) AS Behind, "
      "count(*), "
      "sum(r.Finish=1), sum(r.Finish<=5), sum(r.Finish<=10), sum(r.Start=1), sum(r.LapsRun), sum(r.LapsLed), "
      "avg(nullif(r.Start, 0)), avg(r.Finish), sum(r.Status <> 'Running'), sum(r.Bonus), sum(r.PrizeMoney) "
      "FROM (SELECT *, row_number() OVER (PARTITION BY DriverID ORDER BY Points DESC, Bonus DESC, LapsLed "
      "DESC) AS n "
      "FROM Stats) AS r JOIN Driver AS d ON d.DriverID = r.DriverID "
      "WHERE r.n <= max(1, (SELECT count(*) FROM Race) - ?1) AND NOT coalesce(d.Exclude, 0) "
      "GROUP BY r.DriverID ORDER BY Total DESC, sum(r.Finish=1) DESC, sum(r.Finish=2) DESC, sum(r.Finish=3) "
      "DESC, "
      "sum(r.Finish=4) DESC, sum(r.Finish=5) DESC, sum(r.Finish=6) DESC, sum(r.Finish=7) DESC, "
      "sum(r.Finish=8) DESC, "
      "sum(r.Finish=9) DESC, sum(r.Finish=10) DESC, d.Name");
  standings.Int(1, dropped);
  std::vector<int> points;
  while (standings.Step()) points.push_back(standings.Whole(1));
  return points;
}

double Ask(const std::string& league, const char* sql) {
  Connection connection(league);
  Statement statement(connection, sql);
  return statement.Step() ? statement.Number(0) : 0;
}

std::vector<std::vector<std::string>> Rows(const std::string& league, const char* sql) {
  Connection connection(league);
  Statement statement(connection, sql);
  std::vector<std::vector<std::string>> rows;
  while (statement.Step()) {
    auto& row = rows.emplace_back();
    for (int column = 0; column < statement.Columns(); ++column) row.push_back(statement.String(column));
  }
  return rows;
}

}  // namespace scorvane::bench
