#include <fmt/format.h>

#include "engine/sql/Keywords.h"
#include "engine/sql/Tree.h"

namespace scorvane::engine::sql {
namespace {

std::string NameText(const std::string& name) {
  bool bare = !name.empty() && !(name[0] >= '0' && name[0] <= '9') && !IsReservedWord(name);
  for (char c : name)
    bare = bare && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_');
  if (bare) return name;
  // A name holds one of the two closing marks at most.
  return name.find(']') == std::string::npos ? "[" + name + "]" : "`" + name + "`";
}

std::string LiteralText(const Value& value) {
  switch (value.GetType()) {
    case Value::Type::Text: {
      std::string text = "'";
      for (char c : value.Text()) {
        if (c == '\'') text += '\'';
        text += c;
      }
      return text + "'";
    }
    case Value::Type::Date:
      return "#" + value.ToText() + "#";
    case Value::Type::Double: {
      // Written so that it is read back as the same decimal.
      std::string text = fmt::format("{}", value.ToDouble());
      return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
    }
    case Value::Type::Long:
      // With a minus it would be read as a term.
      if (value.ToLong() < 0) return fmt::format("&H{:X}", static_cast<std::uint32_t>(value.ToLong()));
      return value.ToText();
    default:
      return value.ToText();
  }
}

class Writer {
 public:
  std::string text;

  void Write(const Expr& e) {
    switch (e.kind) {
      case Expr::Kind::Literal:
        text += LiteralText(e.value);
        break;
      case Expr::Kind::Null:
        text += "Null";
        break;
      case Expr::Kind::Boolean:
        text += e.value.ToBoolean() ? "True" : "False";
        break;
      case Expr::Kind::Column:
        if (!e.qualifier.empty()) text += NameText(e.qualifier) + ".";
        text += NameText(e.name);
        break;
      case Expr::Kind::Unary:
        text += fmt::format("({} ", OpText(e.op));
        Write(*e.args[0]);
        text += ")";
        break;
      case Expr::Kind::Binary:
        text += "(";
        Write(*e.args[0]);
        text += fmt::format(" {} ", OpText(e.op));
        Write(*e.args[1]);
        text += ")";
        break;
      case Expr::Kind::Like:
        Infix(e, "Like");
        Write(*e.args[1]);
        text += ")";
        break;
      case Expr::Kind::Between:
        Infix(e, "Between");
        Write(*e.args[1]);
        text += " And ";
        Write(*e.args[2]);
        text += ")";
        break;
      case Expr::Kind::InList:
        Infix(e, "In");
        text += "(";
        List(e.args, 1);
        text += "))";
        break;
      case Expr::Kind::InQuery:
        Infix(e, "In");
        text += "(";
        Write(*e.query);
        text += "))";
        break;
      case Expr::Kind::Quantified:
        text += "(";
        Write(*e.args[0]);
        text += fmt::format(" {} {} (", OpText(e.op), e.all ? "All" : "Any");
        Write(*e.query);
        text += "))";
        break;
      case Expr::Kind::Exists:
        text += "Exists (";
        Write(*e.query);
        text += ")";
        break;
      case Expr::Kind::IsNull:
        text += "(";
        Write(*e.args[0]);
        text += e.negated ? " Is Not Null)" : " Is Null)";
        break;
      case Expr::Kind::Call:
        text += e.name + "(";
        if (e.star) text += "*";
        List(e.args, 0);
        text += ")";
        break;
      case Expr::Kind::Subquery:
        text += "(";
        Write(*e.query);
        text += ")";
        break;
    }
  }

  void Write(const Query& query) {
    for (std::size_t i = 0; i < query.selects.size(); ++i) {
      if (i > 0) text += query.unionAll[i - 1] ? " UNION ALL " : " UNION ";
      Write(query.selects[i]);
    }
    if (!query.orderBy.empty()) text += " ORDER BY ";
    for (std::size_t i = 0; i < query.orderBy.size(); ++i) {
      if (i > 0) text += ", ";
      Write(*query.orderBy[i].expr);
      if (query.orderBy[i].descending) text += " DESC";
    }
  }

