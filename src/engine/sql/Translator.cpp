#include "engine/sql/Translator.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "engine/Collation.h"
#include "engine/EngineError.h"
#include "engine/Functions.h"
#include "engine/Names.h"

namespace scorvane::engine::sql {
namespace {

// A translated expression.
struct Piece {
  std::string sql;
  SqlType type = SqlType::Unknown;
  bool condition = false;  // yields 1 and 0, not yet -1 and 0
  bool collated = false;   // a text that brings its collation: a field, or one that was given it
};

struct ScopeColumn {
  std::string name;
  SqlType type = SqlType::Unknown;
  const Field* field = nullptr;  // null in a subquery's result
};

struct ScopeSource {
  std::string name;  // the alias, or the table's name
  const TableDef* table = nullptr;
  std::vector<ScopeColumn> columns;
};

struct Scope {
  Scope* parent = nullptr;
  std::vector<ScopeSource> sources;
  const Select* select = nullptr;        // whose aliases may be named
  std::vector<std::string> openAliases;  // being resolved, to find circles
  bool grouped = false;                  // GROUP BY or an aggregate somewhere
};

struct Output {
  PlanColumn column;
  std::string sql;
  bool collated = false;
  bool isField = false;
  std::string source;  // of a field
  const Expr* expr = nullptr;
};

SqlType TypeOfField(FieldType type) {
  switch (type) {
    case FieldType::Boolean:
      return SqlType::Boolean;
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
      return SqlType::Long;
    case FieldType::Single:
      return SqlType::Single;
    case FieldType::Double:
      return SqlType::Double;
    case FieldType::Date:
      return SqlType::Date;
    case FieldType::Text:
    case FieldType::Memo:
      return SqlType::Text;
  }
  return SqlType::Unknown;
}

SqlType TypeOfValue(Value::Type type) {
  switch (type) {
    case Value::Type::Null:
      return SqlType::Unknown;
    case Value::Type::Boolean:
      return SqlType::Boolean;
    case Value::Type::Long:
      return SqlType::Long;
    case Value::Type::Single:
      return SqlType::Single;
    case Value::Type::Double:
      return SqlType::Double;
    case Value::Type::Date:
      return SqlType::Date;
    case Value::Type::Text:
      return SqlType::Text;
  }
  return SqlType::Unknown;
}

bool IsNumeric(SqlType type) {
  return type == SqlType::Boolean || type == SqlType::Long || type == SqlType::Single ||
         type == SqlType::Double || type == SqlType::Date;
}

bool IsAggregate(const Expr& e) {
  if (e.kind != Expr::Kind::Call) return false;
  const FunctionInfo* info = FindFunction(e.name);
  return info != nullptr && info->aggregate;
}

// An aggregate of this level, not of a subquery.
bool HasAggregate(const Expr& e) {
  if (IsAggregate(e)) return true;
  return std::any_of(e.args.begin(), e.args.end(), [](const ExprPtr& arg) { return HasAggregate(*arg); });
}

bool HasSubquery(const Expr& e) {
  if (e.query) return true;
  return std::any_of(e.args.begin(), e.args.end(), [](const ExprPtr& arg) { return HasSubquery(*arg); });
}

// The same expression, written alike but for letter case and brackets.
bool SameExpr(const Expr& a, const Expr& b) {
  if (a.kind == Expr::Kind::Column && b.kind == Expr::Kind::Column) {
    return SameName(a.name, b.name) &&
           (a.qualifier.empty() || b.qualifier.empty() || SameName(a.qualifier, b.qualifier));
  }
  return SameName(Print(a), Print(b));
}

class Translator {
 public:
  explicit Translator(Catalog& catalog) : catalog_(catalog) {}

  Plan Run(const Statement& statement, bool dynaset) {
    plan_.kind = statement.kind;
    plan_.needsLiterals = statement.needsLiterals;
    switch (statement.kind) {
      case Statement::Kind::Query:
        plan_.sql = RunQuery(*statement.query, dynaset);
        break;
      case Statement::Kind::Insert:
        Insert(statement);
        break;
      case Statement::Kind::Update:
        Update(statement);
        break;
      case Statement::Kind::Delete:
        Delete(statement);
        break;
    }
    if (!unknown_.empty()) {
      std::string names;
      for (const std::string& name : unknown_)
        names += fmt::format("{}'{}'", names.empty() ? "" : ", ", name);
      throw EngineError(kTooFewParameters, std::to_string(unknown_.size()), names, unknownPosition_);
    }
    return std::move(plan_);
  }

 private:
  // ---- tables and names

  const TableDef& NeedTable(const std::string& name, int position) const {
    const TableDef* table = catalog_.FindTable(name);
    if (table == nullptr) throw EngineError(kUnknownTable, name, {}, position);
    return *table;
  }

  std::string AddSource(const Source& source, Scope& scope) {
    switch (source.kind) {
      case Source::Kind::Table: {
        const TableDef& table = NeedTable(source.name, source.position);
        ScopeSource added;
        added.name = source.alias.empty() ? table.Name : source.alias;
        added.table = &table;
        for (const Field& field : table.Fields)
          added.columns.push_back({field.Name, TypeOfField(field.Type), &field});
        CheckSourceName(added.name, scope, source.position);
        std::string sql = StoreName(table.Name);
        if (!source.alias.empty()) sql += " AS " + StoreName(source.alias);
        scope.sources.push_back(std::move(added));
        return sql;
      }
      case Source::Kind::Subquery: {
        if (source.alias.empty())
          throw EngineError(kSyntaxError, "a subquery after FROM needs a name", {}, source.position);
        std::vector<Output> outputs;
        // A derived table sees nothing of the query around it.
        std::string sql = "(" + QuerySql(*source.query, nullptr, outputs, true) + ")";
        ScopeSource added;
        added.name = source.alias;
        for (const Output& output : outputs)
          added.columns.push_back({output.column.name, output.column.type, nullptr});
        CheckSourceName(added.name, scope, source.position);
        scope.sources.push_back(std::move(added));
        return sql + " AS " + StoreName(source.alias);
      }
      case Source::Kind::Join:
        break;
    }
    std::string left = AddSource(*source.left, scope);
    const std::string right = AddSource(*source.right, scope);
    const char* word = source.join == Source::JoinType::Inner  ? " INNER JOIN "
                       : source.join == Source::JoinType::Left ? " LEFT JOIN "
                                                               : " RIGHT JOIN ";
    return "(" + left + word + right + " ON " + Condition(Translate(*source.on, scope)) + ")";
  }

