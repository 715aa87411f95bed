// Runs the text files of tests/data/functions: an expression of the dialect a line, with what it gives.
//
//   expression => text      its value as text; Null is NULL
//   expression => error N   it fails with the engine's error N
//
// "#" at the start of a line begins a comment. A result that is empty, or begins or ends with blanks, stands
// between "|".
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "engine/Database.h"
#include "engine/EngineError.h"
#include "engine/TestDatabase.h"
#include "engine/sql/Parser.h"

namespace scorvane::engine {
namespace {

namespace fs = std::filesystem;

std::string Answer(Database& db, const std::string& expression, char decimal) {
  const std::string sql = "SELECT " + expression;
  try {
    const std::string printed = sql::Print(sql::ParseText(sql));
    EXPECT_EQ(sql::Print(sql::ParseText(printed)), printed);
    Recordset rows = db.OpenRecordset(sql);
    if (rows.At(0).IsNull()) return "NULL";
    const std::string text = rows.At(0).ToText(decimal);
    return text.empty() || text.starts_with(' ') || text.ends_with(' ') ? "|" + text + "|" : text;
  } catch (const EngineError& e) {
    EXPECT_FALSE(e.Description().empty());
    return "error " + std::to_string(e.Number());
  }
}

class FunctionCases : public testing::TestWithParam<std::string> {};

TEST_P(FunctionCases, Run) {
  std::ifstream file(fs::path(SCORVANE_SOURCE_DIR) / "tests/data/functions" / GetParam());
  TestDatabase test;
  const char decimal = GetParam() == "comma.test" ? ',' : '.';
  test.Engine().DefaultWorkspace().SetDecimalSeparator(decimal);
  int number = 0;
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    const std::size_t arrow = line.rfind(" => ");
    ASSERT_NE(arrow, std::string::npos) << number;
    EXPECT_EQ(Answer(test.Db(), line.substr(0, arrow), decimal), line.substr(arrow + 4))
        << GetParam() << ":" << number << " " << line;
    ++cases;
  }
  EXPECT_GT(cases, 0);
}

std::vector<std::string> CaseFiles() {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(fs::path(SCORVANE_SOURCE_DIR) / "tests/data/functions"))
    files.push_back(entry.path().filename().string());
  std::sort(files.begin(), files.end());
  return files;
}

INSTANTIATE_TEST_SUITE_P(Files, FunctionCases, testing::ValuesIn(CaseFiles()),
                         [](const auto& file) { return fs::path(file.param).stem().string(); });

}  // namespace
}  // namespace scorvane::engine
