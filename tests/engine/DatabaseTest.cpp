// The objects around the SQL: schema, recordsets, units of work, opening, durability.
#include "engine/Database.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "engine/EngineError.h"
#include "engine/TestDatabase.h"
#include "platform/Platform.h"

namespace scorvane::engine {
namespace {

template <typename Body>
int ErrorOf(Body body) {
  try {
    body();
  } catch (const EngineError& e) {
    EXPECT_FALSE(e.Description().empty());
    return e.Number();
  }
  return 0;
}

std::string TextOf(Database& db, const std::string& sql) {
  auto rows = db.OpenRecordset(sql);
  std::string text;
  for (; !rows.AtEnd(); rows.MoveNext()) text += (text.empty() ? "" : ",") + rows.At(0).ToText();
  return text;
}

std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Database, SchemaSurvivesClosing) {
  TestDatabase test;
  test.Reopen();
  const TableDef* driver = test.Db().FindTableDef("DRIVER");
  ASSERT_NE(driver, nullptr);
  EXPECT_EQ(test.Db().TableDefs().size(), 3U);
  EXPECT_EQ(driver->Fields[0].Attributes, kAutoIncrField | kFixedField);
  EXPECT_EQ(driver->FindField("name")->Size, 12);
  EXPECT_TRUE(driver->FindField("name")->Required);
  EXPECT_EQ(driver->FindField("Handicap")->DefaultValue, "0");
  EXPECT_TRUE(driver->FindIndex("primarykey")->Primary);
  ASSERT_EQ(test.Db().Relations().size(), 2U);
  EXPECT_EQ(test.Db().Relations()[0].Attributes, 4352);
}

TEST(Database, FieldsComeGoAndAreRenamed) {
  TestDatabase test;
  Database& db = test.Db();
  db.AppendField("Driver", TestDatabase::Make("Rookie", FieldType::Boolean));
  db.Execute("INSERT INTO Driver (Name) VALUES ('new')");
  // Rows that were there have no value, new ones have False.
  EXPECT_EQ(TextOf(db, "SELECT Name FROM Driver WHERE Rookie Is Null"), "Ann,bob,Zoë");
  EXPECT_EQ(TextOf(db, "SELECT Name FROM Driver WHERE Rookie=False"), "new");

  db.RenameField("Race", "Name", "Track");
  db.AppendField("Race", TestDatabase::Make("Name", FieldType::Text, 60));
  EXPECT_EQ(db.Execute("UPDATE Race SET Name=Track"), 2);
  db.DeleteField("Race", "Track");
  test.Reopen();
  EXPECT_EQ(TextOf(test.Db(), "SELECT Name FROM Race"), "Daytona,Martinsville");
  EXPECT_EQ(test.Db().FindTableDef("Race")->FindField("Name")->Size, 60);

  EXPECT_EQ(ErrorOf([&] { test.Db().DeleteField("Stats", "DriverID"); }), kFieldInUse);
  EXPECT_EQ(ErrorOf([&] { test.Db().DeleteField("Stats", "Nothing"); }), kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { test.Db().AppendField("Nothing", {}); }), kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { test.Db().AppendField("Race", TestDatabase::Make("laps", FieldType::Long)); }),
            kFieldExists);
  EXPECT_EQ(ErrorOf([&] { test.Db().AppendField("Race", TestDatabase::Make("a.b", FieldType::Long)); }),
            kInvalidName);
}

