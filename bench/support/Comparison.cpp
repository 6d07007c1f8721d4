// Licence: MIT, see LICENSE.
#include "bench/support/Comparison.h"

#include <utility>

namespace bench {

namespace {

std::vector<const Comparison*>& registered() {
  static std::vector<const Comparison*> comparisons;
  return comparisons;
}

}  // namespace

Goal timeAtMost(double ratio) { return {.wanted = Goal::Wanted::kAtMost, .ratio = ratio}; }

Goal speedAtLeast(double ratio) {
  return {.wanted = Goal::Wanted::kAtLeast, .ratio = ratio, .peerByOurs = true};
}

Goal counterAtMost(const std::string& counter, double ratio) {
  return {Goal::Of::kCounter, counter, Goal::Wanted::kAtMost, ratio};
}

Goal counterAtLeast(const std::string& counter, double ratio) {
  return {Goal::Of::kCounter, counter, Goal::Wanted::kAtLeast, ratio};
}

Goal onlyShown() { return {}; }

Comparison::Comparison(std::string subject, std::string oursName, std::string peerName,
                       Goal wantedGoal)
    : what(std::move(subject)),
      ours(std::move(oursName)),
      peer(std::move(peerName)),
      goal(std::move(wantedGoal)) {
  registered().push_back(this);
}

Comparison::~Comparison() { std::erase(registered(), this); }

const std::vector<const Comparison*>& Comparison::all() { return registered(); }

}  // namespace bench
