#include "site/Theme.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "common/Formats.h"
#include "common/Markup.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "platform/Platform.h"
#include "site/Colors.h"
#include "site/Folder.h"
#include "site/Hash.h"

namespace scorvane::site {
namespace {

namespace fs = std::filesystem;
using common::JoinPath;
using common::RuleError;
using common::SystemPath;

constexpr const char* kShared = "shared";
constexpr const char* kSheet = "theme.css";
constexpr int kMostNesting = 8;  // of partials

std::string ReadThemeFile(const std::string& path) {
  std::error_code error;
  const auto size = fs::file_size(SystemPath(path), error);
  if (!error && size > kMostThemeFile)
    throw RuleError(fmt::format("'{}' is too large for a theme's file.", path));
  std::ifstream file(SystemPath(path), std::ios::binary);
  if (error || !file) throw RuleError(fmt::format("'{}' cannot be read.", path));
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool IsFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(SystemPath(path), error);
}

std::string TemplatePath(const std::string& folder, const std::string& name) {
  return JoinPath(JoinPath(folder, "templates"), name + ".mustache");
}

// The files of a folder by their names.
std::vector<std::string> FileNames(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(SystemPath(folder), error))
    if (entry.is_regular_file(error)) names.push_back(common::PathText(entry.path().filename()));
  std::sort(names.begin(), names.end());
  return names;
}

// Most texts need nothing.
std::string EscapedForPage(const std::string& text) {
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= ' ' && byte < 0x7F && c != '&' && c != '<' && c != '>' && c != '"' && c != '\'';
  });
  return plain ? text : kainjow::mustache::html_escape(common::WithoutControls(text));
}

// The league's page colours for one scheme, each as it can be read there.
struct Scheme {
  Color background;
  Color text;
  Color link;
  Color heading;
  Color name;
  Color caption;
  Color headText;
  Color head;
  Color rowText;
  Color row;
  Color evenText;
  Color even;
};

enum LookColor : std::size_t { kBackground, kText, kLink, kVisited, kActive, kHeading, kName, kCaption };
enum LookTable : std::size_t { kHeadText = 8, kHead, kRowText, kRow, kEvenText, kEven };
enum LookSwitch : std::size_t { kColorHead, kColorRows, kAlternate };

constexpr double kLeastContrast = 4.6;
constexpr double kLinkContrast = 7;
constexpr double kTextContrast = 12;

Scheme SchemeOf(const reports::PageLook& look, Color background) {
  const auto color = [&](std::size_t i) { return ColorOf(look.colors[i]); };
  Scheme scheme;
  const bool own = background == color(kBackground);
  // Black made just light enough for a dark page would be a dull grey.
  const auto on = [&](std::size_t i, Color paper) {
    const double wanted = own ? kLeastContrast : i == kLink ? kLinkContrast : kTextContrast;
    return Readable(color(i), paper, wanted);
  };
  scheme.background = background;
  scheme.text = on(kText, background);
  scheme.link = on(kLink, background);
  scheme.heading = on(kHeading, background);
  scheme.name = on(kName, background);
  scheme.caption = on(kCaption, background);
  // In the other scheme the rows' colours are mixed into its background.
  const auto paper = [&](bool used, std::size_t i, Color without) {
    if (!used) return without;
    return own ? color(i) : Blend(background, color(i), 0.22);
  };
  const Color faint = Blend(background, scheme.text, 0.06);
  scheme.head = paper(look.switches[kColorHead], kHead, Blend(background, scheme.text, 0.1));
  scheme.row = paper(look.switches[kColorRows], kRow, background);
  scheme.even = paper(look.switches[kColorRows], look.switches[kAlternate] ? kEven : kRow, faint);
  const auto ink = [&](bool used, std::size_t i, Color page) {
    return Readable(used ? color(i) : scheme.text, page);
  };
  scheme.headText = ink(look.switches[kColorHead], kHeadText, scheme.head);
  scheme.rowText = ink(look.switches[kColorRows], kRowText, scheme.row);
  scheme.evenText =
      ink(look.switches[kColorRows], look.switches[kAlternate] ? kEvenText : kRowText, scheme.even);
  return scheme;
}

