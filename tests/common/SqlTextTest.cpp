#include "common/SqlText.h"

#include <gtest/gtest.h>

namespace scorvane::common {
namespace {

TEST(SqlText, QuotesTexts) {
  const struct {
    const char* text;
    const char* quoted;
  } cases[] = {{"plain", "'plain'"},
               {"O'Brien", "'O''Brien'"},
               {"a|b", "'a' & Chr(124) & 'b'"},
               {"'|'", "'''' & Chr(124) & ''''"},
               {"|", "'' & Chr(124) & ''"},
               {" kept ", "' kept '"},
               {"", "NULL"},
               {"   ", "NULL"},
               {"NULL", "'NULL'"}};
  for (const auto& c : cases) EXPECT_EQ(QuoteSQL(c.text), c.quoted);
}

TEST(SqlText, QuotesValuesInTheUsersNotation) {
  using engine::Value;
  EXPECT_EQ(QuoteSQL(Value(), '.'), "NULL");
  EXPECT_EQ(QuoteSQL(Value(2.5F), ','), "'2,5'");
  EXPECT_EQ(QuoteSQL(Value(12), '.'), "'12'");
  EXPECT_EQ(QuoteSQL(Value("2.5"), ','), "'2.5'");
  EXPECT_EQ(QuoteSQL(Value(" "), '.'), "NULL");
}

TEST(SqlText, NullToText) {
  EXPECT_EQ(NullToText(engine::Value(), "none", '.'), "none");
  EXPECT_EQ(NullToText(engine::Value(""), "none", '.'), "");
  EXPECT_EQ(NullToText(engine::Value(1.5), "none", ','), "1,5");
}

}  // namespace
}  // namespace scorvane::common
