// Licence: MIT, see LICENSE.
// Both ends of a road: a server in a process of its own (with a message bus between where there is
// one) and clients. Everything lies below a private root and ends with the object.
#ifndef BENCH_AEMESSAGING_ROADPAIR_H
#define BENCH_AEMESSAGING_ROADPAIR_H

#include <memory>
#include <string>

#include "bench/aemessaging/Roads.h"
#include "tests/support/ChildProcess.h"

namespace bench {

/// Where the two processes run.
enum class Place {
  kTogether,  // on one processor
  kApart,     // the server on another one
};

class RoadPair final {
 public:
  /// Starts the server; throws std::runtime_error when something does not come up.
  RoadPair(const std::string& way, std::size_t size, Place place);

  const Road& road() const { return where; }
  /// A client in a process of its own, which makes as many round trips as the number that it reads.
  std::unique_ptr<tests::ChildProcess> startClient() const;

 private:
  void startBus();

  Road where;
  std::unique_ptr<tests::ChildProcess> bus;
  std::unique_ptr<tests::ChildProcess> server;
};

}  // namespace bench

#endif
