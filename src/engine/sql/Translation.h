// What the rooms of the translator share while they work on one statement: the schema, the plan that comes of
// it, the names that were not found, and how much has been written.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "engine/sql/Limits.h"
#include "engine/sql/Translator.h"

namespace scorvane::engine::sql {

class Translation {
 public:
  explicit Translation(Catalog& catalog) : catalog_(catalog) {}

  Plan plan;

  Catalog& GetCatalog() const { return catalog_; }
  // Throws EngineError 3078.
  const TableDef& NeedTable(const std::string& name, int position) const;

  // The mark of the parameter that carries a literal; `target` is the field that it goes into, null for none.
  std::string Param(const Expr& literal, bool negate, std::shared_ptr<const StoreTarget> target);
  // The text that converts a value for a field.
  std::string StoreCall(const std::string& value, const TableDef& table, const Field& field);
  // A literal's value. Who looks at one writes a text that holds for this value only, so that the plan is not
  // kept for others of its shape.
  const Value& LiteralValue(const Expr& literal);
  // The same for whole expressions: what is printed shows the literals in it.
  std::string PrintWithLiterals(const Expr& expr);

  // A name that no table of the statement may take from us.
  std::string NextSourceName() { return "s" + std::to_string(++sources_); }

  // A field that nothing has; all of them are reported together, as 3061, when the statement is through.
  void AddUnknown(const Expr& column);
  void ThrowUnknown() const;

  // Counts characters that are written; throws EngineError 3360 beyond the limit.
  void Spend(std::size_t characters);

  // Counts the nesting for as long as it lives.
  class Deeper {
   public:
    Deeper(Translation& t, int position);
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
    ~Deeper() { --t_.depth_; }

   private:
    Translation& t_;
  };

 private:
  Catalog& catalog_;
  std::set<std::string> unknown_;
  int unknownPosition_ = 0;
  int sources_ = 0;
  int depth_ = 0;
  std::size_t written_ = 0;
};

// Sets a variable for as long as it lives.
template <typename Item>
class Temporarily {
 public:
  Temporarily(Item& item, Item value) : item_(item), before_(item) { item_ = value; }
  Temporarily(const Temporarily&) = delete;
  Temporarily& operator=(const Temporarily&) = delete;
  ~Temporarily() { item_ = before_; }

 private:
  Item& item_;
  const Item before_;
};

}  // namespace scorvane::engine::sql
