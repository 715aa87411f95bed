// A theme of a stranger's: its templates are filled or refused, and what is filled in cannot leave its place.
#include <filesystem>
#include <utility>

#include "FuzzTarget.h"
#include "common/RuleError.h"
#include "site/Theme.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const test::TempFolder folder;
  static const bool made = [] {
    std::filesystem::create_directory(folder.Path() / "templates");
    std::ofstream(folder.File("theme.css")) << "body { margin: 0 }\n";
    return true;
  }();
  fuzz::Check(made, "the folder is there");
  constexpr const char* kName = "<i onx=\"'\">&Q";
  const std::string_view text = fuzz::Text(data, size);
  std::ofstream(folder.File("templates/race.mustache"), std::ios::binary) << text;
  try {
    site::Theme theme(folder.Path().string(), SCORVANE_SOURCE_DIR "/share/themes");
    site::View view;
    view["name"] = kName;
    site::View rows = site::ViewList();
    for (int i = 0; i < 3; ++i) {
      site::View row;
      row["name"] = kName;
      row["number"] = std::to_string(i);
      site::Append(rows, std::move(row));
    }
    view["rows"] = std::move(rows);
    const std::string page = theme.Render("race", view);
    // Only a template that asks for it gets a text as it is.
    const bool raw =
        text.find('&') != text.npos || text.find("{{{") != text.npos || text.find('=') != text.npos;
    fuzz::Check(raw || text.find(kName) != text.npos || page.find(kName) == page.npos, "a name is escaped");
  } catch (const common::RuleError& error) {
    fuzz::Check(*error.what() != '\0', "a refusal says why");
  }
  return 0;
}
