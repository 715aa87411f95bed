// Commands that decide how a league's pages look: their colours and texts, and the columns of the reports.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>

#include "app/Commands.h"
#include "common/Formats.h"
#include "engine/Names.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/ReportNames.h"
#include "reports/Columns.h"
#include "reports/PageExport.h"

namespace scorvane::cli {
namespace {

// #RRGGBB, as pages have it.
std::optional<std::int32_t> ColorFromHex(std::string text) {
  if (!text.empty() && text[0] == '#') text.erase(0, 1);
  std::uint32_t rgb = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rgb, 16);
  if (error != std::errc() || end != text.data() + text.size() || text.size() != 6) return std::nullopt;
  return static_cast<std::int32_t>((rgb & 0xFFU) << 16U | (rgb & 0xFF00U) | rgb >> 16U);
}

// A part of the look under its readable name.
struct LookItem {
  std::string name;
  std::function<std::string()> read;
  std::function<bool(const std::string&)> write;  // false: not a value of this kind
};

std::vector<LookItem> LookItems(reports::PageTexts& texts, reports::PageLook& look) {
  std::vector<LookItem> items;
  auto text = [&items](const char* name, std::string& target) {
    items.push_back({name, [&target] { return target; },
                     [&target](const std::string& value) {
                       target = value;
                       return true;
                     }});
  };
  auto flag = [&items](const char* name, bool& target) {
    items.push_back({name, [&target] { return target ? "on" : "off"; },
                     [&target](const std::string& value) {
                       if (value != "on" && value != "off") return false;
                       target = value == "on";
                       return true;
                     }});
  };
  auto number = [&items](const char* name, std::int16_t& target, int most) {
    items.push_back(
        {name, [&target] { return std::to_string(target); },
         [&target, most](const std::string& value) {
           std::int16_t parsed = 0;
           const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), parsed);
           if (error != std::errc() || end != value.data() + value.size() || parsed < 0 || parsed > most)
             return false;
           target = parsed;
           return true;
         }});
  };
  auto color = [&items](const char* name, std::int32_t& target) {
    items.push_back({name, [&target] { return "#" + common::ColorToHTML(target); },
                     [&target](const std::string& value) {
                       const auto parsed = ColorFromHex(value);
                       if (parsed) target = *parsed;
                       return parsed.has_value();
                     }});
  };
  text("heading", texts.heading);
  text("report-name", texts.reportName);
  text("caption", texts.caption);
  text("font", look.font);
  number("font-size", look.fontSize, 7);
  flag("background-image", look.useBGImage);
  text("background-image-path", look.bgImage);
  static constexpr const char* kColors[] = {"background",
                                            "text",
                                            "link",
                                            "visited-link",
                                            "active-link",
                                            "heading-color",
                                            "report-name-color",
                                            "caption-color",
                                            "header-text",
                                            "header-background",
                                            "row-text",
                                            "row-background",
                                            "alternate-text",
                                            "alternate-background",
                                            "border-light",
                                            "border-dark",
                                            "table-background"};
  for (std::size_t i = 0; i < std::size(kColors); ++i) color(kColors[i], look.colors[i]);
  static constexpr const char* kSwitches[] = {"header-colors", "row-colors", "alternate-rows",
                                              "border-colors", "table-background-color"};
  for (std::size_t i = 0; i < std::size(kSwitches); ++i) flag(kSwitches[i], look.switches[i]);
  static constexpr const char* kLayout[] = {"border", "cell-padding", "cell-spacing"};
  for (std::size_t i = 0; i < std::size(kLayout); ++i) number(kLayout[i], look.layout[i], 100);
  return items;
}

}  // namespace

void Look(const CommonOptions& common, const std::string& path, const std::vector<std::string>& sets) {
  Context context(common, path);
  engine::Database& league = context.League();
  reports::PageTexts texts = reports::StoredPageTexts(league);
  reports::PageLook look = reports::ReadPageLook(league);
  const std::vector<LookItem> items = LookItems(texts, look);
  for (const std::string& set : sets) {
    const std::size_t equals = set.find('=');
    const auto item = std::find_if(items.begin(), items.end(), [&](const LookItem& known) {
      return known.name == set.substr(0, equals);
    });
    if (equals == std::string::npos || item == items.end())
      throw CommandError(fmt::format("--set takes NAME=VALUE with a NAME that `look` lists, not '{}'.", set));
    if (!item->write(set.substr(equals + 1)))
      throw CommandError(fmt::format("{} is now {}; '{}' is no value for it.", item->name, item->read(),
                                     set.substr(equals + 1)));
  }
  if (!sets.empty()) {
    app::SavePageSettings(context.Session(), texts, look);
    context.Say(fmt::format("Changed {} of the pages' look.", Plural(sets.size(), "part")));
    return;
  }
  OutputTable table;
  table.columns = {{"Name"}, {"Value"}};
  for (const LookItem& item : items)
    table.rows.push_back({engine::Value(item.name), engine::Value(item.read())});
  Print(table, common.format, common.decimal);
}

// ---- columns

void Columns(const CommonOptions& common, const ColumnOptions& options) {
  const bool changes = !options.order.empty() || !options.show.empty() || !options.hide.empty();
  Context context(common, changes ? Context::Access::WriteTemplate : Context::Access::ReadTemplate);
  const reports::ReportInfo info = NeedReport(reports::ListReports(context.Template()), options.report);
  std::vector<reports::ColumnChoice> columns = reports::ReadColumnChoices(context.Template(), info.id);
  auto need = [&](const std::string& name) {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const reports::ColumnChoice& column) {
      return engine::SameName(column.name, name);
    });
    if (found == columns.end()) throw CommandError(fmt::format("{} has no column '{}'.", info.name, name));
    return found;
  };
  auto place = columns.begin();
  for (const std::string& name : options.order) {
    const auto found = need(name);
    if (found < place) throw CommandError(fmt::format("'{}' stands twice in the order.", name));
    std::rotate(place, found, found + 1);
    ++place;
  }
  for (const std::string& name : options.show) need(name)->shown = true;
  for (const std::string& name : options.hide) need(name)->shown = false;
  if (changes) {
    if (!reports::CanSave(columns)) throw CommandError("A report needs a column that is shown.");
    reports::SaveColumnChoices(context.Template(), columns);
    context.Say(fmt::format("Changed the columns of {}, in every league.", info.name));
    return;
  }
  OutputTable table;
  table.columns = {{"Column"}, {"Shown"}};
  for (const reports::ColumnChoice& column : columns)
    table.rows.push_back({engine::Value(column.name), engine::Value(column.shown)});
  Print(table, common.format, common.decimal);
}

}  // namespace scorvane::cli
