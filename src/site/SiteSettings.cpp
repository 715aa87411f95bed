#include "site/SiteSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

#include "common/Formats.h"
#include "common/RuleError.h"
#include "common/SqlText.h"
#include "db/Tables.h"
#include "engine/Names.h"

namespace scorvane::site {
namespace {

constexpr const char* kTable = "SiteSetting";
constexpr std::size_t kMostUrl = 500;
constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Base 64, because the store's texts are texts.
std::string ToText(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t three = 0;
    for (std::size_t j = 0; j < 3; ++j)
      three = three << 8U | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    for (std::size_t j = 0; j < 4; ++j)
      text += i + j > bytes.size() ? '=' : kDigits[three >> (18 - 6 * j) & 0x3FU];
  }
  return text;
}

std::string FromText(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const auto digit = kDigits.find(c);
    if (digit == std::string_view::npos) continue;
    bits = bits << 6U | static_cast<std::uint32_t>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFFU);
  }
  return bytes;
}

std::uint32_t Number(std::string_view bytes, std::size_t at, std::size_t length) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < length && at + i < bytes.size(); ++i)
    number = number << 8U | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

// A JPEG's size stands in its frame header, behind other segments.
PictureSize JpegSize(std::string_view bytes) {
  for (std::size_t at = 2; at + 9 < bytes.size();) {
    const std::uint32_t marker = Number(bytes, at, 2);
    const bool frame =
        marker >= 0xFFC0 && marker <= 0xFFCF && marker != 0xFFC4 && marker != 0xFFC8 && marker != 0xFFCC;
    if (frame)
      return {static_cast<int>(Number(bytes, at + 7, 2)), static_cast<int>(Number(bytes, at + 5, 2))};
    if ((marker & 0xFF00U) != 0xFF00U) break;
    at += 2 + std::max<std::size_t>(2, Number(bytes, at + 2, 2));
  }
  return {};
}

using Item = std::pair<const char*, std::string SiteSettings::*>;
constexpr std::array<Item, 6> kItems = {
    Item{"Folder", &SiteSettings::folder}, {"Theme", &SiteSettings::theme},
    {"BaseUrl", &SiteSettings::baseUrl},   {"Accent", &SiteSettings::accent},
    {"Logo", &SiteSettings::logo},         {"Chart", &SiteSettings::chart}};

}  // namespace

SiteSettings ReadSiteSettings(engine::Database& league) {
  SiteSettings settings;
  if (league.FindTableDef(kTable) == nullptr) return settings;
  for (auto rows = league.OpenRecordset("SELECT Name, Setting FROM SiteSetting"); !rows.AtEnd();
       rows.MoveNext()) {
    for (const auto& [name, member] : kItems)
      if (engine::SameName(rows.At(0).Text(), name)) settings.*member = rows.At(1).ToText();
  }
  settings.logo = FromText(settings.logo);
  // A file may come from anywhere: what could not have been set does not reach a page.
  if (LogoExtension(settings.logo).empty() || settings.logo.size() > kMostLogoBytes) settings.logo.clear();
  settings.chart = ChartText(ChartedDrivers(settings.chart));
  for (const auto& [member, clean] :
       {std::pair(&SiteSettings::baseUrl, &CleanBaseUrl), std::pair(&SiteSettings::accent, &CleanAccent)}) {
    try {
      settings.*member = clean(settings.*member);
    } catch (const common::RuleError&) {
      (settings.*member).clear();
    }
  }
  return settings;
}

void EnsureSiteTable(engine::Database& league) {
  if (league.FindTableDef(kTable) != nullptr) return;
  constexpr int kNameLength = 30;
  league.AppendTableDef(
      {kTable,
       {db::Column("SiteSettingID", engine::FieldType::Long),
        db::Column("Name", engine::FieldType::Text, kNameLength, engine::kVariableField, true),
        db::Column("Setting", engine::FieldType::Memo, 0, engine::kVariableField)},
       {db::PrimaryKey("SiteSettingID")}});
}