TEST(Database, RelationsAndCountersSurviveARebuild) {
  TestDatabase test;
  Database& db = test.Db();
  db.Execute("INSERT INTO Stats (StatsID, RaceID, DriverID) VALUES (40, 1, 1)");
  db.Execute("DELETE * FROM Stats WHERE StatsID=40");
  db.DeleteRelation("RaceStatsX");
  db.Execute("DELETE * FROM Race WHERE RaceID=2");
  // Results of a race that is gone stand in the way of the relation, and nothing is half done then.
  Relation relation{"RaceStatsX", "Race", "Stats", kDeleteCascade, "RaceID", "RaceID"};
  EXPECT_EQ(ErrorOf([&] { db.AppendRelation(relation); }), kRelatedRecordRequired);
  EXPECT_EQ(db.Relations().size(), 1U);
  db.Execute("DELETE * FROM Stats WHERE RaceID=2");
  db.AppendRelation(relation);
  db.Execute("INSERT INTO Stats (RaceID, DriverID) VALUES (1, 1)");
  EXPECT_EQ(TextOf(db, "SELECT Max(StatsID) FROM Stats"), "41");
  db.Execute("DELETE * FROM Race WHERE RaceID=1");
  EXPECT_EQ(TextOf(db, "SELECT Count(*) FROM Stats"), "0");
  EXPECT_EQ(TextOf(db, "SELECT Count(*) FROM Driver"), "3");
  EXPECT_EQ(ErrorOf([&] { db.AppendRelation({"X", "Race", "Stats", 0, "Laps", "Finish"}); }), kNoUniqueIndex);
}

TEST(Recordset, SnapshotIsFixedWhenOpened) {
  TestDatabase test;
  auto rows = test.Db().OpenRecordset("SELECT Name FROM Driver");
  test.Db().Execute("DELETE * FROM Driver");
  EXPECT_EQ(rows.RecordCount(), 3U);
  EXPECT_EQ(rows["NAME"].Text(), "Ann");
  EXPECT_EQ(ErrorOf([&] { rows["Nam"]; }), kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { rows.Edit(); }), kReadOnly);
  auto none = test.Db().OpenRecordset("SELECT Name FROM Driver");
  EXPECT_TRUE(none.AtEnd());
  EXPECT_EQ(ErrorOf([&] { none.At(0); }), kNoCurrentRecord);
}

TEST(Recordset, DynasetEditsAFixedSetOfRows) {
  TestDatabase test;
  Database& db = test.Db();
  // The edits change the order that the rows were chosen in; each row still comes once.
  auto rows = db.OpenRecordset("SELECT Finish, Points FROM Stats ORDER BY Finish DESC, StatsID",
                               RecordsetType::Dynaset);
  int next = 0;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    rows.Edit();
    rows.Set("Finish", Value(++next));
    rows.Set("Points", Value());
    rows.Update();
    EXPECT_EQ(rows["Finish"].ToLong(), next);
  }
  EXPECT_EQ(TextOf(db, "SELECT Finish FROM Stats ORDER BY StatsID"), "4,2,1,5,3");
  EXPECT_EQ(TextOf(db, "SELECT Count(*) FROM Stats WHERE Points Is Null"), "5");

  rows.MoveFirst();
  rows.Edit();
  rows.Set("Finish", Value(99999));
  EXPECT_EQ(ErrorOf([&] { rows.Update(); }), kOverflow);
  db.Execute("DELETE * FROM Stats");
  rows.Edit();
  rows.Set("Finish", Value(1));
  EXPECT_EQ(ErrorOf([&] { rows.Update(); }), kRecordDeleted);
  EXPECT_EQ(ErrorOf([&] { db.OpenRecordset("SELECT Sum(Points) FROM Stats", RecordsetType::Dynaset); }),
            kNotUpdatable);
}

TEST(Recordset, DynasetShowsWhatOthersHaveChanged) {
  TestDatabase test;
  Database& db = test.Db();
  DBEngine other;
  const auto beside = other.DefaultWorkspace().OpenDatabase(test.Path());
  auto rows =
      db.OpenRecordset("SELECT StatsID, Points, Points+1 AS More, 'x' & Finish FROM Stats WHERE Finish<9",
                       RecordsetType::Dynaset);
  db.Execute("UPDATE Stats SET Points=7, Finish=8 WHERE StatsID=2");
  beside->Execute("UPDATE Stats SET Points=9 WHERE StatsID=4");
  beside->Execute("DELETE * FROM Stats WHERE StatsID=3");
  EXPECT_EQ(rows["Points"].ToLong(), 185);
  rows.MoveNext();
  EXPECT_EQ(rows["Points"].ToLong(), 7);
  EXPECT_EQ(rows["More"].ToLong(), 8);
  EXPECT_EQ(rows.At(3).Text(), "x8");
  rows.MoveNext();
  EXPECT_EQ(ErrorOf([&] { rows["Points"]; }), kRecordDeleted);
  EXPECT_EQ(ErrorOf([&] { rows.Edit(); }), kRecordDeleted);
  rows.MoveNext();
  EXPECT_EQ(rows["Points"].ToLong(), 9);
  {
    // Inside a unit of work, too, where only statements of our own come between.
    UnitOfWork unit(db);
    auto inside = db.OpenRecordset("SELECT Points FROM Stats ORDER BY StatsID", RecordsetType::Dynaset);
    inside.Edit();
    inside.Set("Points", Value(1));
    inside.Update();
    db.Execute("UPDATE Stats SET Points=Points+1");
    EXPECT_EQ(inside.At(0).ToLong(), 1);
    inside.MoveNext();
    EXPECT_EQ(inside.At(0).ToLong(), 8);
    unit.Commit();
  }
  // Records that outlive their database say so.
  auto snapshot = db.OpenRecordset("SELECT Name FROM Driver");
  test.Close();
  EXPECT_EQ(snapshot.At(0).Text(), "Ann");
  rows.MoveNext();
  EXPECT_EQ(ErrorOf([&] { rows["Points"]; }), kObjectInvalid);
  EXPECT_EQ(ErrorOf([&] { rows.Edit(); }), kObjectInvalid);
}

