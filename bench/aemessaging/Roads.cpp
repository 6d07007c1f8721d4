// Licence: MIT, see LICENSE.
#include "bench/aemessaging/Roads.h"

#include <iostream>
#include <stdexcept>

namespace bench {

namespace {

bool isSocket(const Road& road) { return road.way == "blocking" || road.way == "epoll"; }
bool isBus(const Road& road) { return road.way == "bus" || road.way == "daemon"; }

}  // namespace

std::unique_ptr<Client> openClient(const Road& road) {
  if (isSocket(road)) return openSocketClient(road);
  return isBus(road) ? openBusClient(road) : openEventClient(road);
}

void serve(const Road& road) {
  if (isSocket(road)) return serveSocket(road);
  return isBus(road) ? serveBus(road) : serveEvents(road);
}

std::vector<char> contentsOf(std::size_t size) {
  std::vector<char> contents(size);
  for (std::size_t i = 0; i < size; ++i) contents[i] = static_cast<char>(i * 7 + 1);
  return contents;
}

void sayReady() { std::cout << "ready" << std::endl; }

void require(bool condition, const char* complaint) {
  if (!condition) throw std::runtime_error(complaint);
}

}  // namespace bench