void StoreSiteSettings(engine::Database& league, const SiteSettings& settings) {
  engine::UnitOfWork unit(league);
  const SiteSettings before = ReadSiteSettings(league);
  for (std::size_t i = 0; i < kItems.size(); ++i) {
    const auto& [name, member] = kItems[i];
    if (before.*member == settings.*member) continue;
    league.Execute(fmt::format("DELETE * FROM SiteSetting WHERE SiteSettingID={}", i + 1));
    std::string value = settings.*member;
    if (value.empty()) continue;
    if (member == &SiteSettings::logo) value = ToText(value);
    std::string sql =
        fmt::format("INSERT INTO SiteSetting (SiteSettingID, Name, Setting) VALUES ({},'{}',", i + 1, name);
    common::AppendLiteral(sql, value);
    league.Execute(sql + ")");
  }
  unit.Commit();
}

std::string CleanBaseUrl(std::string_view typed) {
  std::string url(common::TrimBlanks(typed));
  if (url.empty()) return url;
  const bool plain = std::none_of(url.begin(), url.end(), [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || static_cast<unsigned char>(c) >= 0x7F ||
           std::string_view("<>\"'\\^`{|}").find(c) != std::string_view::npos;
  });
  const std::size_t host = url.find("://");
  const bool web = url.starts_with("https://") || url.starts_with("http://");
  if (!web || !plain || url.size() > kMostUrl || url.size() <= host + 3 || url[host + 3] == '/' ||
      url.find_first_of("?#") != std::string::npos) {
    throw common::RuleError(
        "The site's address begins with https:// or http:// and has no blanks, quotes, ? or #, as in "
        "https://league.example/season/.");
  }
  if (url.back() != '/') url += '/';
  return url;
}

std::string CleanAccent(std::string_view typed) {
  std::string color = common::LowerCase(common::TrimBlanks(typed));
  if (color.empty()) return color;
  if (color[0] != '#') color.insert(0, 1, '#');
  if (color.size() != 7 || color.find_first_not_of("0123456789abcdef", 1) != std::string::npos)
    throw common::RuleError("The colour is written as #RRGGBB, as in #c8102e.");
  return color;
}

std::string ChartText(const std::vector<std::int32_t>& drivers) {
  if (drivers.size() > kMostCharted)
    throw common::RuleError(fmt::format("The chart of points takes {} drivers at most.", kMostCharted));
  std::string text;
  for (const std::int32_t driver : drivers) text += (text.empty() ? "" : ",") + std::to_string(driver);
  return text;
}

std::vector<std::int32_t> ChartedDrivers(std::string_view chart) {
  std::vector<std::int32_t> drivers;
  while (!chart.empty() && drivers.size() < kMostCharted) {
    const std::size_t end = std::min(chart.find(','), chart.size());
    std::int32_t driver = 0;
    const std::string number(chart.substr(0, end));
    const auto read = std::from_chars(number.data(), number.data() + number.size(), driver);
    const bool known = std::find(drivers.begin(), drivers.end(), driver) != drivers.end();
    if (read.ec == std::errc() && driver > 0 && !known) drivers.push_back(driver);
    chart.remove_prefix(std::min(end + 1, chart.size()));
  }
  return drivers;
}

std::string_view LogoExtension(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return ".png";
  if (bytes.starts_with("\xFF\xD8\xFF")) return ".jpg";
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return ".gif";
  if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP")) return ".webp";
  return "";
}

PictureSize LogoSize(std::string_view bytes) {
  const std::string_view kind = LogoExtension(bytes);
  if (kind == ".png")
    return {static_cast<int>(Number(bytes, 16, 4) & 0xFFFFU),
            static_cast<int>(Number(bytes, 20, 4) & 0xFFFFU)};
  if (kind == ".gif") {
    const auto little = [&](std::size_t at) {
      return static_cast<int>(Number(bytes, at + 1, 1) << 8U | Number(bytes, at, 1));
    };
    return {little(6), little(8)};
  }
  if (kind == ".jpg") return JpegSize(bytes);
  return {};
}

void CheckLogo(std::string_view bytes) {
  if (bytes.empty()) return;
  if (bytes.size() > kMostLogoBytes)
    throw common::RuleError(fmt::format("The logo has at most {} kB.", kMostLogoBytes / 1000));
  if (LogoExtension(bytes).empty())
    throw common::RuleError("The logo is a picture of the kind PNG, JPEG, GIF or WebP.");
}

}  // namespace scorvane::site