TEST(UnitOfWork, KeepsWhatWasDoneBeforeAnErrorWhenToldTo) {
  TestDatabase test;
  try {
    UnitOfWork unit(test.Db(), UnitOfWork::OnError::Keep);
    test.Db().Execute("UPDATE Driver SET Handicap=7");
    UnitOfWork inner(test.Db(), UnitOfWork::OnError::Keep);
    test.Db().Execute("INSERT INTO Driver (DriverID, Name) VALUES (1, 'twice')");
  } catch (const EngineError&) {
  }
  test.Reopen();
  EXPECT_EQ(TextOf(test.Db(), "SELECT Count(*) FROM Driver WHERE Handicap=7"), "3");
}

TEST(UnitOfWork, TakesBackWhatWasDoneBeforeAnErrorWhenToldTo) {
  TestDatabase test;
  try {
    UnitOfWork unit(test.Db(), UnitOfWork::OnError::TakeBack);
    test.Db().Execute("UPDATE Driver SET Handicap=7");
    UnitOfWork inner(test.Db());
    test.Db().Execute("INSERT INTO Driver (DriverID, Name) VALUES (1, 'twice')");
  } catch (const EngineError&) {
  }
  {
    UnitOfWork unit(test.Db(), UnitOfWork::OnError::TakeBack);
    test.Db().Execute("UPDATE Driver SET Handicap=8 WHERE DriverID=1");
    unit.Commit();
  }
  EXPECT_EQ(TextOf(test.Db(), "SELECT Count(*) FROM Driver WHERE Handicap=7"), "0");
  test.Reopen();
  EXPECT_EQ(TextOf(test.Db(), "SELECT Count(*) FROM Driver WHERE Handicap>6"), "1");
}

TEST(UnitOfWork, SchemaChangesBelongToIt) {
  TestDatabase test;
  UnitOfWork unit(test.Db());
  test.Db().AppendField("Driver", TestDatabase::Make("Rookie", FieldType::Boolean));
  EXPECT_EQ(
      ErrorOf([&] { test.Db().AppendField("Driver", TestDatabase::Make("Rookie", FieldType::Boolean)); }),
      kFieldExists);
  unit.Commit();
  test.Reopen();
  EXPECT_NE(test.Db().FindTableDef("Driver")->FindField("Rookie"), nullptr);
}

TEST(Database, SeesTheTablesThatAnotherProgramMakes) {
  TestDatabase test;
  DBEngine other;
  const auto beside = other.DefaultWorkspace().OpenDatabase(test.Path());
  TableDef extra;
  extra.Name = "Extra";
  extra.Fields = {TestDatabase::Make("A", FieldType::Long)};
  test.Db().ChangedByOthers();
  beside->AppendTableDef(extra);
  beside->DeleteField("Race", "Note");
  EXPECT_TRUE(test.Db().ChangedByOthers());
  EXPECT_NE(test.Db().FindTableDef("Extra"), nullptr);
  EXPECT_EQ(ErrorOf([&] { test.Db().OpenRecordset("SELECT Note FROM Race"); }), kTooFewParameters);

  // A unit of work looks by itself.
  beside->DeleteTableDef("Extra");
  UnitOfWork unit(test.Db());
  test.Db().AppendTableDef(extra);
  unit.Commit();
  EXPECT_EQ(test.Db().Execute("INSERT INTO Extra (A) VALUES (1)"), 1);
}

