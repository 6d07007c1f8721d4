// Licence: MIT, see LICENSE.
// The other process of a road: `road serve WAY ADDRESS SIZE` answers until it is killed, `road ask
// WAY ADDRESS SIZE` reads a number, makes so many round trips, says "done", and so on.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "bench/aemessaging/Roads.h"

namespace {

void askOnDemand(const bench::Road& road) {
  const std::unique_ptr<bench::Client> client = bench::openClient(road);
  bench::sayReady();
  for (long count = 0; std::cin >> count;) {
    for (; count > 0; --count) client->roundTrip();
    std::cout << "done" << std::endl;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  try {
    const bench::Road road{argv[2], argv[3], std::stoul(argv[4])};
    if (std::string(argv[1]) == "serve") {
      bench::serve(road);
    } else {
      askOnDemand(road);
    }
  } catch (const bench::EndOfRoad&) {
    return EXIT_SUCCESS;
  } catch (const std::exception& failure) {
    std::cerr << "road: " << failure.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
