// Result files as the readers take them in.
#pragma once

#include <stdexcept>
#include <string>

namespace scorvane::import {

// A fault of a file, in words for the administrator.
class FileFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The content of the result file at `path`. Throws FileFault when it cannot be read, is empty, or is so large
// that it can be none.
std::string ReadFileContent(const std::string& path);

}  // namespace scorvane::import