TEST(UnitOfWork, ARollbackTakesTheSchemaBack) {
  TestDatabase test;
  TableDef extra;
  extra.Name = "Extra";
  extra.Fields = {TestDatabase::Make("A", FieldType::Long)};
  {
    UnitOfWork unit(test.Db(), UnitOfWork::OnError::TakeBack);
    test.Db().AppendTableDef(extra);
    test.Db().DeleteField("Race", "Note");
    test.Db().DeleteRelation("RaceStatsX");
    unit.TakeBack();
  }
  EXPECT_EQ(test.Db().FindTableDef("Extra"), nullptr);
  EXPECT_EQ(test.Db().Relations().size(), 2U);
  EXPECT_EQ(TextOf(test.Db(), "SELECT Count(*) FROM Race WHERE Note Is Null"), "2");
  EXPECT_EQ(ErrorOf([&] { test.Db().Execute("INSERT INTO Extra (A) VALUES (1)"); }), kUnknownTable);

  // The same when the store gives the transaction up: it does for a statement that is stopped.
  {
    UnitOfWork unit(test.Db());
    test.Db().AppendTableDef(extra);
    const QueryLimits limits{std::chrono::milliseconds(0), 1000, 0};
    EXPECT_EQ(ErrorOf([&] {
                test.Db().Execute(
                    "UPDATE Stats SET Points=(SELECT Count(*) FROM Stats AS A, Stats AS B, Stats AS "
                    "C, Stats AS D, Stats AS E, Stats AS F)",
                    limits);
              }),
              kQueryStopped);
    EXPECT_EQ(ErrorOf([&] { test.Db().Execute("UPDATE Stats SET Points=1"); }), kNoTransaction);
    EXPECT_EQ(ErrorOf([&] { unit.Commit(); }), kNoTransaction);
  }
  EXPECT_EQ(test.Db().FindTableDef("Extra"), nullptr);
  test.Db().AppendTableDef(extra);
  test.Db().Execute("INSERT INTO Extra (A) VALUES (1)");
  EXPECT_EQ(TextOf(test.Db(), "SELECT A FROM Extra"), "1");
}

TEST(Database, RowsKeepTheirNumbersUnderANewRelation) {
  TestDatabase test;
  TableDef lap;
  lap.Name = "Lap";
  lap.Fields = {TestDatabase::Make("RaceID", FieldType::Long), TestDatabase::Make("Lap", FieldType::Long)};
  Database& db = test.Db();
  db.AppendTableDef(lap);
  for (int i = 1; i <= 4; ++i)
    db.Execute("INSERT INTO Lap (RaceID, Lap) VALUES (1, " + std::to_string(i) + ")");
  db.Execute("DELETE * FROM Lap WHERE Lap=2");
  auto rows = db.OpenRecordset("SELECT Lap FROM Lap WHERE Lap=4", RecordsetType::Dynaset);
  db.AppendRelation({"RaceLap", "Race", "Lap", kDeleteCascade, "RaceID", "RaceID"});
  rows.Edit();
  rows.Set("Lap", Value(40));
  rows.Update();
  EXPECT_EQ(TextOf(db, "SELECT Lap FROM Lap"), "1,3,40");

  // A key that comes later is a key for the store, too, and its end is one.
  db.AppendIndex("Lap", {"Key", {"Lap"}, true, true, true});
  EXPECT_EQ(ErrorOf([&] { db.Execute("INSERT INTO Lap (RaceID, Lap) VALUES (1, 3)"); }), kDuplicateKey);
  db.DeleteIndex("Lap", "Key");
  db.Execute("INSERT INTO Lap (RaceID, Lap) VALUES (1, 3)");
  EXPECT_EQ(ErrorOf([&] { db.AppendIndex("Lap", {"Key", {"Lap"}, true, true, true}); }), kDuplicateKey);
  EXPECT_EQ(TextOf(db, "SELECT Count(*) FROM Lap"), "4");
  EXPECT_TRUE(db.CheckIntegrity().empty());
}

