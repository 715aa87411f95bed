#include "scoring/PointSystem.h"

#include "StagedRace.h"

namespace scorvane::scoring {
namespace {

using PointSystem = ScoringFixture;

TEST_F(PointSystem, TheTemplateScores43Positions) {
  LoadPointSystem(*template_, *league_, state_);
  EXPECT_EQ(state_.pointTable.Positions(), 43);
  const struct {
    int position;
    int column;
    int points;
  } cases[] = {{1, 0, 175}, {2, 0, 170}, {43, 0, 34}, {44, 0, 0}, {2, 1, 49}, {2, 2, 98}, {2, 3, 147}};
  for (const auto& c : cases) {
    const Score score = ScoreByPosition(state_, c.position, c.column);
    EXPECT_EQ(score.points.ToLong(), c.points) << c.position;
    EXPECT_TRUE(score.prizeMoney.IsNull());
  }
}

TEST_F(PointSystem, ALeaguesOwnTableScoresByRowAndPaysMoney) {
  league_->Execute("DELETE * FROM PointSystem");
  // The n-th position is the n-th row, whatever its number and whenever it was added.
  for (const char* row : {"(30, 5, Null)", "(10, 25, 9000)", "(20, Null, 100)"})
    league_->Execute(std::string("INSERT INTO PointSystem (Position, Points, PrizeMoney) VALUES ") + row);
  state_.useCustomPointSystem = true;
  LoadPointSystem(*template_, *league_, state_);
  EXPECT_EQ(state_.pointTable.Positions(), 3);
  const char* expected[] = {"25 9000", "0 100", "5 ", "0 "};
  for (int position = 1; position <= 4; ++position) {
    const Score score = ScoreByPosition(state_, position, 0);
    EXPECT_EQ(score.points.ToText() + " " + score.prizeMoney.ToText(), expected[position - 1]);
  }
  league_->Execute("DELETE * FROM PointSystem");
  LoadPointSystem(*template_, *league_, state_);
  EXPECT_EQ(ScoreByPosition(state_, 1, 0).points.ToLong(), 0);
}

TEST_F(PointSystem, RecognisesTheTableBehindARace) {
  const struct {
    std::vector<int> points;
    std::optional<int> step;
  } cases[] = {
      {{150, 147, 144, 140, 137}, 3},
      {{100, 98, 96, 93}, 2},
      {{50, 49, 47, 46, 44}, 1},
      {{50}, std::nullopt},
      {{}, std::nullopt},
      {{10, 10, 9, 9}, std::nullopt},
      {{175, 170, 165}, std::nullopt},
      {{9, 7, 4}, 2},
      {{3, 0, 0, 0}, 3},
      {{7, 4, 3, 2}, 1},
  };
  for (const bool staged : {true, false}) {
    for (const auto& c : cases) {
      std::vector<Result> results;
      for (auto points = c.points.rbegin(); points != c.points.rend(); ++points) {
        results.push_back({1});
        results.back().points = *points;
      }
      EXPECT_EQ(PointStep(*league_, AddRace(staged, results), staged), c.step)
          << testing::PrintToString(c.points) << (staged ? " staged" : " stored");
    }
  }
}

}  // namespace
}  // namespace scorvane::scoring