  static void CheckSourceName(const std::string& name, const Scope& scope, int position) {
    for (const ScopeSource& source : scope.sources)
      if (SameName(source.name, name))
        throw EngineError(kSyntaxError, fmt::format("'{}' stands twice after FROM", name), {}, position);
  }

  std::string AddSources(const std::vector<SourcePtr>& sources, Scope& scope) {
    std::string sql;
    for (const SourcePtr& source : sources) {
      if (!sql.empty()) sql += ", ";
      sql += AddSource(*source, scope);
    }
    return sql;
  }

  Piece Column(const Expr& e, Scope& scope) {
    for (Scope* level = &scope; level != nullptr; level = level->parent) {
      const ScopeSource* found = nullptr;
      const ScopeColumn* column = nullptr;
      for (const ScopeSource& source : level->sources) {
        if (!e.qualifier.empty() && !SameName(source.name, e.qualifier)) continue;
        for (const ScopeColumn& candidate : source.columns) {
          if (!SameName(candidate.name, e.name)) continue;
          if (column != nullptr) throw EngineError(kAmbiguousField, e.name, {}, e.position);
          found = &source;
          column = &candidate;
          break;
        }
      }
      if (column != nullptr) {
        Piece piece;
        piece.sql = StoreName(found->name) + "." + StoreName(column->name);
        piece.type = column->type;
        piece.collated = column->type == SqlType::Text;
        return piece;
      }
      if (e.qualifier.empty() && level->select != nullptr) {
        for (const SelectItem& item : level->select->items) {
          if (item.alias.empty() || !SameName(item.alias, e.name)) continue;
          for (const std::string& open : level->openAliases)
            if (SameName(open, e.name)) throw EngineError(kCircularAlias, e.name, {}, e.position);
          level->openAliases.push_back(e.name);
          Piece piece = Translate(*item.expr, *level);
          level->openAliases.pop_back();
          piece.sql = "(" + piece.sql + ")";
          return piece;
        }
      }
    }
    unknown_.insert(e.qualifier.empty() ? e.name : e.qualifier + "." + e.name);
    if (unknownPosition_ == 0) unknownPosition_ = e.position;
    return {"NULL", SqlType::Unknown, false, false};
  }

  // ---- parameters

  std::string Param(const Expr& literal, bool negate, std::shared_ptr<const StoreTarget> target) {
    PlanParam param;
    param.literal = literal.literal;
    param.negate = negate;
    if (literal.literal < 0) param.fixed = literal.value;
    param.target = std::move(target);
    plan_.params.push_back(std::move(param));
    return fmt::format("?{}", plan_.params.size());
  }

  // ---- forms of a piece

  static std::string AsValue(Piece piece) {
    return piece.condition ? "(-(" + piece.sql + "))" : std::move(piece.sql);
  }
  static std::string Condition(Piece piece) {
    if (piece.type == SqlType::Text || piece.type == SqlType::Unknown) return "sv_cbool(" + piece.sql + ")";
    return std::move(piece.sql);
  }
  static std::string AsNumber(Piece piece) {
    if (IsNumeric(piece.type)) return AsValue(std::move(piece));
    return "sv_number(" + piece.sql + ")";
  }
  static std::string AsText(Piece piece) {
    if (piece.type == SqlType::Text) return std::move(piece.sql);
    return "sv_cstr(" + AsArgument(std::move(piece)) + ")";
  }
  // A value for a function of ours, with the type that the store does not know.
  static std::string AsArgument(Piece piece) {
    if (piece.type == SqlType::Date) return "sv_as_date(" + piece.sql + ")";
    if (piece.type == SqlType::Single) return "sv_as_single(" + piece.sql + ")";
    return AsValue(std::move(piece));
  }
  // A value that sorts and compares as it should.
  static std::string Collated(Piece piece) {
    const bool needed = (piece.type == SqlType::Text || piece.type == SqlType::Unknown) && !piece.collated;
    std::string sql = AsValue(std::move(piece));
    return needed ? fmt::format("({} COLLATE {})", sql, kCollationName) : sql;
  }

  // ---- expressions

