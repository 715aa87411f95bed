// Each job is done twice over, by the program's own operations and by a hand-written loop over prepared statements
// that does the same, in turns; what counts is the ratio of the two within one run.
#pragma once

#include <functional>
#include <string>

namespace scorvane::bench {

struct Job {
  std::string name;
  double goal;                       // the ratio that it must stay under
  std::function<void()> prepare;     // before every turn of either; not timed
  std::function<void()> ours;
  std::function<void()> loop;
  std::function<void()> check;       // throws when the two did not come to the same
};

// Runs a job and prints its line. Yields whether the goal was met.
bool Run(const Job& job, int turns);

}  // namespace scorvane::bench
