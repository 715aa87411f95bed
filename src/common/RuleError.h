// What a user asked cannot be: the text says why, in a sentence for him.
#pragma once

#include <stdexcept>

namespace scorvane::common {

class RuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace scorvane::common