  Piece Translate(const Expr& e, Scope& scope) {
    switch (e.kind) {
      case Expr::Kind::Literal:
        return {Param(e, false, nullptr), TypeOfValue(e.value.GetType()), false, false};
      case Expr::Kind::Null:
        return {"NULL", SqlType::Null, false, false};
      case Expr::Kind::Boolean:
        return {e.value.ToBoolean() ? "(-1)" : "0", SqlType::Boolean, false, false};
      case Expr::Kind::Column:
        return Column(e, scope);
      case Expr::Kind::Unary:
        return Unary(e, scope);
      case Expr::Kind::Binary:
        return Binary(e, scope);
      case Expr::Kind::Like: {
        const std::string text = AsText(Translate(*e.args[0], scope));
        const std::string pattern = AsText(Translate(*e.args[1], scope));
        return {fmt::format("({}sv_like({}, {}))", e.negated ? "NOT " : "", text, pattern), SqlType::Boolean,
                true, false};
      }
      case Expr::Kind::Between: {
        // The bounds may come in either order.
        Piece value = Translate(*e.args[0], scope);
        Piece low = Translate(*e.args[1], scope);
        Piece high = Translate(*e.args[2], scope);
        CheckComparable(value, low, e);
        CheckComparable(value, high, e);
        const std::string from = Collated(std::move(low));
        const std::string to = Collated(std::move(high));
        return {fmt::format("({0} {1}BETWEEN min({2}, {3}) AND max({2}, {3}))", Collated(std::move(value)),
                            e.negated ? "NOT " : "", from, to),
                SqlType::Boolean, true, false};
      }
      case Expr::Kind::InList: {
        Piece value = Translate(*e.args[0], scope);
        std::string list;
        for (std::size_t i = 1; i < e.args.size(); ++i) {
          if (e.args[i]->kind == Expr::Kind::Null) continue;  // nothing is equal to it
          Piece item = Translate(*e.args[i], scope);
          CheckComparable(value, item, e);
          if (!list.empty()) list += ", ";
          list += AsValue(std::move(item));
        }
        return {fmt::format("({} {}IN ({}))", Collated(std::move(value)), e.negated ? "NOT " : "", list),
                SqlType::Boolean, true, false};
      }
      case Expr::Kind::InQuery: {
        Piece value = Translate(*e.args[0], scope);
        std::vector<Output> outputs;
        const std::string query = QuerySql(*e.query, &scope, outputs, false);
        NeedOneColumn(outputs, e);
        CheckComparable(value, {"", outputs[0].column.type, false, false}, e);
        return {fmt::format("({} {}IN ({}))", Collated(std::move(value)), e.negated ? "NOT " : "", query),
                SqlType::Boolean, true, false};
      }
      case Expr::Kind::Exists: {
        std::vector<Output> outputs;
        return {"EXISTS (" + QuerySql(*e.query, &scope, outputs, false) + ")", SqlType::Boolean, true, false};
      }
      case Expr::Kind::IsNull:
        return {fmt::format("({} IS {}NULL)", AsValue(Translate(*e.args[0], scope)), e.negated ? "NOT " : ""),
                SqlType::Boolean, true, false};
      case Expr::Kind::Call:
        return Call(e, scope);
      case Expr::Kind::Subquery: {
        std::vector<Output> outputs;
        std::string sql = "(" + QuerySql(*e.query, &scope, outputs, false) + ")";
        NeedOneColumn(outputs, e);
        return {std::move(sql), outputs[0].column.type, false, false};
      }
    }
    return {};
  }

  static void NeedOneColumn(const std::vector<Output>& outputs, const Expr& e) {
    if (outputs.size() != 1)
      throw EngineError(kSyntaxError, "a subquery that stands for a value yields one column", {}, e.position);
  }

  static void CheckComparable(const Piece& a, const Piece& b, const Expr& e) {
    const bool mismatch =
        (a.type == SqlType::Text && IsNumeric(b.type)) || (b.type == SqlType::Text && IsNumeric(a.type));
    if (mismatch) throw EngineError(kCriteriaMismatch, "a text is compared with a number", {}, e.position);
  }

  Piece Unary(const Expr& e, Scope& scope) {
    Piece operand = Translate(*e.args[0], scope);
    if (e.op == "Not") {
      if (operand.type == SqlType::Boolean || !IsNumeric(operand.type))
        return {"(NOT " + Condition(std::move(operand)) + ")", SqlType::Boolean, true, false};
      return {"(~" + AsValue(std::move(operand)) + ")", SqlType::Long, false, false};
    }
    const SqlType type = operand.type == SqlType::Single ? SqlType::Single
                         : operand.type == SqlType::Long || operand.type == SqlType::Boolean
                             ? SqlType::Long
                             : SqlType::Double;
    const std::string number = AsNumber(std::move(operand));
    return {e.op == "-" ? "(-" + number + ")" : number, type, false, false};
  }

  Piece Binary(const Expr& e, Scope& scope) {
    const std::string& op = e.op;
    Piece left = Translate(*e.args[0], scope);
    Piece right = Translate(*e.args[1], scope);
    if (op == "And" || op == "Or" || op == "Xor" || op == "Eqv" || op == "Imp")
      return Logical(op, std::move(left), std::move(right));
    if (op == "=" || op == "<>" || op == "<" || op == ">" || op == "<=" || op == ">=") {
      CheckComparable(left, right, e);
      // The left side's collation decides, unless only the right side brings one.
      const bool rightBrings = right.collated && !left.collated;
      const std::string a = rightBrings ? AsValue(std::move(left)) : Collated(std::move(left));
      return {fmt::format("({} {} {})", a, op, AsValue(std::move(right))), SqlType::Boolean, true, false};
    }
    if (op == "&") {
      return {fmt::format("(coalesce({}, '') || coalesce({}, ''))", AsText(std::move(left)),
                          AsText(std::move(right))),
              SqlType::Text, false, false};
    }
    const bool bothNumbers = IsNumeric(left.type) && IsNumeric(right.type);
    const SqlType type = ArithmeticType(left.type, right.type);
    if (op == "+" && !bothNumbers) {
      const bool texts = left.type == SqlType::Text && right.type == SqlType::Text;
      if (texts) return {fmt::format("({} || {})", left.sql, right.sql), SqlType::Text, false, false};
      const bool maybeText = !IsNumeric(left.type) && !IsNumeric(right.type);
      return {fmt::format("sv_add({}, {})", AsValue(std::move(left)), AsValue(std::move(right))),
              maybeText ? SqlType::Unknown : SqlType::Double, false, false};
    }
    if (op == "+" || op == "-" || op == "*") {
      return {fmt::format("({} {} {})", AsNumber(std::move(left)), op, AsNumber(std::move(right))), type,
              false, false};
    }
    const char* function = op == "/" ? "sv_div" : op == "\\" ? "sv_idiv" : op == "^" ? "sv_pow" : "sv_mod";
    const bool whole = op == "\\" || op == "Mod";
    return {fmt::format("{}({}, {})", function, AsValue(std::move(left)), AsValue(std::move(right))),
            whole ? SqlType::Long : SqlType::Double, false, false};
  }

