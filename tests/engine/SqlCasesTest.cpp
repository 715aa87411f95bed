// Runs the text files of tests/data/sql: statements of the dialect with the rows or the error that they must
// give.
//
//   ok            the statement runs
//   changes N     it runs and changes N rows
//   error N       it fails with the engine's error N
//   rows          it is a SELECT; its rows stand behind a line "----", fields between "|"
//
// A blank line ends a case, "#" begins a comment. Every file starts with the same small league. Each
// statement that parses is printed from its tree and parsed again: the second print must be the same.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "engine/Database.h"
#include "engine/EngineError.h"
#include "engine/TestDatabase.h"
#include "engine/sql/Parser.h"

namespace scorvane::engine {
namespace {

namespace fs = std::filesystem;

struct Case {
  int line = 0;
  std::string verb;
  int number = 0;
  std::string sql;
  std::vector<std::string> rows;
};

std::vector<Case> ReadCases(const fs::path& path) {
  std::ifstream file(path);
  std::vector<Case> cases;
  std::string line;
  int number = 0;
  bool open = false;
  bool inRows = false;
  while (std::getline(file, line)) {
    ++number;
    if (!line.empty() && line[0] == '#' && !open) continue;
    if (line.empty()) {
      open = false;
      continue;
    }
    if (!open) {
      Case added;
      added.line = number;
      const std::size_t blank = line.find(' ');
      added.verb = line.substr(0, blank);
      if (blank != std::string::npos) added.number = std::stoi(line.substr(blank));
      cases.push_back(added);
      open = true;
      inRows = false;
    } else if (line == "----") {
      inRows = true;
    } else if (inRows) {
      cases.back().rows.push_back(line);
    } else {
      cases.back().sql += (cases.back().sql.empty() ? "" : "\n") + line;
    }
  }
  return cases;
}

std::vector<std::string> RowsOf(Recordset rows) {
  std::vector<std::string> lines;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    std::string line;
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
      if (i > 0) line += '|';
      line += rows.At(i).IsNull() ? "NULL" : rows.At(i).ToText();
    }
    lines.push_back(line);
  }
  return lines;
}

void CheckPrinting(const std::string& sql) {
  const std::string printed = sql::Print(sql::ParseText(sql));
  EXPECT_EQ(sql::Print(sql::ParseText(printed)), printed);
}

class SqlCases : public testing::TestWithParam<std::string> {};

// The statement with other literals of the same kinds.
std::string WithOtherLiterals(const std::string& sql) {
  sql::Lexed lexed;
  sql::Lex(sql, lexed);
  std::string other;
  std::size_t done = 0;
  for (const sql::Token& token : lexed.tokens) {
    if (token.kind != sql::TokenKind::Literal) continue;
    const auto place = static_cast<std::size_t>(token.position) - 1;
    const sql::Literal& literal = lexed.literals[static_cast<std::size_t>(token.literal)];
    other += sql.substr(done, place - done);
    done = place + token.text.size();
    switch (literal.kind) {
      case sql::Literal::Kind::Text:
        other += "'other'";
        break;
      case sql::Literal::Kind::Integer:
        other += literal.number < 2147483647 ? Value(literal.number + 1).ToText() : "1";
        break;
      case sql::Literal::Kind::Decimal:
        other += "77.5";
        break;
      case sql::Literal::Kind::Date:
        other += "#5/6/1999#";
        break;
    }
  }
  return other + sql.substr(done);
}

void Check(Database& db, const Case& c) {
  try {
    if (c.verb == "rows") {
      EXPECT_EQ(RowsOf(db.OpenRecordset(c.sql)), c.rows);
      // A second time it comes from the cache of prepared statements.
      EXPECT_EQ(RowsOf(db.OpenRecordset(c.sql)), c.rows);
    } else if (c.verb == "error") {
      if (Database::IsSelect(c.sql)) {
        db.OpenRecordset(c.sql);
      } else {
        db.Execute(c.sql);
      }
      ADD_FAILURE() << "no error";
      return;
    } else {
      const std::int64_t changed = db.Execute(c.sql);
      if (c.verb == "changes") {
        EXPECT_EQ(changed, c.number);
      } else {
        EXPECT_EQ(c.verb, "ok");
      }
    }
    CheckPrinting(c.sql);
  } catch (const EngineError& e) {
    EXPECT_EQ(c.verb == "error" ? c.number : 0, e.Number()) << e.Description();
  }
}

TEST_P(SqlCases, Run) {
  const fs::path path = fs::path(SCORVANE_SOURCE_DIR) / "tests/data/sql" / GetParam();
  const std::vector<Case> cases = ReadCases(path);
  ASSERT_FALSE(cases.empty());
  TestDatabase test;
  for (const Case& c : cases) {
    SCOPED_TRACE(path.filename().string() + ":" + std::to_string(c.line) + " " + c.sql);
    test.Reopen();
    Database& db = test.Db();
    {
      // Cold, and then a statement of its shape: neither stays.
      UnitOfWork unit(db, UnitOfWork::OnError::TakeBack);
      Check(db, c);
      unit.TakeBack();
    }
    try {
      UnitOfWork unit(db, UnitOfWork::OnError::TakeBack);
      const std::string other = WithOtherLiterals(c.sql);
      if (Database::IsSelect(other)) {
        db.OpenRecordset(other);
      } else {
        db.Execute(other);
      }
      unit.TakeBack();
    } catch (const EngineError&) {  // NOLINT(bugprone-empty-catch): it may be one that is refused
    }
    Check(db, c);
  }
}

std::vector<std::string> CaseFiles() {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(fs::path(SCORVANE_SOURCE_DIR) / "tests/data/sql"))
    files.push_back(entry.path().filename().string());
  std::sort(files.begin(), files.end());
  return files;
}

INSTANTIATE_TEST_SUITE_P(Files, SqlCases, testing::ValuesIn(CaseFiles()),
                         [](const auto& file) { return fs::path(file.param).stem().string(); });

}  // namespace
}  // namespace scorvane::engine