TEST(Database, ARelationErrorNamesTheTableOfTheStatement) {
  TestDatabase test;
  Database& db = test.Db();
  // An orphan elsewhere, as an older program may have left it.
  db.DeleteRelation("DriverStatsX");
  db.Execute("UPDATE Stats SET DriverID=77 WHERE StatsID=1");
  TableDef note;
  note.Name = "Note";
  note.Fields = {TestDatabase::Make("RaceID", FieldType::Long),
                 TestDatabase::Make("DriverID", FieldType::Long)};
  db.AppendTableDef(note);
  db.AppendRelation({"RaceNote", "Race", "Note", 0, "RaceID", "RaceID"});
  const auto description = [&](const char* sql) {
    try {
      db.Execute(sql);
    } catch (const EngineError& e) {
      return e.Description();
    }
    return std::string("no error");
  };
  EXPECT_NE(description("INSERT INTO Note (RaceID) VALUES (99)").find("table 'Race'"), std::string::npos);
  db.Execute("DELETE * FROM Stats WHERE RaceID=2");
  db.Execute("INSERT INTO Note (RaceID) VALUES (2)");
  EXPECT_NE(description("DELETE * FROM Race WHERE RaceID=2").find("table 'Note'"), std::string::npos);
  EXPECT_NE(description("UPDATE Race SET RaceID=5 WHERE RaceID=2").find("table 'Note'"), std::string::npos);
}

TEST(Workspace, RefusesWhatIsNoDatabase) {
  TempFolder folder;
  DBEngine engine;
  Workspace& workspace = engine.DefaultWorkspace();
  auto open = [&](const std::string& name) {
    return ErrorOf([&] { workspace.OpenDatabase(folder.File(name)); });
  };
  EXPECT_EQ(open("missing.lgx"), kFileNotFound);
  std::ofstream(folder.File("empty.lgx"));
  EXPECT_EQ(open("empty.lgx"), kUnrecognizedFormat);
  std::ofstream(folder.File("text.lgx")) << std::string(5000, 'x');
  EXPECT_EQ(open("text.lgx"), kUnrecognizedFormat);
  EXPECT_EQ(open("."), kUnrecognizedFormat);
  EXPECT_EQ(ErrorOf([&] { workspace.CreateDatabase(folder.File("text.lgx")); }), kDatabaseExists);
  EXPECT_EQ(ErrorOf([&] { workspace.CreateDatabase(folder.File("no/folder.lgx")); }), kInvalidPath);
}

TEST(Workspace, SurvivesDamagedFiles) {
  TestDatabase test;
  test.Close();
  const std::string whole = BytesOf(test.Path());
  ASSERT_GT(whole.size(), 8192U);
  // Cut at every page and between pages, and zeroed page by page: an error or a database, nothing else.
  int refused = 0;
  for (std::size_t at = 512; at < whole.size(); at += 2048) {
    for (const bool cut : {true, false}) {
      const std::string path = test.folder.File("damaged.lgx");
      std::string bytes = cut ? whole.substr(0, at) : whole;
      if (!cut)
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                  bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + 2048, bytes.size())), '\0');
      std::ofstream(path, std::ios::binary) << bytes;
      refused += ErrorOf([&] {
                   auto db = test.Engine().DefaultWorkspace().OpenDatabase(path);
                   for (const TableDef& table : db->TableDefs())
                     db->OpenRecordset("SELECT * FROM [" + table.Name + "]");
                   db->Execute("DELETE * FROM Driver");
                   db->Execute("INSERT INTO Driver (Name) VALUES ('x')");
                 }) != 0
                     ? 1
                     : 0;
    }
  }
  EXPECT_GT(refused, 4);
}

TEST(Workspace, ExclusiveFilesAreHeldOnce) {
  TestDatabase test;
  test.Close();
  OpenOptions exclusive;
  exclusive.exclusive = true;
  auto held = test.Engine().DefaultWorkspace().OpenDatabase(test.Path(), exclusive);
  DBEngine other;
  EXPECT_EQ(ErrorOf([&] { other.DefaultWorkspace().OpenDatabase(test.Path(), exclusive); }), kFileInUse);
  held.reset();
  EXPECT_EQ(ErrorOf([&] { other.DefaultWorkspace().OpenDatabase(test.Path(), exclusive); }), 0);
}