  void Write(const Statement& statement) {
    switch (statement.kind) {
      case Statement::Kind::Query:
        Write(*statement.query);
        break;
      case Statement::Kind::Insert:
        text += "INSERT INTO " + NameText(statement.table);
        if (statement.hasInPath) text += " IN " + LiteralText(Value(statement.inPath));
        if (!statement.columns.empty()) {
          text += " (";
          for (std::size_t i = 0; i < statement.columns.size(); ++i)
            text += (i > 0 ? ", " : "") + NameText(statement.columns[i]);
          text += ")";
        }
        if (statement.query) {
          text += " ";
          Write(*statement.query);
        } else {
          text += " VALUES (";
          List(statement.values, 0);
          text += ")";
        }
        break;
      case Statement::Kind::Update:
        text += "UPDATE ";
        Sources(statement.sources);
        text += " SET ";
        for (std::size_t i = 0; i < statement.assignments.size(); ++i) {
          const Assignment& assignment = statement.assignments[i];
          if (i > 0) text += ", ";
          if (!assignment.qualifier.empty()) text += NameText(assignment.qualifier) + ".";
          text += NameText(assignment.name) + " = ";
          Write(*assignment.expr);
        }
        Where(statement.where);
        break;
      case Statement::Kind::Delete:
        text += "DELETE ";
        if (!statement.table.empty()) text += NameText(statement.table) + ".";
        text += "* FROM ";
        Sources(statement.sources);
        Where(statement.where);
        break;
    }
  }

 private:
  void Infix(const Expr& e, const char* word) {
    text += "(";
    Write(*e.args[0]);
    text += fmt::format(" {}{} ", e.negated ? "Not " : "", word);
  }

  void List(const std::vector<ExprPtr>& list, std::size_t from) {
    for (std::size_t i = from; i < list.size(); ++i) {
      if (i > from) text += ", ";
      Write(*list[i]);
    }
  }

  void Where(const ExprPtr& where) {
    if (!where) return;
    text += " WHERE ";
    Write(*where);
  }

  void Sources(const std::vector<SourcePtr>& sources) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (i > 0) text += ", ";
      Write(*sources[i]);
    }
  }

  void Write(const Source& source) {
    switch (source.kind) {
      case Source::Kind::Table:
        text += NameText(source.name);
        break;
      case Source::Kind::Subquery:
        text += "(";
        Write(*source.query);
        text += ")";
        break;
      case Source::Kind::Join: {
        const char* word = source.join == Source::JoinType::Inner  ? " INNER JOIN "
                           : source.join == Source::JoinType::Left ? " LEFT JOIN "
                                                                   : " RIGHT JOIN ";
        text += "(";
        Write(*source.left);
        text += word;
        Write(*source.right);
        text += " ON ";
        Write(*source.on);
        text += ")";
        return;
      }
    }
    if (!source.alias.empty()) text += " AS " + NameText(source.alias);
  }

  void Write(const Select& select) {
    text += "SELECT ";
    if (select.distinct) text += "DISTINCT ";
    if (select.distinctRow) text += "DISTINCTROW ";
    if (select.top >= 0) text += fmt::format("TOP {}{} ", select.top, select.topPercent ? " PERCENT" : "");
    for (std::size_t i = 0; i < select.items.size(); ++i) {
      const SelectItem& item = select.items[i];
      if (i > 0) text += ", ";
      if (item.star) {
        text += item.qualifier.empty() ? "*" : NameText(item.qualifier) + ".*";
      } else {
        Write(*item.expr);
        if (!item.alias.empty()) text += " AS " + NameText(item.alias);
      }
    }
    if (!select.sources.empty()) {
      text += " FROM ";
      Sources(select.sources);
    }
    Where(select.where);
    if (!select.groupBy.empty()) {
      text += " GROUP BY ";
      List(select.groupBy, 0);
    }
    if (select.having) {
      text += " HAVING ";
      Write(*select.having);
    }
  }
};

}  // namespace

const char* OpText(Op op) {
  switch (op) {
    case Op::None:
      break;
    case Op::Negate:
    case Op::Subtract:
      return "-";
    case Op::Plus:
    case Op::Add:
      return "+";
    case Op::Not:
      return "Not";
    case Op::Power:
      return "^";
    case Op::Multiply:
      return "*";
    case Op::Divide:
      return "/";
    case Op::IntegerDivide:
      return "\\";
    case Op::Modulo:
      return "Mod";
    case Op::Join:
      return "&";
    case Op::Equal:
      return "=";
    case Op::NotEqual:
      return "<>";
    case Op::Less:
      return "<";
    case Op::Greater:
      return ">";
    case Op::LessOrEqual:
      return "<=";
    case Op::GreaterOrEqual:
      return ">=";
    case Op::And:
      return "And";
    case Op::Or:
      return "Or";
    case Op::Xor:
      return "Xor";
    case Op::Eqv:
      return "Eqv";
    case Op::Imp:
      return "Imp";
  }
  return "";
}

std::string Print(const Statement& statement) {
  Writer writer;
  writer.Write(statement);
  return writer.text;
}

std::string Print(const Expr& expr) {
  Writer writer;
  writer.Write(expr);
  return writer.text;
}

}  // namespace scorvane::engine::sql
