// Options that take one of a few words.
#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <map>
#include <string>

namespace scorvane::cli {

template <typename Target, typename Choice>
std::function<std::string(const std::string&)> PickInto(Target& target,
                                                        const std::map<std::string, Choice>& choices) {
  return [&target, &choices](const std::string& text) -> std::string {
    const auto found = choices.find(CLI::detail::to_lower(text));
    if (found != choices.end()) {
      target = static_cast<Target>(found->second);
      return {};
    }
    std::string known;
    for (const auto& [name, value] : choices) known += (known.empty() ? "" : ", ") + name;
    return fmt::format("'{}' is none of: {}", text, known);
  };
}

// An option that takes one of these, letter case aside.
template <typename Target, typename Choice>
CLI::Option* AddChoice(CLI::App* app, const std::string& flag, Target& target,
                       const std::map<std::string, Choice>& choices, const std::string& help) {
  std::string known;
  for (const auto& [name, value] : choices)
    if (name.size() > 1) known += (known.empty() ? "" : "|") + name;
  return app
      ->add_option_function<std::string>(
          flag,
          [pick = PickInto(target, choices), flag](const std::string& text) {
            const std::string fault = pick(text);
            if (!fault.empty()) throw CLI::ValidationError(flag, fault);
          },
          help)
      ->type_name(known);
}

}  // namespace scorvane::cli
