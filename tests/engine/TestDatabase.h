// A small league in a file of its own, for the engine's tests.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "engine/Database.h"
#include "support/TempFolder.h"

namespace scorvane::engine {

using test::TempFolder;

class TestDatabase {
 public:
  TestDatabase() : db_(engine_.DefaultWorkspace().CreateDatabase(Path())) {
    UnitOfWork unit(*db_);
    TableDef driver;
    driver.Name = "Driver";
    driver.Fields = {Make("DriverID", FieldType::Long, 0, kAutoIncrField | kFixedField),
                     Make("Name", FieldType::Text, 12, 0, true), Make("Exclude", FieldType::Boolean),
                     Make("Handicap", FieldType::Long)};
    driver.Fields[3].DefaultValue = "0";
    driver.Indexes = {{"Name", {"Name"}, false, false, false},
                      {"PrimaryKey", {"DriverID"}, true, true, true}};
    db_->AppendTableDef(driver);
    TableDef race;
    race.Name = "Race";
    race.Fields = {Make("RaceID", FieldType::Long, 0, kAutoIncrField | kFixedField),
                   Make("Name", FieldType::Text, 50),
                   Make("Length", FieldType::Single),
                   Make("Laps", FieldType::Integer),
                   Make("Held", FieldType::Date),
                   Make("Note", FieldType::Memo)};
    race.Fields[5].AllowZeroLength = true;
    race.Indexes = {{"PrimaryKey", {"RaceID"}, true, true, true}};
    db_->AppendTableDef(race);
    TableDef stats;
    stats.Name = "Stats";
    stats.Fields = {Make("StatsID", FieldType::Long, 0, kAutoIncrField | kFixedField),
                    Make("RaceID", FieldType::Long),
                    Make("DriverID", FieldType::Long),
                    Make("Finish", FieldType::Integer),
                    Make("Points", FieldType::Long),
                    Make("Qualifying", FieldType::Single),
                    Make("Status", FieldType::Text, 25)};
    stats.Indexes = {{"DriverStats", {"DriverID"}, false, false, true},
                     {"PrimaryKey", {"StatsID"}, true, true, true}};
    db_->AppendTableDef(stats);
    db_->AppendRelation(
        {"DriverStatsX", "Driver", "Stats", kUpdateCascade | kDeleteCascade, "DriverID", "DriverID"});
    db_->AppendRelation({"RaceStatsX", "Race", "Stats", kUpdateCascade, "RaceID", "RaceID"});
    for (const char* sql : {
             "INSERT INTO Driver (Name) VALUES ('Ann')",
             "INSERT INTO Driver (Name, Exclude) VALUES ('bob', True)",
             "INSERT INTO Driver (Name, Handicap) VALUES ('Zoë', 3)",
             "INSERT INTO Race (Name, Length, Laps) VALUES ('Daytona', '2.5', 200)",
             "INSERT INTO Race (Name, Length, Laps) VALUES ('Martinsville', '0.526', 500)",
             "INSERT INTO Stats (RaceID, DriverID, Finish, Points, Qualifying) VALUES (1, 1, 1, 185, "
             "'192.415')",
             "INSERT INTO Stats (RaceID, DriverID, Finish, Points, Qualifying) VALUES (1, 2, 2, 170, "
             "'190.5')",
             "INSERT INTO Stats (RaceID, DriverID, Finish, Points) VALUES (1, 3, 3, 165)",
             "INSERT INTO Stats (RaceID, DriverID, Finish, Points, Status) VALUES (2, 3, 1, 180, 'running')",
             "INSERT INTO Stats (RaceID, DriverID, Finish, Points, Status) VALUES (2, 1, 2, 170, 'engine')",
         })
      db_->Execute(sql);
    unit.Commit();
  }

  std::string Path() const { return folder.File("test.lgx"); }
  Database& Db() { return *db_; }
  DBEngine& Engine() { return engine_; }
  void Close() { db_.reset(); }
  void Reopen() {
    Close();
    db_ = engine_.DefaultWorkspace().OpenDatabase(Path());
  }

  static Field Make(const char* name, FieldType type, int size = 0, int attributes = 0,
                    bool required = false) {
    Field field;
    field.Name = name;
    field.Type = type;
    field.Size = size;
    field.Attributes = attributes;
    field.Required = required;
    return field;
  }

  TempFolder folder;

 private:
  DBEngine engine_;
  std::unique_ptr<Database> db_;
};

}  // namespace scorvane::engine
