// How a site looks: templates, one style sheet and pictures, in a folder. What a theme's folder does not have
// is taken from the folder "shared" beside the themes that come with the program.
#pragma once

#include <cstddef>
#include <kainjow/mustache.hpp>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "reports/PageLook.h"
#include "site/SiteSettings.h"

namespace scorvane::site {

// What a template is filled with. Setting by `view["name"] = ...` moves; what is set on it is text, and is
// escaped where a template shows it.
using View = kainjow::mustache::data;
View ViewList();
// Moves an item to the end of a list.
void Append(View& list, View item);

inline constexpr std::size_t kMostThemeFile = 2U << 20U;  // bytes
inline constexpr std::size_t kMostThemePictures = 100;

class Theme {
 public:
  // One of the program's by its name, or a folder with a "theme.css". Throws common::RuleError with a
  // sentence for the user: no such theme (with the names that there are), a template that is none, a file too
  // large. `themesFolder` is where the program's own are.
  Theme(const std::string& nameOrFolder, const std::string& themesFolder);

  // A page from a template ("race"). Texts of the view are escaped; what no page may hold, as control
  // characters, becomes U+FFFD. Throws common::RuleError when the template is missing or cannot be filled.
  std::string Render(const std::string& name, const View& view);

  // The style sheet: the league's colours as variables, then the shared sheet, then the theme's.
  std::string StyleSheet(const reports::PageLook& look, const SiteSettings& settings) const;
  // Files that go to the site as they are: paths below it and contents.
  const std::vector<std::pair<std::string, std::string>>& Files() const { return files_; }
  // Over all that a page is made of.
  const std::string& Fingerprint() const { return fingerprint_; }

  // A file of the shared folder, as it is. Throws common::RuleError when it is missing.
  std::string SharedFile(const std::string& name) const;

 private:
  std::string Source(const std::string& name) const;
  std::string WithPartials(const std::string& source, int depth) const;

  std::string folder_;
  std::string shared_;
  std::map<std::string, kainjow::mustache::mustache> templates_;
  std::vector<std::pair<std::string, std::string>> files_;
  std::string fingerprint_;
};

// The folder of the themes that come with the program: beside it, or where it is installed.
std::string ThemesFolder();
// Their names.
std::vector<std::string> ListThemes(const std::string& themesFolder);

}  // namespace scorvane::site
