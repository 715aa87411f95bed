// The objects around the SQL: schema, recordsets, units of work, opening, durability.
#include "engine/Database.h"

#include <gtest/gtest.h>

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
