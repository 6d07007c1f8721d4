// Licence: MIT, see LICENSE.
// Which processor a process runs on. Two processes that answer each other are compared on one
// processor: across two the time is that of waking the other processor up.
#ifndef BENCH_SUPPORT_PROCESSORS_H
#define BENCH_SUPPORT_PROCESSORS_H

#include <vector>

namespace bench {

/// The processors that this process was allowed to use when it started, in their order.
const std::vector<int>& processors();

/// Keeps the calling thread, and the processes that it starts from now on, on one processor, or
/// lets them use all again. False when the host refuses.
bool stayOn(int processor);
bool roam();

}  // namespace bench

#endif