  static SqlType ArithmeticType(SqlType a, SqlType b) {
    if (a == SqlType::Date || b == SqlType::Date) return a == b ? SqlType::Double : SqlType::Date;
    const bool aWhole = a == SqlType::Long || a == SqlType::Boolean;
    const bool bWhole = b == SqlType::Long || b == SqlType::Boolean;
    if (aWhole && bWhole) return SqlType::Long;
    return a == SqlType::Single && b == SqlType::Single ? SqlType::Single : SqlType::Double;
  }

  static Piece Logical(const std::string& op, Piece left, Piece right) {
    const bool bits = IsNumeric(left.type) && left.type != SqlType::Boolean && IsNumeric(right.type) &&
                      right.type != SqlType::Boolean;
    if (bits) {
      const std::string a = "CAST(" + AsValue(std::move(left)) + " AS INTEGER)";
      const std::string b = "CAST(" + AsValue(std::move(right)) + " AS INTEGER)";
      if (op == "Xor") return {fmt::format("(({0} | {1}) - ({0} & {1}))", a, b), SqlType::Long, false, false};
      if (op == "Eqv")
        return {fmt::format("(~(({0} | {1}) - ({0} & {1})))", a, b), SqlType::Long, false, false};
      if (op == "Imp") return {fmt::format("(~{} | {})", a, b), SqlType::Long, false, false};
      return {fmt::format("({} {} {})", a, op == "And" ? "&" : "|", b), SqlType::Long, false, false};
    }
    const std::string a = Condition(std::move(left));
    const std::string b = Condition(std::move(right));
    if (op == "Xor") return {fmt::format("((NOT {}) <> (NOT {}))", a, b), SqlType::Boolean, true, false};
    if (op == "Eqv") return {fmt::format("((NOT {}) = (NOT {}))", a, b), SqlType::Boolean, true, false};
    if (op == "Imp") return {fmt::format("((NOT {}) OR {})", a, b), SqlType::Boolean, true, false};
    return {fmt::format("({} {} {})", a, op == "And" ? "AND" : "OR", b), SqlType::Boolean, true, false};
  }

  // The type that two alternatives share.
  static SqlType Common(SqlType a, SqlType b) {
    if (a == b || b == SqlType::Null) return a;
    if (a == SqlType::Null) return b;
    if (IsNumeric(a) && IsNumeric(b)) return ArithmeticType(a, b);
    return SqlType::Unknown;
  }

  Piece Call(const Expr& e, Scope& scope) {
    const FunctionInfo* info = FindFunction(e.name);
    if (info == nullptr) throw EngineError(kUndefinedFunction, e.name, {}, e.position);
    const int count = e.star ? 1 : static_cast<int>(e.args.size());
    if (count < info->minArgs || count > info->maxArgs || (e.star && !SameName(e.name, "Count")))
      throw EngineError(kSyntaxError,
                        fmt::format("wrong number of arguments used with function '{}'", info->name), {},
                        e.position);
    if (info->aggregate) return AggregateCall(e, *info, scope);
    if (info->native) return NativeCall(e, scope);
    std::string args;
    for (const ExprPtr& arg : e.args) args += (args.empty() ? "" : ", ") + AsArgument(Translate(*arg, scope));
    return {fmt::format("{}({})", info->StoreName(), args), TypeOfValue(info->result), false, false};
  }

  Piece AggregateCall(const Expr& e, const FunctionInfo& info, Scope& scope) {
    if (inAggregate_)
      throw EngineError(kSyntaxError, "an aggregate stands inside an aggregate", {}, e.position);
    if (e.star) return {"count(*)", SqlType::Long, false, false};
    inAggregate_ = true;
    Piece arg = Translate(*e.args[0], scope);
    inAggregate_ = false;
    const bool picks = info.result == Value::Type::Null;  // Min, Max, First, Last: one of the values
    const SqlType type =
        picks ? (arg.type == SqlType::Boolean ? SqlType::Long : arg.type) : TypeOfValue(info.result);
    const bool sums = SameName(info.name, "Sum") || SameName(info.name, "Avg");
    const std::string sql = sums    ? AsNumber(std::move(arg))
                            : picks ? Collated(std::move(arg))
                                    : AsValue(std::move(arg));
    return {fmt::format("{}({})", info.StoreName(), sql), type, false, false};
  }

  Piece NativeCall(const Expr& e, Scope& scope) {
    if (SameName(e.name, "IIf")) {
      const std::string test = Condition(Translate(*e.args[0], scope));
      Piece yes = Translate(*e.args[1], scope);
      Piece no = Translate(*e.args[2], scope);
      const SqlType type = Common(yes.type, no.type);
      return {fmt::format("(CASE WHEN {} THEN {} ELSE {} END)", test, AsValue(std::move(yes)),
                          AsValue(std::move(no))),
              type, false, false};
    }
    if (SameName(e.name, "Nz")) {
      Piece value = Translate(*e.args[0], scope);
      if (e.args.size() == 1) {
        const bool text = value.type == SqlType::Text || value.type == SqlType::Null;
        return {fmt::format("coalesce({}, {})", AsValue(value), text ? "''" : "0"),
                text ? SqlType::Text : value.type, false, false};
      }
      Piece instead = Translate(*e.args[1], scope);
      const SqlType type = Common(value.type, instead.type);
      return {fmt::format("coalesce({}, {})", AsValue(std::move(value)), AsValue(std::move(instead))), type,
              false, false};
    }
    if (SameName(e.name, "IsNull"))
      return {fmt::format("({} IS NULL)", AsValue(Translate(*e.args[0], scope))), SqlType::Boolean, true,
              false};
    if (SameName(e.name, "Abs")) {
      Piece value = Translate(*e.args[0], scope);
      const SqlType type = value.type == SqlType::Boolean ? SqlType::Long : value.type;
      return {fmt::format("abs({})", AsNumber(std::move(value))), IsNumeric(type) ? type : SqlType::Double,
              false, false};
    }
    const bool isSwitch = SameName(e.name, "Switch");
    if (isSwitch && e.args.size() % 2 != 0)
      throw EngineError(kSyntaxError, "wrong number of arguments used with function 'Switch'", {},
                        e.position);
    SqlType type = SqlType::Null;
    std::string sql = "(CASE";
    if (!isSwitch) sql += fmt::format(" sv_fix({})", AsValue(Translate(*e.args[0], scope)));
    for (std::size_t i = isSwitch ? 0 : 1; i < e.args.size(); i += isSwitch ? 2 : 1) {
      const std::string when = isSwitch ? Condition(Translate(*e.args[i], scope)) : std::to_string(i);
      Piece then = Translate(*e.args[isSwitch ? i + 1 : i], scope);
      type = Common(type, then.type);
      sql += fmt::format(" WHEN {} THEN {}", when, AsValue(std::move(then)));
    }
    return {sql + " END)", type, false, false};
  }

