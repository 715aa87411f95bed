#include "Bench.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace scorvane::bench {
namespace {

double Milliseconds(const std::function<void()>& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

bool Run(const Job& job, int turns) {
  std::vector<double> ours;
  std::vector<double> loops;
  std::vector<double> ratios;
  for (int turn = 0; turn < turns; ++turn) {
    job.prepare();
    loops.push_back(Milliseconds(job.loop));
    job.prepare();
    ours.push_back(Milliseconds(job.ours));
    ratios.push_back(ours.back() / loops.back());
    if (turn == 0) job.check();
  }
  const double ratio = Median(ratios);
  const bool met = ratio <= job.goal;
  fmt::print("{:<44} {:>9.1f} ms {:>9.1f} ms   ratio {:.2f} (goal {:.2f}) {}\n", job.name, Median(ours),
             Median(loops), ratio, job.goal, met ? "met" : "MISSED");
  std::fflush(stdout);
  return met;
}

}  // namespace scorvane::bench
