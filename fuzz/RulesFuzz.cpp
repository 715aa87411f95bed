// The files with which a user brings rules: points by position as text, playoffs as JSON. What is taken has
// no gaps and is written and read again as the same.
#include "FuzzTarget.h"
#include "championship/Playoff.h"
#include "championship/RuleFiles.h"
#include "common/RuleError.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const test::TempFolder folder;
  static const std::string path = folder.File("rules");
  std::ofstream(path, std::ios::binary) << fuzz::Text(data, size);
  try {
    const auto points = championship::ReadPointFile(path);
    fuzz::Check(!points.empty(), "a table of points has a line");
    for (std::size_t i = 0; i < points.size(); ++i)
      fuzz::Check(points[i].position == 0 || points[i].position == static_cast<std::int32_t>(i + 1),
                  "no gaps");
  } catch (const common::RuleError& error) {
    fuzz::Check(*error.what() != '\0', "a refusal says why");
  }
  try {
    const auto format = championship::ParsePlayoff(fuzz::Text(data, size));
    const std::string text = championship::PlayoffText(format);
    fuzz::Check(championship::PlayoffText(championship::ParsePlayoff(text)) == text,
                "a format that is written is read as the same");
  } catch (const common::RuleError& error) {
    fuzz::Check(*error.what() != '\0', "a refusal says why");
  }
  return 0;
}
