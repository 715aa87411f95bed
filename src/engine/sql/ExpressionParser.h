// The parser's half that reads expressions.
#pragma once

#include "engine/sql/TokenReader.h"
#include "engine/sql/Tree.h"

namespace scorvane::engine::sql {

class ExpressionParser : public TokenReader {
 protected:
  using TokenReader::TokenReader;
  ~ExpressionParser() = default;

  ExprPtr ParseExpr();
  // A query up to its closing bracket; a semicolon may stand before that.
  QueryPtr ParseSubquery();
  virtual QueryPtr ParseQuery() = 0;

 private:
  ExprPtr MakeBinary(Op op, ExprPtr left, ExprPtr right, int position) const;
  Op OperatorOf(int level) const;
  ExprPtr ParseLevel(int level);
  ExprPtr ParseNot();
  ExprPtr ParseComparison();
  ExprPtr ParseQuantified(Op op, ExprPtr left, int position);
  ExprPtr ParsePredicate(ExprPtr left);
  void ParseIn(Expr& e);
  bool AtNegativeNumber() const;
  ExprPtr ParseSign();
  ExprPtr ParsePower();
  ExprPtr ParsePrimary();
  ExprPtr ParseCall();
};

}  // namespace scorvane::engine::sql