  // ---- queries

  std::string RunQuery(const Query& query, bool dynaset) {
    std::vector<Output> outputs;
    if (dynaset) return DynasetSql(query, outputs);
    std::string sql = QuerySql(query, nullptr, outputs, true);
    for (Output& output : outputs) plan_.columns.push_back(std::move(output.column));
    return sql;
  }

  // The rows of one table, each with its key behind its columns.
  std::string DynasetSql(const Query& query, std::vector<Output>& outputs) {
    const Select& select = query.selects[0];
    const bool simple = query.selects.size() == 1 && select.sources.size() == 1 &&
                        select.sources[0]->kind == Source::Kind::Table && select.groupBy.empty() &&
                        !select.having && !select.distinct && select.top < 0;
    if (!simple) throw EngineError(kNotUpdatable);
    Scope scope;
    const std::string from = AddSources(select.sources, scope);
    scope.select = &select;
    CollectOutputs(select, scope, outputs);
    if (scope.grouped) throw EngineError(kNotUpdatable);
    const std::string key = StoreName(scope.sources[0].name) + "._rowid_";
    std::string sql = "SELECT ";
    for (const Output& output : outputs) sql += output.sql + ", ";
    sql += key + " FROM " + from;
    if (select.where) sql += " WHERE " + Condition(Translate(*select.where, scope));
    sql += " ORDER BY ";
    for (const std::string& term : OrderTerms(query, scope, outputs)) sql += term + ", ";
    sql += key;
    plan_.keyTable = scope.sources[0].table->Name;
    for (Output& output : outputs) {
      if (!output.isField) continue;
      output.column.field = output.expr == nullptr ? output.column.name : FieldName(*output.expr, scope);
    }
    for (Output& output : outputs) plan_.columns.push_back(std::move(output.column));
    return sql;
  }

  // `ordered`: the rows' order matters, so that a query without ORDER BY takes its table's key order.
  std::string QuerySql(const Query& query, Scope* parent, std::vector<Output>& outputs, bool ordered) {
    if (query.selects.size() == 1) return SelectSql(query, query.selects[0], parent, outputs, ordered, false);
    // A union sorts by its columns, which are those of its first SELECT.
    std::string sql;
    for (std::size_t i = 0; i < query.selects.size(); ++i) {
      if (query.selects[i].top >= 0)
        throw EngineError(kSyntaxError, "TOP inside a UNION stands in a subquery of its own");
      std::vector<Output> own;
      const std::string part = SelectSql(query, query.selects[i], parent, own, false, true);
      if (i == 0) {
        outputs = std::move(own);
      } else {
        if (own.size() != outputs.size()) throw EngineError(kUnionColumnsDiffer);
        for (std::size_t c = 0; c < own.size(); ++c)
          outputs[c].column.type = Common(outputs[c].column.type, own[c].column.type);
        sql += query.unionAll[i - 1] ? " UNION ALL " : " UNION ";
      }
      sql += part;
    }
    for (std::size_t i = 0; i < query.orderBy.size(); ++i) {
      const Expr& e = *query.orderBy[i].expr;
      std::size_t place = outputs.size();
      if (e.kind == Expr::Kind::Literal && e.value.GetType() == Value::Type::Long)
        place = static_cast<std::size_t>(e.value.ToLong() - 1);
      for (std::size_t c = 0; c < outputs.size() && e.kind == Expr::Kind::Column; ++c)
        if (SameName(outputs[c].column.name, e.name)) place = c;
      if (place >= outputs.size())
        throw EngineError(kSyntaxError, "the ORDER BY of a UNION names its columns", {}, e.position);
      sql += fmt::format("{}{}{}", i == 0 ? " ORDER BY " : ", ", place + 1,
                         query.orderBy[i].descending ? " DESC" : "");
    }
    return sql;
  }

  void CollectOutputs(const Select& select, Scope& scope, std::vector<Output>& outputs) {
    scope.grouped = !select.groupBy.empty() || select.having != nullptr;
    for (const SelectItem& item : select.items)
      scope.grouped = scope.grouped || (item.expr && HasAggregate(*item.expr));
    for (const SelectItem& item : select.items) {
      if (item.star) {
        Star(item, scope, outputs);
        continue;
      }
      // An alias may stand in other columns, so while its own is translated it must not name itself.
      if (!item.alias.empty()) scope.openAliases.push_back(item.alias);
      Piece piece = Translate(*item.expr, scope);
      if (!item.alias.empty()) scope.openAliases.pop_back();
      Output output;
      output.expr = item.expr.get();
      output.isField = item.expr->kind == Expr::Kind::Column;
      output.column.type = piece.type;
      output.column.name = !item.alias.empty() ? item.alias
                           : output.isField    ? FieldName(*item.expr, scope)
                                               : fmt::format("Expr{}", 1000 + outputs.size());
      if (output.isField) output.source = item.expr->qualifier;
      output.collated = piece.collated;
      output.sql = Collated(std::move(piece));
      outputs.push_back(std::move(output));
    }
    // Two fields of one name are told apart by their tables.
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      for (std::size_t j = i + 1; j < outputs.size(); ++j) {
        if (!outputs[i].isField || !outputs[j].isField ||
            !SameName(outputs[i].column.name, outputs[j].column.name) || outputs[i].source.empty() ||
            outputs[j].source.empty())
          continue;
        const std::string name = outputs[j].column.name;
        outputs[j].column.name = outputs[j].source + "." + name;
        outputs[i].column.name = outputs[i].source + "." + name;
      }
    }
    if (outputs.empty()) throw EngineError(kSyntaxError, "the query yields no column");
  }

