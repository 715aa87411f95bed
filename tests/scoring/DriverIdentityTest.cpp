#include "scoring/DriverIdentity.h"

#include "StagedRace.h"

namespace scorvane::scoring {
namespace {

using DriverIdentity = ScoringFixture;

TEST_F(DriverIdentity, FindsADriverWhateverTheLetterCaseAndAddsTheOthers) {
  const auto first = FindOrAddDriver(*league_, "Sean O'Brien");
  EXPECT_EQ(FindOrAddDriver(*league_, "SEAN o'brien"), first);
  const auto second = FindOrAddDriver(*league_, "Séan O'Brien");
  EXPECT_NE(second, first);
  EXPECT_EQ(FindOrAddDriver(*league_, "SÉAN O'BRIEN"), second);
  const auto third = FindOrAddDriver(*league_, "a|b");
  EXPECT_EQ(FindOrAddDriver(*league_, "A|B"), third);
  EXPECT_EQ(test::Rows(*league_, "SELECT Name, Exclude, Rookie, Handicap FROM Driver ORDER BY DriverID"),
            (std::vector<std::string>{"Sean O'Brien|False|False|0", "Séan O'Brien|False|False|0",
                                      "a|b|False|False|0"}));

  league_->Execute("INSERT INTO Driver (Name) VALUES ('Sean O''Brien')");
  EXPECT_EQ(FindOrAddDriver(*league_, "Sean O'Brien"), first);
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Driver"), "4");
}

TEST_F(DriverIdentity, RefusesADriverWithoutAName) {
  for (const char* name : {"", "   "}) {
    try {
      FindOrAddDriver(*league_, name);
      FAIL() << "a driver without a name was added";
    } catch (const engine::EngineError& error) {
      EXPECT_EQ(error.Number(), engine::kNullNotAllowed);
    }
  }
}

TEST_F(DriverIdentity, KnowsWhoIsExcluded) {
  league_->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('Out', True)");
  league_->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('In', False)");
  EXPECT_TRUE(IsExcludedByName(*league_, "oUT"));
  EXPECT_FALSE(IsExcludedByName(*league_, "In"));
  EXPECT_FALSE(IsExcludedByName(*league_, "Nobody"));
  EXPECT_FALSE(IsExcludedByName(*league_, ""));
  EXPECT_TRUE(IsExcludedById(*league_, 1));
  EXPECT_FALSE(IsExcludedById(*league_, 2));
  EXPECT_FALSE(IsExcludedById(*league_, 99));
}

}  // namespace
}  // namespace scorvane::scoring