std::string Variables(const Scheme& scheme) {
  std::string css;
  const auto add = [&](const char* name, Color color) {
    css += fmt::format("  --league-{}: {};\n", name, ColorName(color));
  };
  add("background", scheme.background);
  add("text", scheme.text);
  add("link", scheme.link);
  add("heading", scheme.heading);
  add("name", scheme.name);
  add("caption", scheme.caption);
  add("head-text", scheme.headText);
  add("head", scheme.head);
  add("row-text", scheme.rowText);
  add("row", scheme.row);
  add("row-link", Readable(scheme.link, scheme.row));
  add("even-text", scheme.evenText);
  add("even", scheme.even);
  add("even-link", Readable(scheme.link, scheme.even));
  return css;
}

// The name of a font between quotes of a style sheet.
std::string FontName(const std::string& font) {
  std::string name;
  for (const char c : font)
    if (static_cast<unsigned char>(c) >= ' ' && c != '"' && c != '\\' && c != '<' && c != ';') name += c;
  return name.empty() ? "Times New Roman" : name;
}

}  // namespace

View ViewList() {
  return {View::type::list};
}

void Append(View& list, View item) {
  // The library's own way in copies the item with everything in it, and so does a vector of its items that
  // grows: their moving might throw.
  auto& items = const_cast<kainjow::mustache::list&>(list.list_value());
  if (items.size() == items.capacity()) {
    kainjow::mustache::list larger;
    larger.reserve(std::max<std::size_t>(8, 2 * items.size()));
    for (View& old : items) larger.push_back(std::move(old));
    items.swap(larger);
  }
  items.push_back(std::move(item));
}

std::string ThemesFolder() {
  const std::string beside = JoinPath(platform::ProgramFolder(), "themes");
  return IsFile(JoinPath(JoinPath(beside, kShared), "base.css"))
             ? beside
             : JoinPath(platform::InstalledFolder(), "themes");
}