  // The field's name as its table has it, not as the statement spells it.
  static std::string FieldName(const Expr& e, const Scope& scope) {
    for (const ScopeSource& source : scope.sources) {
      if (!e.qualifier.empty() && !SameName(source.name, e.qualifier)) continue;
      for (const ScopeColumn& column : source.columns)
        if (SameName(column.name, e.name)) return column.name;
    }
    return e.name;
  }

  static void Star(const SelectItem& item, const Scope& scope, std::vector<Output>& outputs) {
    bool found = false;
    for (const ScopeSource& source : scope.sources) {
      if (!item.qualifier.empty() && !SameName(source.name, item.qualifier)) continue;
      found = true;
      for (const ScopeColumn& column : source.columns) {
        Output output;
        output.column.name = column.name;
        output.column.type = column.type;
        output.sql = StoreName(source.name) + "." + StoreName(column.name);
        output.collated = column.type == SqlType::Text;
        output.isField = true;
        output.source = source.name;
        outputs.push_back(std::move(output));
      }
    }
    if (!found) throw EngineError(kUnknownTable, item.qualifier, {}, item.position);
  }

  // The ORDER BY terms, each with its direction.
  std::vector<std::string> OrderTerms(const Query& query, Scope& scope, const std::vector<Output>& outputs) {
    std::vector<std::string> terms;
    for (const OrderItem& item : query.orderBy) {
      std::string sql;
      if (item.expr->kind == Expr::Kind::Literal && item.expr->value.GetType() == Value::Type::Long) {
        const int place = item.expr->value.ToLong();
        if (place < 1 || static_cast<std::size_t>(place) > outputs.size())
          throw EngineError(kSyntaxError, "ORDER BY names a column that is not there", {},
                            item.expr->position);
        sql = outputs[static_cast<std::size_t>(place) - 1].sql;
      } else {
        CheckGrouped(*item.expr, query.selects[0], scope);
        for (const Output& output : outputs)
          if (sql.empty() && output.expr != nullptr && SameExpr(*output.expr, *item.expr)) sql = output.sql;
        if (sql.empty()) sql = Collated(Translate(*item.expr, scope));
      }
      terms.push_back(sql + (item.descending ? " DESC" : ""));
    }
    return terms;
  }

  // In a grouped query every field must be grouped or stand inside an aggregate.
  void CheckGrouped(const Expr& e, const Select& select, const Scope& scope) const {
    if (!scope.grouped || IsAggregate(e)) return;
    for (const ExprPtr& grouped : select.groupBy)
      if (SameExpr(*grouped, e)) return;
    if (e.kind == Expr::Kind::Column) {
      bool ours = false;
      for (const ScopeSource& source : scope.sources) {
        if (!e.qualifier.empty() && !SameName(source.name, e.qualifier)) continue;
        for (const ScopeColumn& column : source.columns) ours = ours || SameName(column.name, e.name);
      }
      if (ours) throw EngineError(kNotAggregate, Print(e), {}, e.position);
    }
    for (const ExprPtr& arg : e.args) CheckGrouped(*arg, select, scope);
  }

  std::string SelectSql(const Query& query, const Select& select, Scope* parent, std::vector<Output>& outputs,
                        bool ordered, bool inUnion) {
    const bool wasInAggregate = inAggregate_;
    inAggregate_ = false;
    Scope scope;
    scope.parent = parent;
    const std::string from = AddSources(select.sources, scope);
    scope.select = &select;
    CollectOutputs(select, scope, outputs);
    if (!inUnion)
      for (const OrderItem& item : query.orderBy) scope.grouped = scope.grouped || HasAggregate(*item.expr);
    for (const SelectItem& item : select.items) {
      if (item.expr) CheckGrouped(*item.expr, select, scope);
      if (item.star && scope.grouped) throw EngineError(kNotAggregate, "*", {}, item.position);
    }

    std::string tail;
    if (!from.empty()) tail += " FROM " + from;
    if (select.where) {
      if (HasAggregate(*select.where))
        throw EngineError(kSyntaxError, "an aggregate stands in WHERE", {}, select.where->position);
      tail += " WHERE " + Condition(Translate(*select.where, scope));
    }
    for (std::size_t i = 0; i < select.groupBy.size(); ++i)
      tail += (i == 0 ? " GROUP BY " : ", ") + Collated(Translate(*select.groupBy[i], scope));
    if (select.having) {
      CheckGrouped(*select.having, select, scope);
      tail += " HAVING " + Condition(Translate(*select.having, scope));
    }
    std::string sql = CompleteSelect(query, select, scope, outputs, tail, ordered, inUnion);
    inAggregate_ = wasInAggregate;
    return sql;
  }

