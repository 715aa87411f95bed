// Compiles the readable template files into Kirrelon.dat; part of the build.
#include <cstdio>
#include <exception>
#include <filesystem>

#include <fmt/format.h>

#include "db/TemplateBuild.h"
#include "engine/Database.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    fmt::print(stderr, "usage: scorvane_template_compiler SOURCE-FOLDER TEMPLATE\n");
    return 2;
  }
  const std::filesystem::path target = argv[2];
  std::filesystem::path draft = target;
  draft += ".new";
  try {
    std::filesystem::remove(draft);
    scorvane::engine::DBEngine engine;
    scorvane::db::BuildTemplate(engine, argv[1], draft.string());
    std::filesystem::rename(draft, target);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
  }
  std::error_code ignored;
  std::filesystem::remove(draft, ignored);
  return 1;
}
