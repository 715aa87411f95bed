#include "engine/Format.h"

#include <array>
#include <cmath>

#include "engine/FormatParts.h"
#include "engine/Names.h"
#include "engine/functions/Characters.h"

namespace scorvane::engine {
namespace {

struct NamedFormat {
  std::string_view name;
  std::string_view format;
};

constexpr std::array kNumberNames = {NamedFormat{"Currency", "$#,##0.00;($#,##0.00)"},
                                     NamedFormat{"Euro", "€#,##0.00;(€#,##0.00)"},
                                     NamedFormat{"Fixed", "0.00"},
                                     NamedFormat{"Standard", "#,##0.00"},
                                     NamedFormat{"Percent", "0.00%"},
                                     NamedFormat{"Scientific", "0.00E+00"}};

// What is true, and what is not.
struct ChoiceFormat {
  std::string_view name;
  const char* yes;
  const char* no;
};
constexpr std::array kChoiceNames = {ChoiceFormat{"Yes/No", "Yes", "No"},
                                     ChoiceFormat{"True/False", "True", "False"},
                                     ChoiceFormat{"On/Off", "On", "Off"}};

constexpr std::array kDateNames = {
    NamedFormat{"General Date", "c"},        NamedFormat{"Long Date", "dddddd"},
    NamedFormat{"Medium Date", "dd-mmm-yy"}, NamedFormat{"Short Date", "ddddd"},
    NamedFormat{"Long Time", "ttttt"},       NamedFormat{"Medium Time", "hh:nn AM/PM"},
    NamedFormat{"Short Time", "hh:nn"}};

template <typename Names>
auto FindNamed(const Names& names, std::string_view format) -> decltype(names.data()) {
  for (const auto& named : names)
    if (SameName(named.name, format)) return &named;
  return nullptr;
}

// Whether one of the characters stands in the format, and means something there.
bool HasAny(std::string_view format, std::string_view characters) {
  while (!format.empty()) {
    const FormatPiece piece = TakePiece(format);
    if (!piece.literal && characters.find(piece.text.front()) != std::string_view::npos) return true;
  }
  return false;
}

// "@" a character or a blank, "&" a character or nothing, filled from the right unless there is a "!"; "<"
// and ">" change the letters' case. What has no place of its own stands where the places begin, or end.
std::string WriteText(const std::string& text, std::string_view format) {
  const bool upper = HasAny(format, ">");
  const std::u32string characters = Characters(upper                 ? UpperCase(text)
                                               : HasAny(format, "<") ? LowerCase(text)
                                                                     : text);
  const bool fromLeft = HasAny(format, "!");
  std::size_t places = 0;
  for (std::string_view rest = format; !rest.empty();) {
    const FormatPiece piece = TakePiece(rest);
    if (!piece.literal && (piece.text == "@" || piece.text == "&")) ++places;
  }
  std::string written;
  std::size_t next = 0;
  std::size_t place = 0;
  const auto take = [&](std::size_t count) {
    written += TextOf(std::u32string_view(characters).substr(next, count));
    next = std::min(next + count, characters.size());
  };
  const std::size_t missing = places > characters.size() ? places - characters.size() : 0;
  while (!format.empty()) {
    const FormatPiece piece = TakePiece(format);
    if (piece.literal || std::string_view("@&<>!").find(piece.text) == std::string_view::npos) {
      written += piece.text;
    } else if (piece.text == "@" || piece.text == "&") {
      if (place == 0 && !fromLeft && characters.size() > places) take(characters.size() - places);
      const bool empty = fromLeft ? next == characters.size() : place < missing;
      if (!empty) take(1);
      if (empty && piece.text == "@") written += ' ';
      ++place;
    }
  }
  take(characters.size());
  return written;
}

// A number by the section of its sign.
std::string WriteSections(const Value& value, double number, std::string_view format, char decimal) {
  const std::vector<std::string_view> sections = SplitSections(format);
  const auto has = [&](std::size_t index) { return sections.size() > index && !sections[index].empty(); };
  std::size_t chosen = 0;
  if (number < 0 && has(1)) chosen = 1;
  if (number == 0 && has(2)) chosen = 2;
  if (sections[chosen].empty() || !std::isfinite(number)) return value.ToText(decimal);
  const int digits = value.GetType() == Value::Type::Single ? 7 : 15;
  return WriteNumber(number, digits, sections[chosen], decimal, chosen == 0);
}

// Null has the fourth section of a number format, and the second of a text format.
std::string WriteNull(std::string_view format, char decimal) {
  const std::vector<std::string_view> sections = SplitSections(format);
  const bool text = HasAny(sections[0], "@&<>!") && !HasAny(sections[0], "0#");
  if (text) return sections.size() > 1 ? WriteText({}, sections[1]) : std::string();
  return sections.size() > 3 ? WriteNumber(0, 1, sections[3], decimal, false) : std::string();
}

std::string WriteAny(const Value& value, bool readable, double number, std::string_view format, char decimal,
                     const WeekRule& weeks) {
  const bool digits = HasAny(format, "0#");
  const bool texts = !digits && HasAny(format, "@&<>!");
  const bool isDate = value.GetType() == Value::Type::Date;
  if (!digits && (isDate ? !texts : IsDateFormat(format))) {
    double days = number;
    if ((readable || ParseDate(value.Text(), days)) && IsDateInRange(days))
      return WriteDate(days, SplitSections(format)[0], weeks);
  }
  if (texts) {
    const std::vector<std::string_view> sections = SplitSections(format);
    const std::string text = isDate ? GeneralDate(number) : value.ToText(decimal);
    return WriteText(text, text.empty() && sections.size() > 1 ? sections[1] : sections[0]);
  }
  return readable ? WriteSections(value, number, format, decimal) : value.Text();
}

}  // namespace

std::vector<std::string_view> SplitSections(std::string_view format) {
  std::vector<std::string_view> sections;
  std::string_view rest = format;
  while (!rest.empty()) {
    const char* at = rest.data();
    const FormatPiece piece = TakePiece(rest);
    if (piece.literal || piece.text != ";") continue;
    sections.push_back(format.substr(0, static_cast<std::size_t>(at - format.data())));
    format = rest;
  }
  sections.push_back(format);
  return sections;
}

FormatPiece TakePiece(std::string_view& format) {
  FormatPiece piece;
  std::size_t length = 1;
  if (format.front() == '"') {
    piece.literal = true;
    const std::size_t end = std::min(format.find('"', 1), format.size());
    piece.text = format.substr(1, end - 1);
    length = end + 1;
  } else if (format.front() == '\\') {
    piece.literal = true;
    piece.text = format.substr(1, 1);
    length = 2;
  } else {
    piece.text = format.substr(0, 1);
  }
  format.remove_prefix(std::min(length, format.size()));
  return piece;
}

std::string FormatValue(const Value& value, std::string_view format, char decimal, const WeekRule& weeks) {
  if (value.IsNull()) return WriteNull(format, decimal);
  if (format.empty()) return value.ToText(decimal);

  double number = 0;
  bool readable = true;
  const ChoiceFormat* choice = FindNamed(kChoiceNames, format);
  if (!value.IsText()) {
    number = value.ToDouble();
  } else if (SameName(value.Text(), "true") || SameName(value.Text(), "false")) {
    number = SameName(value.Text(), "true") ? -1 : 0;
    readable = choice != nullptr;
  } else {
    readable = ParseNumber(value.Text(), decimal, number);
  }
  if (choice != nullptr) return !readable ? value.Text() : number != 0 ? choice->yes : choice->no;
  if (SameName(format, "General Number")) {
    const bool plain = !readable || value.GetType() == Value::Type::Single;
    return (plain ? value : Value(number)).ToText(decimal);
  }
  if (const NamedFormat* named = FindNamed(kNumberNames, format))
    return readable ? WriteSections(value, number, named->format, decimal) : value.Text();
  if (const NamedFormat* named = FindNamed(kDateNames, format)) format = named->format;
  return WriteAny(value, readable, number, format, decimal, weeks);
}

}  // namespace scorvane::engine