std::vector<std::string> ListThemes(const std::string& themesFolder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(SystemPath(themesFolder), error)) {
    if (IsFile(JoinPath(common::PathText(entry.path()), kSheet)))
      names.push_back(common::PathText(entry.path().filename()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

Theme::Theme(const std::string& nameOrFolder, const std::string& themesFolder)
    : shared_(JoinPath(themesFolder, kShared)) {
  const std::string wanted = nameOrFolder.empty() ? kDefaultTheme : nameOrFolder;
  const auto names = ListThemes(themesFolder);
  const std::string small = common::LowerCase(wanted);
  if (std::find(names.begin(), names.end(), small) != names.end()) {
    folder_ = JoinPath(themesFolder, small);
  } else if (IsFile(JoinPath(wanted, kSheet))) {
    folder_ = wanted;
  } else {
    std::string known;
    for (const std::string& name : names) known += (known.empty() ? "" : ", ") + name;
    if (known.empty())
      throw RuleError(fmt::format("The program's themes are not in '{}', where they belong.", themesFolder));
    throw RuleError(fmt::format(
        "There is no theme '{}': neither one of the program's ({}) nor a folder with a theme.css.", wanted,
        known));
  }
  Hash hash;
  for (const std::string& folder : {shared_, folder_}) {
    for (const char* part : {"", "templates", "pictures"}) {
      const std::string place = *part == '\0' ? folder : JoinPath(folder, part);
      const auto files = FileNames(place);
      if (std::string_view(part) == "pictures" && files.size() > kMostThemePictures)
        throw RuleError(fmt::format("'{}' holds more than {} pictures.", place, kMostThemePictures));
      for (const std::string& file : files) {
        std::string content = ReadThemeFile(JoinPath(place, file));
        hash.AddText(file);
        hash.AddText(content);
        if (std::string_view(part) != "pictures") continue;
        const std::string path = "assets/" + file;
        if (!IsSitePath(path))
          throw RuleError(fmt::format(
              "The name of the picture '{}' has other characters than small letters, digits, - and _.",
              JoinPath(place, file)));
        std::erase_if(files_, [&](const auto& other) { return other.first == path; });
        files_.emplace_back(path, std::move(content));
      }
    }
  }
  fingerprint_ = hash.Digits();
}

std::string Theme::SharedFile(const std::string& name) const {
  return ReadThemeFile(JoinPath(shared_, name));
}

std::string Theme::Source(const std::string& name) const {
  const std::string own = TemplatePath(folder_, name);
  return ReadThemeFile(IsFile(own) ? own : TemplatePath(shared_, name));
}

// Partials are put in once, when a template is read: the library would read them anew on every page.
std::string Theme::WithPartials(const std::string& source, int depth) const {
  if (depth > kMostNesting) throw RuleError("The theme's templates include each other in a circle.");
  std::string whole;
  std::size_t from = 0;
  for (std::size_t tag = source.find("{{>"); tag != std::string::npos; tag = source.find("{{>", from)) {
    const std::size_t end = source.find("}}", tag);
    if (end == std::string::npos) break;
    whole += source.substr(from, tag - from);
    const std::string name(common::TrimBlanks(source.substr(tag + 3, end - tag - 3)));
    if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") != std::string::npos)
      throw RuleError(fmt::format("The theme includes '{}', which is no template's name.", name));
    whole += WithPartials(Source(name), depth + 1);
    from = end + 2;
  }
  return whole + source.substr(from);
}

std::string Theme::Render(const std::string& name, const View& view) {
  auto found = templates_.find(name);
  if (found == templates_.end()) {
    found = templates_.emplace(name, WithPartials(Source(name), 0)).first;
    found->second.set_custom_escape(EscapedForPage);
  }
  std::string page;
  page.reserve(1U << 15U);
  found->second.render(view, [&page](const std::string& part) { page += part; });
  if (!found->second.is_valid())
    throw RuleError(
        fmt::format("The theme's template '{}' cannot be filled: {}.", name, found->second.error_message()));
  return page;
}

std::string Theme::StyleSheet(const reports::PageLook& look, const SiteSettings& settings) const {
  const Color paper = ColorOf(look.colors[kBackground]);
  constexpr Color kNight{0x15, 0x18, 0x1d};
  const bool dark = IsDark(paper);
  // A league whose pages are dark has them so in either scheme.
  const Scheme light = SchemeOf(look, paper);
  const Scheme night = SchemeOf(look, dark ? paper : kNight);
  const Color accent = ColorOf(settings.accent.empty() ? "#b5121b" : settings.accent);
  constexpr Color kWhite{255, 255, 255};
  constexpr Color kBlack{0, 0, 0};
  std::string css = ":root {\n";
  css += fmt::format("  --league-font: \"{}\";\n", FontName(look.font));
  css += fmt::format("  --accent: {};\n  --on-accent: {};\n", ColorName(accent),
                     ColorName(Contrast(accent, kWhite) >= 4.5 ? kWhite : kBlack));
  css += fmt::format("  --accent-text: {};\n", ColorName(Readable(accent, {0xee, 0xf0, 0xf3})));
  css += Variables(light) + "}\n@media (prefers-color-scheme: dark) {\n:root {\n";
  css += fmt::format("  --accent-text: {};\n", ColorName(Readable(accent, {0x26, 0x2b, 0x33})));
  css += Variables(night) + "}\n}\n";
  return css + SharedFile("base.css") + ReadThemeFile(JoinPath(folder_, kSheet));
}

}  // namespace scorvane::site
