// A league with two races, and reports of a test's own in the template.
#pragma once

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/SqlText.h"
#include "db/LeagueFixture.h"

namespace scorvane::reports {

struct FieldRow {
  const char* name;
  int width;
  int alignment;
  const char* format;  // null for Null
  const char* hidden;  // an SQL literal
  const char* field;
};

class ReportsFixture : public test::LeagueFixture {
 protected:
  ReportsFixture() : league_(NewLeague()) {}

  void AddRaces() {
    engine::UnitOfWork work(*league_);
    for (const char* sql : {
             "INSERT INTO Race (Name,Length,Laps,RaceTime,AvgSpeed,VictoryMargin,Cautions,LeadChanges) "
             "VALUES ('Daytona',2.5,80,'1:20:05.500','149.9','1.250 s',3,12)",
             "INSERT INTO Race (Name,Length,Laps,RaceTime,Cautions,Weather) "
             "VALUES ('Pocono',2.5,40,'0:59:59',0,'Clear')",
             "INSERT INTO Driver (Name) VALUES ('Alvin Avery')",
             "INSERT INTO Driver (Name) VALUES ('Ben Brook')",
             "INSERT INTO Driver (Name) VALUES ('José Crane & Son')",
         })
      league_->Execute(sql);
    for (const char* values : {
             "1,3,3,1,0,0,165,0,0,'Engine',Null",
             "1,1,1,3,80,60,185,10,190.125,'Running',Null",
             "1,2,2,0,80,20,175,5,Null,Null,Null",
             "2,2,1,2,40,40,180,5,120,'Running','118,25'",
             "2,1,2,1,40,0,170,0,0,'Running',Null",
             "2,3,3,3,12,0,165,0,Null,'Engine','0'",
         })
      league_->Execute(
          std::string("INSERT INTO Stats (RaceID,DriverID,Finish,Start,LapsRun,LapsLed,Points,Bonus,"
                      "Qualifying,Status,AvgSpeed) VALUES (") +
          values + ")");
  }

  // The fields stand in the template in the opposite of their order.
  std::int32_t AddReport(const std::string& query, const std::vector<FieldRow>& fields, int sequence = 100) {
    engine::UnitOfWork work(*template_);
    template_->Execute(fmt::format("INSERT INTO Report (Name,Sequence,Query) VALUES ('Test',{},{})", sequence,
                                   common::QuoteSQL(query)));
    const std::int32_t id = common::GetMaxID(*template_, "Report", "ReportID");
    for (std::size_t i = fields.size(); i-- > 0;) {
      const FieldRow& row = fields[i];
      template_->Execute(fmt::format(
          "INSERT INTO ReportField (ReportID,Sequence,Name,ColWidth,ColAlignment,ColFormat,Hidden,Field) "
          "VALUES ({},{},{},{},{},{},{},{})",
          id, i + 1, common::QuoteSQL(row.name), row.width, row.alignment,
          row.format == nullptr ? "Null" : common::QuoteSQL(row.format), row.hidden,
          common::QuoteSQL(row.field)));
    }
    return id;
  }

  static std::string ReadBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  std::unique_ptr<engine::Database> league_;
  common::ProcessState state_;
};

}  // namespace scorvane::reports
