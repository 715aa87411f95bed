// Paths as league administrators have them: "\" and the platform's separator both end a folder's name.
#pragma once

#include <string>
#include <string_view>

#include "platform/SystemPath.h"

namespace scorvane::common {

using platform::PathText;
using platform::SystemPath;

// The name by which the command line takes what comes through its standard input for a file.
inline constexpr std::string_view kStandardInput = "-";

// Up to and including the last separator; empty without one.
std::string GetFolder(std::string_view path);
// Behind the last separator; with `stripExtension` without what follows the last full stop, and without it.
std::string GetFileTitle(std::string_view path, bool stripExtension = false);
// Behind the last full stop of the path; empty without one.
std::string GetExtension(std::string_view path);
bool FileExists(const std::string& path);
// Whether both are there and one and the same file, by whatever names.
bool IsSameFile(const std::string& a, const std::string& b);
// A name below a folder, with one separator between them.
std::string JoinPath(std::string_view folder, std::string_view name);

// The path of a folder's entry whose name differs from `name` at most in letter case, the same spelling
// first; empty when there is none. These simulations come from a system on which the case of a name does not
// count.
std::string FindIgnoringCase(std::string_view folder, std::string_view name);

}  // namespace scorvane::common
