// The dialect: what parses prints as text that parses to the same, what translates is text that the store
// takes and runs to its end or to a limit, and what is run a second time gives the same.
#include <algorithm>

#include "FuzzTarget.h"
#include "engine/Names.h"
#include "engine/sql/Parser.h"
#include "engine/sql/Translator.h"

using namespace scorvane;

namespace {

// The schema of a league, and the league itself, a row or two a table.
class League : public engine::sql::Catalog {
 public:
  League() {
    db::BuildTemplate(engine_, SCORVANE_SOURCE_DIR "/share/template", folder_.File("Kirrelon.dat"));
    {
      const auto templateDb = engine_.DefaultWorkspace().OpenDatabase(folder_.File("Kirrelon.dat"));
      db::CreateLeagueFile(engine_, folder_.File("league.lgx"), 0, 0, *templateDb, 0, 0);
    }
    {
      const auto league = engine_.DefaultWorkspace().OpenDatabase(folder_.File("league.lgx"));
      engine::UnitOfWork unit(*league);
      // A row or two a table: few joins of them take long.
      for (const char* table : {"PointSystem WHERE Position>1", "Bonus WHERE BonusID>1",
                                "RankCriteria WHERE RankCriteriaID>1", "Settings WHERE SettingsID>2"})
        league->Execute(std::string("DELETE * FROM ") + table);
      for (const char* insert :
           {"INSERT INTO Driver (Name) VALUES ('Ann')",
            "INSERT INTO Driver (Name, Handicap) VALUES ('bob', Null)",
            "INSERT INTO Race (Name, Length) VALUES ('Oval', 2.5)",
            "INSERT INTO Stats (RaceID, DriverID, Finish, Points, Qualifying) VALUES (1, 1, 1, 185, 192.5)"})
        league->Execute(insert);
    }
    database_ = engine_.DefaultWorkspace().OpenDatabase(folder_.File("league.lgx"));
  }

  const engine::TableDef* FindTable(std::string_view name) const override {
    return database_->FindTableDef(name);
  }
  int AddTarget(std::shared_ptr<const engine::StoreTarget>) override { return 0; }
  engine::Database& Database() { return *database_; }

 private:
  test::TempFolder folder_;
  engine::DBEngine engine_;
  std::unique_ptr<engine::Database> database_;
};

// Small, so that a statement that grows is found and not waited for.
constexpr engine::QueryLimits kLimits{std::chrono::milliseconds(0), 200'000, 16U << 20U};

std::string ResultOf(engine::Database& database, const std::string& sql) {
  std::string all;
  for (auto rows = database.OpenRecordset(sql, engine::RecordsetType::Snapshot, kLimits); !rows.AtEnd();
       rows.MoveNext()) {
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) all += rows.At(i).ToText() + "|";
  }
  return all;
}

bool DependsOnTheMoment(std::string sql) {
  std::transform(sql.begin(), sql.end(), sql.begin(), engine::LowerAscii);
  for (const char* function : {"now", "rnd", "time", "date"})
    if (sql.find(function) != std::string::npos) return true;
  return false;
}

// Texts with which the store says that it does not understand a statement.
bool BlamesTheTranslation(const std::string& message) {
  for (const char* text : {"near \"", "no such ", "ambiguous", "misuse", "wrong number of arguments",
                           "unrecognized", "out of range"}) {
    if (message.find(text) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static League league;
  const std::string sql(fuzz::Text(data, size));
  bool select = false;
  bool elsewhere = true;
  try {
    const engine::sql::Statement statement = engine::sql::ParseText(sql);
    select = statement.kind == engine::sql::Statement::Kind::Query;
    elsewhere = statement.hasInPath;
    const std::string printed = engine::sql::Print(statement);
    try {
      fuzz::Check(engine::sql::Print(engine::sql::ParseText(printed)) == printed,
                  "a print parses to the same");
    } catch (const engine::EngineError& error) {
      // Its brackets may take a deep statement over the limit.
      if (error.Number() == engine::kTooComplex) return 0;
      std::fprintf(stderr, "%s\nprinted as\n%s\n%s\n", sql.c_str(), printed.c_str(), error.what());
      fuzz::Check(false, "a print parses");
    }
    engine::sql::Translate(statement, league, false);
    if (select) engine::sql::Translate(statement, league, true);
  } catch (const engine::EngineError&) {
  }
  try {
    if (select) {
      const std::string first = ResultOf(league.Database(), sql);
      fuzz::Check(DependsOnTheMoment(sql) || ResultOf(league.Database(), sql) == first,
                  "a second run gives the same");
    } else if (!elsewhere) {
      engine::UnitOfWork unit(league.Database(), engine::UnitOfWork::OnError::TakeBack);
      league.Database().Execute(sql, kLimits);
      unit.TakeBack();
    }
  } catch (const engine::EngineError& error) {
    if (error.Number() == engine::kTooComplex && BlamesTheTranslation(error.Description())) {
      std::fprintf(stderr, "%s\n%s\n", sql.c_str(), error.what());
      fuzz::Check(false, "the store takes what is translated");
    }
  }
  return 0;
}