TEST(Workspace, ReadOnlyChangesNothing) {
  TestDatabase test;
  test.Close();
  const std::string before = BytesOf(test.Path());
  OpenOptions options;
  options.readOnly = true;
  auto db = test.Engine().DefaultWorkspace().OpenDatabase(test.Path(), options);
  EXPECT_EQ(ErrorOf([&] { db->Execute("DELETE * FROM Driver"); }), kReadOnly);
  EXPECT_EQ(TextOf(*db, "SELECT Count(*) FROM Driver"), "3");
  db.reset();
  EXPECT_EQ(BytesOf(test.Path()), before);
}

TEST(Workspace, InsertsIntoAnotherOpenDatabase) {
  TestDatabase from;
  TestDatabase into;
  // Both in one workspace: the second file is opened there, too.
  into.Close();
  auto target = from.Engine().DefaultWorkspace().OpenDatabase(into.Path());
  {
    UnitOfWork unit(*target);
    EXPECT_EQ(from.Db().Execute("INSERT INTO Race IN '" + into.Path() + "' SELECT Name, Laps FROM Race"), 2);
    EXPECT_EQ(ErrorOf([&] {
                from.Db().Execute("INSERT INTO Driver IN '" + into.Path() + "' SELECT * FROM Driver");
              }),
              kDuplicateKey);
    EXPECT_EQ(
        ErrorOf([&] {
          from.Db().Execute("INSERT INTO Driver IN '" + into.Path() + "' SELECT Name AS Nam FROM Driver");
        }),
        kUnknownInsertField);
  }
  EXPECT_EQ(TextOf(*target, "SELECT Name FROM Race"), "Daytona,Martinsville,Daytona,Martinsville");
  EXPECT_EQ(TextOf(*target, "SELECT Count(*) FROM Driver"), "3");
  target.reset();
  // A file that is not open is opened for the statement.
  EXPECT_EQ(from.Db().Execute("INSERT INTO Driver (Name) IN '" + into.Path() + "' SELECT Name FROM Driver"),
            3);
}

TEST(Workspace, QuotedNumbersFollowTheDecimalSeparator) {
  TestDatabase test;
  test.Engine().DefaultWorkspace().SetDecimalSeparator(',');
  Database& db = test.Db();
  db.Execute("UPDATE Race SET Length='1,017' WHERE RaceID=1");
  EXPECT_EQ(TextOf(db, "SELECT Length & '' FROM Race WHERE Length > 1.0169"), "1,017");
  EXPECT_EQ(ErrorOf([&] { db.Execute("UPDATE Race SET Length='1.017' WHERE RaceID=1"); }), kConversionError);
}

TEST(DBEngine, CompactionKeepsEverythingAndGivesSpaceBack) {
  TestDatabase test;
  {
    UnitOfWork unit(test.Db());
    for (int i = 0; i < 3000; ++i)
      test.Db().Execute("INSERT INTO Race (Name, Laps) VALUES ('a name of some length', 5)");
    unit.Commit();
  }
  test.Db().Execute("DELETE * FROM Race WHERE RaceID > 2");
  EXPECT_GT(test.Db().FreePages(), 10);
  test.Close();
  const std::string compact = test.folder.File("compact.lgx");
  test.Engine().CompactDatabase(test.Path(), compact);
  EXPECT_LT(std::filesystem::file_size(compact), std::filesystem::file_size(test.Path()));
  EXPECT_EQ(ErrorOf([&] { test.Engine().CompactDatabase(test.Path(), compact); }), kDatabaseExists);
  platform::ReplaceFile(compact, test.Path());
  test.Reopen();
  test.Db().Execute("INSERT INTO Race (Name) VALUES ('next')");
  EXPECT_EQ(TextOf(test.Db(), "SELECT RaceID FROM Race"), "1,2,3003");
  EXPECT_EQ(test.Db().Relations().size(), 2U);
}

}  // namespace
}  // namespace scorvane::engine
