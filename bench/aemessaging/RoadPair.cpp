// Licence: MIT, see LICENSE.
#include "bench/aemessaging/RoadPair.h"

#include <fstream>

#include "bench/support/Processors.h"
#include "tests/support/PrivateRoot.h"

namespace bench {

namespace {

using tests::ChildProcess;

const std::filesystem::path& root() {
  static const tests::PrivateRoot own;
  return own.path();
}

/// The process runs on another processor while the object lives.
class Elsewhere final {
 public:
  explicit Elsewhere(Place place) : isAway(place == Place::kApart) {
    if (!isAway) return;
    require(processors().size() > 1, "there is one processor only");
    require(stayOn(processors()[processors().size() - 2]), "a processor cannot be used");
  }
  ~Elsewhere() {
    if (isAway) stayOn(processors().back());
  }
  Elsewhere(const Elsewhere&) = delete;
  Elsewhere& operator=(const Elsewhere&) = delete;

 private:
  const bool isAway;
};

std::unique_ptr<ChildProcess> start(const ChildProcess::Command& command) {
  auto started = std::make_unique<ChildProcess>(command);
  require(started->readLine().has_value(), "a process did not come up");
  return started;
}

std::unique_ptr<ChildProcess> startRoad(const char* role, const Road& road) {
  return start({QRL_ROAD_PROGRAM, role, road.way, road.address, std::to_string(road.size)});
}

std::string addressFor(const std::string& way) {
  static int lastNumber = 0;
  const std::string name = "road." + std::to_string(++lastNumber);
  const std::string path = (root() / name).string();
  if (way == "bus" || way == "daemon") return "unix:path=" + path;
  return way == "blocking" || way == "epoll" ? path : "com.quorvant.bench." + name;
}

std::string busConfiguration(const std::string& address) {
  return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
         "  \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
         "<busconfig><type>custom</type><listen>" +
         address +
         "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
         "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
         "<allow own=\"*\"/></policy></busconfig>\n";
}

}  // namespace

RoadPair::RoadPair(const std::string& way, std::size_t size, Place place)
    : where{way, addressFor(way), size} {
  const Elsewhere elsewhere(place);
  if (way == "daemon") startBus();
  server = startRoad("serve", where);
}

void RoadPair::startBus() {
  const std::filesystem::path file = root() / "bus.conf";
  std::ofstream(file) << busConfiguration(where.address);
  // It complains first where it may not raise a limit that does not matter here.
  tests::ChildOptions options;
  options.mergeErrors = true;
  const ChildProcess::Command command = {"dbus-daemon", "--config-file=" + file.string(),
                                         "--nofork", "--print-address"};
  bus = std::make_unique<ChildProcess>(command, options);
  std::optional<std::string> line;
  do {
    line = bus->readLine();
  } while (line && !line->starts_with("unix:"));
  require(line.has_value(), "the message bus did not come up");
}

std::unique_ptr<ChildProcess> RoadPair::startClient() const { return startRoad("ask", where); }

}  // namespace bench
