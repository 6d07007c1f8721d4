// Licence: MIT, see LICENSE.
#include "bench/support/Processors.h"

#include <sched.h>

namespace bench {

namespace {

std::vector<int> allowedNow() {
  std::vector<int> allowed;
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof set, &set) == -1) return allowed;
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (CPU_ISSET(processor, &set)) allowed.push_back(processor);
  }
  return allowed;
}

bool allow(const std::vector<int>& chosen) {
  cpu_set_t set;
  CPU_ZERO(&set);
  for (const int processor : chosen) CPU_SET(processor, &set);
  return sched_setaffinity(0, sizeof set, &set) == 0;
}

}  // namespace

const std::vector<int>& processors() {
  static const std::vector<int> allowed = allowedNow();
  return allowed;
}

bool stayOn(int processor) {
  static_cast<void>(processors());  // before there are fewer
  return allow({processor});
}

bool roam() { return allow(processors()); }

}  // namespace bench