  std::string CompleteSelect(const Query& query, const Select& select, Scope& scope,
                             const std::vector<Output>& outputs, const std::string& tail, bool ordered,
                             bool inUnion) {
    std::string items;
    for (const Output& output : outputs)
      items +=
          fmt::format("{}{} AS {}", items.empty() ? "" : ", ", output.sql, StoreName(output.column.name));
    const std::string verb = select.distinct ? "SELECT DISTINCT " : "SELECT ";
    if (inUnion) return verb + items + tail;

    const std::vector<std::string> terms = OrderTerms(query, scope, outputs);
    if (select.distinct) {
      for (std::size_t i = 0; i < terms.size(); ++i) {
        const std::string term = terms[i].substr(0, terms[i].size() - (query.orderBy[i].descending ? 5 : 0));
        const bool shown =
            std::any_of(outputs.begin(), outputs.end(), [&](const Output& o) { return o.sql == term; });
        if (!shown)
          throw EngineError(kOrderByConflictsWithDistinct, Print(*query.orderBy[i].expr), {},
                            query.orderBy[i].expr->position);
      }
    }
    std::string order;
    for (const std::string& term : terms) order += (order.empty() ? " ORDER BY " : ", ") + term;

    if (select.top < 0 || terms.empty()) {
      const bool oneTable = scope.sources.size() == 1 && scope.sources[0].table != nullptr;
      if (order.empty() && oneTable && (ordered || select.top >= 0) && !scope.grouped && !select.distinct)
        order = " ORDER BY " + StoreName(scope.sources[0].name) + "._rowid_";
      std::string sql = verb + items + tail + order;
      if (select.top >= 0 && !select.topPercent) sql += fmt::format(" LIMIT {}", select.top);
      if (select.top >= 0 && select.topPercent) {
        sql += fmt::format(" LIMIT (SELECT (count(*) * {} + 99) / 100 FROM ({}))", select.top,
                           verb + items + tail);
      }
      return sql;
    }
    return TopSql(query, select, outputs, terms, verb + items + tail, order);
  }

  // TOP takes the rows that tie with the last one, too: those whose rank is within the number.
  static std::string TopSql(const Query& query, const Select& select, const std::vector<Output>& outputs,
                            const std::vector<std::string>& terms, const std::string& plain,
                            const std::string& order) {
    std::string names;
    for (const Output& output : outputs) names += (names.empty() ? "" : ", ") + StoreName(output.column.name);
    const std::string count = select.topPercent ? fmt::format("(sv_total * {} + 99) / 100", select.top)
                                                : std::to_string(select.top);
    std::string ranked;
    if (select.distinct) {
      // Ranked after the doubles are gone, by the columns that the terms name.
      std::string places;
      for (std::size_t i = 0; i < terms.size(); ++i) {
        const std::string term = terms[i].substr(0, terms[i].size() - (query.orderBy[i].descending ? 5 : 0));
        for (const Output& output : outputs) {
          if (output.sql != term) continue;
          places += (places.empty() ? "" : ", ") + StoreName(output.column.name) +
                    (query.orderBy[i].descending ? " DESC" : "");
          break;
        }
      }
      ranked = fmt::format(
          "SELECT {}, rank() OVER (ORDER BY {}) AS sv_rank, count(*) OVER () AS sv_total FROM ({})", names,
          places, plain);
    } else {
      const std::size_t items = std::string_view("SELECT ").size();
      ranked = fmt::format("SELECT rank() OVER ({}) AS sv_rank, count(*) OVER () AS sv_total, {}",
                           order.substr(1), plain.substr(items));
    }
    return fmt::format("SELECT {} FROM ({}) WHERE sv_rank <= {} ORDER BY sv_rank", names, ranked, count);
  }

  // ---- statements that change data

  // The expression, converted to the field.
  std::string Stored(const Expr& e, const TableDef& table, const Field& field, Scope& scope) {
    auto target = TargetFor(table, field);
    const bool nullAllowed = !target->field.Required && !target->nullForbidden;
    if (e.kind == Expr::Kind::Literal) return Param(e, false, std::move(target));
    if (e.kind == Expr::Kind::Unary && e.op == "-" && e.args[0]->kind == Expr::Kind::Literal &&
        e.args[0]->value.IsNumber())
      return Param(*e.args[0], true, std::move(target));
    if (e.kind == Expr::Kind::Null && (nullAllowed || field.IsCounter())) return "NULL";
    if (e.kind == Expr::Kind::Boolean && field.Type == FieldType::Boolean)
      return e.value.ToBoolean() ? "-1" : "0";
    Piece piece = Translate(e, scope);
    return fmt::format("sv_store({}, {})", AsArgument(std::move(piece)),
                       catalog_.AddTarget(std::move(target)));
  }

  void Insert(const Statement& statement) {
    if (statement.hasInPath) {
      if (!statement.query)
        throw EngineError(kSyntaxError, "an INSERT into another database takes a SELECT", {},
                          statement.tablePosition);
      plan_.sql = RunQuery(*statement.query, false);
      plan_.inPath = statement.inPath;
      plan_.inTable = statement.table;
      plan_.inColumns = statement.columns;
      return;
    }
    const TableDef& table = NeedTable(statement.table, statement.tablePosition);
    std::vector<Output> outputs;
    std::string from;
    std::vector<std::string> names = statement.columns;
    std::size_t count = statement.values.size();
    if (statement.query) {
      from = QuerySql(*statement.query, nullptr, outputs, true);
      count = outputs.size();
      // Without a list of fields the query's columns name them.
      if (names.empty())
        for (const Output& output : outputs) names.push_back(output.column.name);
    } else if (names.empty()) {
      for (const Field& field : table.Fields) names.push_back(field.Name);
    }
    if (names.size() != count) throw EngineError(kValueCountDiffers);

    Scope scope;
    std::string columns;
    std::string values;
    std::vector<const Field*> given;
    for (std::size_t i = 0; i < names.size(); ++i) {
      const Field* field = table.FindField(names[i]);
      if (field == nullptr) {
        throw EngineError(kUnknownInsertField, names[i], {},
                          i < statement.columnPositions.size() ? statement.columnPositions[i] : 0);
      }
      if (std::find(given.begin(), given.end(), field) != given.end())
        throw EngineError(kSyntaxError, fmt::format("the field '{}' stands twice", names[i]));
      given.push_back(field);
      if (i > 0) columns += ", ";
      columns += StoreName(field->Name);
      if (i > 0) values += ", ";
      if (statement.query) {
        Piece piece{"sv_from." + StoreName(outputs[i].column.name), outputs[i].column.type, false, false};
        values += fmt::format("sv_store({}, {})", AsArgument(std::move(piece)),
                              catalog_.AddTarget(TargetFor(table, *field)));
      } else {
        values += Stored(*statement.values[i], table, *field, scope);
      }
    }
    for (const Field& field : table.Fields) {
      if (std::find(given.begin(), given.end(), &field) != given.end() || field.IsCounter()) continue;
      const std::string value = OmittedValue(table, field);
      if (value.empty()) continue;
      columns += (columns.empty() ? "" : ", ") + StoreName(field.Name);
      values += (values.empty() ? "" : ", ") + value;
    }
    const std::string target = "INSERT INTO " + StoreName(table.Name) + " (" + columns + ") ";
    plan_.sql = statement.query ? target + "SELECT " + values + " FROM (" + from + ") AS sv_from"
                                : target + "VALUES (" + values + ")";
  }

