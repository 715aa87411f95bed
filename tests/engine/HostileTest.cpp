// Statements and files that were made to do harm: each ends soon, with a sentence.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <fstream>

#include "engine/EngineError.h"
#include "engine/TestDatabase.h"

namespace scorvane::engine {
namespace {

std::string Repeat(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

// The text with `inner` in the place of each "@", nested.
std::string Nest(const std::string& around, const std::string& inner, int depth) {
  std::string text = inner;
  for (int i = 0; i < depth; ++i) {
    std::string outer = around;
    outer.replace(outer.find('@'), 1, text);
    text = outer;
  }
  return text;
}

TEST(Hostile, StatementsEndSoon) {
  std::string aliases = "SELECT 1 AS a0";
  std::string doubling = "SELECT 1 AS a0";
  std::string chain = "SELECT a1 AS a0";
  for (int i = 1; i < 200; ++i) {
    aliases += ", a" + std::to_string(i - 1) + "+1 AS a" + std::to_string(i);
    chain += ", a" + std::to_string(i + 1) + " AS a" + std::to_string(i);
    if (i < 30)
      doubling += ", a" + std::to_string(i - 1) + "+a" + std::to_string(i - 1) + " AS a" + std::to_string(i);
  }
  std::string many = "SELECT a1 AS a0";
  for (int i = 1; i < 20000; ++i) many += ", a" + std::to_string(i + 1) + " AS a" + std::to_string(i);
  std::string cross = "SELECT Count(*) FROM Stats AS t0";
  for (int i = 1; i < 30; ++i) cross += ", Stats AS t" + std::to_string(i);
  std::string rows = cross;
  rows.replace(7, 8, "t0.StatsID, t1.Points, 'a text that needs some room of its own'");
  std::string joins = "Stats AS t0";
  for (int i = 1; i < 90; ++i) joins += " INNER JOIN Stats AS t" + std::to_string(i) + " ON 1=1";

  struct {
    std::string sql;
    int number;
  } const cases[] = {
      {many, kTooComplex},
      {chain, kTooFewParameters},
      {doubling, kTooComplex},
      {aliases, kTooComplex},
      {"SELECT * FROM Stats ORDER BY " + Repeat("Finish, ", 300) + "1", kTooComplex},
      {"SELECT Finish FROM Stats WHERE Finish IN (1" + Repeat(",2", 240000) + ")", kTooComplex},
      {"SELECT 1 FROM " + joins, kTooComplex},
      {Nest("SELECT * FROM (@) AS T", "SELECT 1 AS a", 200), kTooComplex},
      {"SELECT " + Nest("(@ BETWEEN 1 AND 2)", "Finish", 25) + " FROM Stats", 0},
      {"SELECT " + Nest("(@ BETWEEN Finish+1 AND 2)", "Finish", 100) + " FROM Stats", kTooComplex},
      {"SELECT " + Nest("1 BETWEEN @ AND 2", "1", 25), kSyntaxError},
      {"SELECT " + Nest("(1 BETWEEN @ AND 2)", "Finish", 50) + " FROM Stats", kTooComplex},
      {"SELECT " + Repeat("5 Xor ", 25) + "5", 0},
      {"SELECT " + Repeat("5 Xor ", 90) + "5", kTooComplex},
      {"SELECT " + Repeat("Finish & ", 90) + "Finish FROM Stats WHERE " + Repeat("Finish=1 And ", 90) +
           "1=1 ORDER BY " + Repeat("Finish=2 Or ", 90) + "1=1",
       0},
      {"SELECT " + Nest("IIf(Finish=1, 2, @)", "3", 90) + " FROM Stats", 0},
      {"SELECT " + Nest("(Finish Xor @)", "Points", 100) + " FROM Stats", kTooComplex},
      {Nest("SELECT TOP 50 PERCENT a FROM (@) AS T ORDER BY a", "SELECT Finish AS a FROM Stats", 25),
       kTooComplex},
      {Nest("SELECT TOP 50 PERCENT * FROM (@) AS T", "SELECT Finish AS a FROM Stats", 25), kTooComplex},
      {Nest("SELECT Sum(a) AS a FROM (@) AS T HAVING Sum(a) > ALL (SELECT 1 FROM Race)",
            "SELECT Finish AS a FROM Stats", 25),
       kTooComplex},
      {cross, kQueryStopped},
      {rows, kQueryStopped},
      {rows + " ORDER BY t29.Points", kQueryStopped},
      {"UPDATE Stats SET Bonus=1 WHERE (" + cross + ") > 1", kTooFewParameters},
      {"UPDATE Stats SET Points=1 WHERE (" + cross + ") > 1", kQueryStopped},
      {"SELECT Len(" + Nest("(@ & @)", "Space(1000000)", 1) + ")", kSyntaxError},
      {"SELECT Len(" + Repeat("Space(1000000) & ", 90) + "'')", kQueryStopped},
  };
  TestDatabase test;
  const QueryLimits limits{std::chrono::milliseconds(700), 100'000'000, 64U << 20U};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sql.substr(0, 120));
    const auto start = std::chrono::steady_clock::now();
    int number = 0;
    try {
      if (c.sql.starts_with("UPDATE")) {
        test.Db().Execute(c.sql, limits);
      } else {
        test.Db().OpenRecordset(c.sql, RecordsetType::Snapshot, limits);
      }
    } catch (const EngineError& e) {
      number = e.Number();
      EXPECT_LT(e.Description().size(), 300U);
    }
    EXPECT_EQ(number, c.number);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  }
  // What was stopped has changed nothing, and what comes next runs.
  EXPECT_EQ(test.Db().OpenRecordset("SELECT Count(*) FROM Stats WHERE Points=1").At(0).ToLong(), 0);
}

void RunInStore(const std::string& path, const std::string& sql) {
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
  sqlite3_create_collation(connection, "GENERAL", SQLITE_UTF8, nullptr,
                           [](void*, int a, const void*, int b, const void*) { return a - b; });
  char* message = nullptr;
  EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << message;
  sqlite3_free(message);
  sqlite3_close(connection);
}

TEST(Hostile, FilesAreRefusedOrReported) {
  const struct {
    const char* change;
    int refused;       // 0: opens
    const char* says;  // in the refusal, or in what a check reports
  } cases[] = {
      {"PRAGMA user_version=2", kUnrecognizedFormat, "newer version"},
      {"DROP TABLE sv_index", kDatabaseDamaged, "sv_index"},
      {"ALTER TABLE Stats DROP COLUMN Status", kDatabaseDamaged, "'Status' of the table 'Stats' is missing"},
      {"ALTER TABLE Driver ADD COLUMN Big TEXT AS (hex(zeroblob(200000000)))", kDatabaseDamaged, "computed"},
      {"ALTER TABLE Driver ADD COLUMN _rowid_ INTEGER", kDatabaseDamaged, "_rowid_"},
      {"UPDATE sv_field SET type=99 WHERE name='Handicap'", kDatabaseDamaged, "no known type"},
      {"UPDATE sv_relation SET field='Gone' WHERE name='RaceStatsX'", kDatabaseDamaged, "RaceStatsX"},
      {"UPDATE sv_index SET fields='Gone' WHERE name='DriverStats'", kDatabaseDamaged, "DriverStats"},
      {"UPDATE sv_field SET attributes=17 WHERE name='Handicap'", kDatabaseDamaged, "'Handicap'"},
      {"CREATE TABLE Other (A INTEGER PRIMARY KEY) WITHOUT ROWID; INSERT INTO sv_field VALUES "
       "('Other', 0, 'A', 4, 4, 1, 0, 0, '')",
       kDatabaseDamaged, "no row keys"},
      {"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 100000) INSERT INTO sv_field "
       "SELECT 'Driver', i+10, 'F' || i, 4, 4, 1, 0, 0, '' FROM n",
       kDatabaseDamaged, "too many"},
      {"PRAGMA writable_schema=ON; INSERT INTO sqlite_schema VALUES ('table', 'Evil', 'Evil', 0, "
       "'CREATE/**/VIRTUAL TABLE Evil USING fts5(a)'); INSERT INTO sv_field VALUES ('Evil', 0, 'a', 10, 9, "
       "2, "
       "0, 0, '')",
       0, "Evil"},
      {"CREATE TABLE Extra (A)", 0, "does not know the table Extra"},
      {"CREATE TRIGGER Trap AFTER INSERT ON Driver BEGIN DELETE FROM Race; END", 0, "trigger Trap"},
      {"DROP INDEX \"Stats.DriverStats\"", 0, "index DriverStats of Stats is missing"},
      {"INSERT INTO sv_field VALUES ('Lost', 0, 'A', 4, 4, 1, 0, 0, '')", 0, "Lost is missing"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.change);
    TestDatabase test;
    test.Close();
    RunInStore(test.Path(), c.change);
    int number = 0;
    std::string said;
    try {
      test.Reopen();
      for (const std::string& fault : test.Db().CheckIntegrity()) said += fault + "\n";
      test.Db().Execute("INSERT INTO Driver (Name) VALUES ('x')");
      EXPECT_EQ(test.Db().OpenRecordset("SELECT Count(*) FROM Race").At(0).ToLong(), 2);
    } catch (const EngineError& e) {
      number = e.Number();
      said = e.Description();
    }
    EXPECT_EQ(number, c.refused);
    EXPECT_NE(said.find(c.says), std::string::npos) << said;
  }
}

// An index that was made under another order, in a file that must not be written, is not asked.
TEST(Hostile, ReadOnlyFileWithAnOutdatedOrderSortsRight) {
  TestDatabase test;
  test.Db().Execute("INSERT INTO Driver (Name) VALUES ('Al')");
  test.Close();
  // The store's index is made anew by the length of the names.
  RunInStore(test.Path(), "REINDEX; UPDATE sv_info SET value='0' WHERE name='collation'");
  OpenOptions readOnly;
  readOnly.readOnly = true;
  const auto names = [&](const OpenOptions& options, const std::string& sql) {
    const auto db = test.Engine().DefaultWorkspace().OpenDatabase(test.Path(), options);
    std::string all;
    for (auto rows = db->OpenRecordset(sql); !rows.AtEnd(); rows.MoveNext()) all += rows.At(0).ToText() + " ";
    return all;
  };
  for (const OpenOptions& options : {readOnly, OpenOptions{}}) {
    EXPECT_EQ(names(options, "SELECT Name FROM Driver ORDER BY Name"), "Al Ann bob Zoë ");
    EXPECT_EQ(names(options, "SELECT Name FROM Driver WHERE Name='BOB'"), "bob ");
    EXPECT_EQ(names(options, "SELECT DISTINCT Name FROM Driver WHERE Name>'al'"), "Ann bob Zoë ");
    EXPECT_EQ(names(options, "SELECT Min(Name) FROM Driver WHERE Name IN (SELECT Name FROM Driver)"), "Al ");
  }
}

}  // namespace
}  // namespace scorvane::engine
