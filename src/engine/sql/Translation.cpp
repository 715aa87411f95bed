#include "engine/sql/Translation.h"

#include <fmt/format.h>

#include "engine/EngineError.h"

namespace scorvane::engine::sql {

const TableDef& Translation::NeedTable(const std::string& name, int position) const {
  const TableDef* table = catalog_.FindTable(name);
  if (table == nullptr) throw EngineError(kUnknownTable, name, {}, position);
  return *table;
}

std::string Translation::Param(const Expr& literal, bool negate, std::shared_ptr<const StoreTarget> target) {
  // An alias may bring the same literal again and again.
  if (literal.literal >= 0 && target == nullptr) {
    for (std::size_t i = plan.params.size(); i-- > 0;) {
      const PlanParam& known = plan.params[i];
      if (known.literal == literal.literal && known.negate == negate && known.target == nullptr)
        return fmt::format("?{}", i + 1);
      if (plan.params.size() - i > 16) break;
    }
  }
  PlanParam param;
  param.literal = literal.literal;
  param.negate = negate;
  if (literal.literal < 0) param.fixed = literal.value;
  param.target = std::move(target);
  plan.params.push_back(std::move(param));
  return fmt::format("?{}", plan.params.size());
}

std::string Translation::StoreCall(const std::string& value, const TableDef& table, const Field& field) {
  return fmt::format("sv_store({}, {})", value, catalog_.AddTarget(TargetFor(table, field)));
}

const Value& Translation::LiteralValue(const Expr& literal) {
  plan.needsLiterals = true;
  return literal.value;
}

std::string Translation::PrintWithLiterals(const Expr& expr) {
  plan.needsLiterals = true;
  return Print(expr);
}

void Translation::AddUnknown(const Expr& column) {
  unknown_.insert(column.qualifier.empty() ? column.name : column.qualifier + "." + column.name);
  if (unknownPosition_ == 0) unknownPosition_ = column.position;
}

void Translation::ThrowUnknown() const {
  if (unknown_.empty()) return;
  std::string names;
  for (const std::string& name : unknown_) names += fmt::format("{}'{}'", names.empty() ? "" : ", ", name);
  throw EngineError(kTooFewParameters, std::to_string(unknown_.size()), names, unknownPosition_);
}

void Translation::Spend(std::size_t characters) {
  written_ += characters;
  if (written_ > kMaxWritten) throw EngineError(kTooComplex, "its aliases and brackets grow without end");
}

Translation::Deeper::Deeper(Translation& t, int position) : t_(t) {
  if (++t_.depth_ <= kMaxTranslationDepth) return;
  --t_.depth_;
  throw EngineError(kTooComplex, "it is nested too deeply", {}, position);
}

}  // namespace scorvane::engine::sql