  // What a field gets that a new row does not name; empty for Null.
  std::string OmittedValue(const TableDef& table, const Field& field) {
    auto target = TargetFor(table, field);
    if (!field.DefaultValue.empty()) {
      Expr literal;
      literal.kind = Expr::Kind::Literal;
      literal.value = Value(field.DefaultValue);
      return Param(literal, false, std::move(target));
    }
    if (field.Type == FieldType::Boolean) return "0";
    if (!field.Required && !target->nullForbidden) return {};
    return fmt::format("sv_store(NULL, {})", catalog_.AddTarget(std::move(target)));
  }

  void Update(const Statement& statement) {
    Scope scope;
    const std::string from = AddSources(statement.sources, scope);
    const ScopeSource* target = nullptr;
    std::vector<const Field*> fields;
    bool subquery = false;
    for (const Assignment& assignment : statement.assignments) {
      const ScopeSource* owner = nullptr;
      const Field* field = nullptr;
      for (const ScopeSource& source : scope.sources) {
        if (!assignment.qualifier.empty() && !SameName(source.name, assignment.qualifier)) continue;
        const Field* candidate = source.table == nullptr ? nullptr : source.table->FindField(assignment.name);
        if (candidate == nullptr) continue;
        if (field != nullptr) throw EngineError(kAmbiguousField, assignment.name, {}, assignment.position);
        owner = &source;
        field = candidate;
      }
      if (field == nullptr)
        throw EngineError(kTooFewParameters, "1", "'" + assignment.name + "'", assignment.position);
      if (target != nullptr && target != owner) throw EngineError(kNotUpdatable);
      if (std::find(fields.begin(), fields.end(), field) != fields.end())
        throw EngineError(kSyntaxError, fmt::format("the field '{}' is set twice", field->Name), {},
                          assignment.position);
      target = owner;
      fields.push_back(field);
      subquery = subquery || HasSubquery(*assignment.expr);
    }
    if (target == nullptr || target->table == nullptr) throw EngineError(kNotUpdatable);
    const TableDef& table = *target->table;
    const std::string name = StoreName(table.Name);
    const bool alone = scope.sources.size() == 1;
    std::string sets;
    std::string values;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const std::string value = Stored(*statement.assignments[i].expr, table, *fields[i], scope);
      if (alone && !subquery) {
        sets += fmt::format("{}{} = {}", i > 0 ? ", " : "", StoreName(fields[i]->Name), value);
      } else {
        sets += fmt::format("{}{} = sv_from.sv_value{}", i > 0 ? ", " : "", StoreName(fields[i]->Name), i);
        values += fmt::format(", {} AS sv_value{}", value, i);
      }
    }
    const std::string where =
        statement.where ? " WHERE " + Condition(Translate(*statement.where, scope)) : "";
    if (alone && !subquery) {
      plan_.sql = "UPDATE " + from + " SET " + sets + where;
      return;
    }
    // All new values are worked out before the first row changes.
    plan_.sql = fmt::format(
        "UPDATE {0} SET {1} FROM (SELECT {2}._rowid_ AS sv_key{3} FROM {4}{5}) AS sv_from "
        "WHERE {0}._rowid_ = sv_from.sv_key",
        name, sets, StoreName(target->name), values, from, where);
  }

  void Delete(const Statement& statement) {
    Scope scope;
    const std::string from = AddSources(statement.sources, scope);
    const ScopeSource* target = nullptr;
    for (const ScopeSource& source : scope.sources)
      if (statement.table.empty() || SameName(source.name, statement.table))
        target = target ? target : &source;
    if (target == nullptr) throw EngineError(kUnknownTable, statement.table, {}, statement.tablePosition);
    if (target->table == nullptr || (statement.table.empty() && scope.sources.size() > 1))
      throw EngineError(kNotUpdatable);
    const std::string where =
        statement.where ? " WHERE " + Condition(Translate(*statement.where, scope)) : "";
    const std::string name = StoreName(target->table->Name);
    const bool plain = scope.sources.size() == 1 && (!statement.where || !HasSubquery(*statement.where));
    if (plain) {
      plan_.sql = "DELETE FROM " + from + where;
    } else {
      plan_.sql = fmt::format("DELETE FROM {} WHERE _rowid_ IN (SELECT {}._rowid_ FROM {}{})", name,
                              StoreName(target->name), from, where);
    }
  }

  Catalog& catalog_;
  Plan plan_;
  bool inAggregate_ = false;
  std::set<std::string> unknown_;
  int unknownPosition_ = 0;
};

}  // namespace

std::shared_ptr<const StoreTarget> TargetFor(const TableDef& table, const Field& field) {
  auto target = std::make_shared<StoreTarget>();
  target->field = field;
  target->label = table.Name + "." + field.Name;
  for (const Index& index : table.Indexes) {
    const bool named = std::any_of(index.Fields.begin(), index.Fields.end(),
                                   [&](const std::string& name) { return SameName(name, field.Name); });
    if (named && (index.Required || index.Primary)) target->nullForbidden = true;
  }
  return target;
}

Plan Translate(const Statement& statement, Catalog& catalog, bool dynaset) {
  return Translator(catalog).Run(statement, dynaset);
}

}  // namespace scorvane::engine::sql
