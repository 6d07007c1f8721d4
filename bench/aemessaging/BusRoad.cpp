// Licence: MIT, see LICENSE.
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "bench/aemessaging/Roads.h"

namespace bench {

namespace {

constexpr char kService[] = "com.quorvant.Bench";
constexpr char kPath[] = "/com/quorvant/Bench";
constexpr std::uint64_t kForever = ~std::uint64_t{0};

void check(int result, const char* complaint) { require(result >= 0, complaint); }

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

Bus makeBus() {
  sd_bus* made = nullptr;
  check(sd_bus_new(&made), "no bus can be made");
  return Bus(made);
}

Bus connectTo(const Road& road) {
  Bus bus = makeBus();
  check(sd_bus_set_address(bus.get(), road.address.c_str()), "a bad address");
  if (road.way == "daemon") check(sd_bus_set_bus_client(bus.get(), 1), "no bus client");
  check(sd_bus_start(bus.get()), "the bus does not answer");
  return bus;
}

class BusClient final : public Client {
 public:
  explicit BusClient(const Road& road)
      : bus(connectTo(road)),
        destination(road.way == "daemon" ? kService : nullptr),
        request(contentsOf(road.size)) {}

  void roundTrip() override {
    sd_bus_message* call = nullptr;
    sd_bus_message* reply = nullptr;
    check(sd_bus_message_new_method_call(bus.get(), &call, destination, kPath, kService, "Ask"),
          "no message");
    check(sd_bus_message_append_array(call, 'y', request.data(), request.size()), "no room");
    const int result = sd_bus_call(bus.get(), call, kForever, nullptr, &reply);
    sd_bus_message_unref(call);
    check(result, "no answer");
    const void* bytes = nullptr;
    std::size_t size = 0;
    const int read = sd_bus_message_read_array(reply, 'y', &bytes, &size);
    sd_bus_message_unref(reply);
    check(read, "a bad answer");
    require(size == request.size(), "the answer is not the request");
  }

 private:
  Bus bus;
  const char* destination;
  std::vector<char> request;
};

int answer(sd_bus_message* call, void*, sd_bus_error*) {
  const void* bytes = nullptr;
  std::size_t size = 0;
  int result = sd_bus_message_read_array(call, 'y', &bytes, &size);
  if (result < 0) return result;
  sd_bus_message* reply = nullptr;
  result = sd_bus_message_new_method_return(call, &reply);
  if (result < 0) return result;
  result = sd_bus_message_append_array(reply, 'y', bytes, size);
  if (result >= 0) result = sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return result < 0 ? result : 1;
}

int acceptClient(const std::string& busAddress) {
  const std::string path = busAddress.substr(busAddress.find('=') + 1);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  require(path.size() < sizeof address.sun_path, "the socket's path is too long");
  path.copy(address.sun_path, path.size());
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  require(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
              listen(listener, 1) == 0,
          "the socket cannot listen");
  sayReady();
  const int accepted = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  require(accepted >= 0, "no client came");
  return accepted;
}

Bus serverOfClient(const std::string& address) {
  Bus bus = makeBus();
  const int client = acceptClient(address);
  sd_id128_t id;
  check(sd_id128_randomize(&id), "no identity");
  check(sd_bus_set_fd(bus.get(), client, client), "no connection");
  check(sd_bus_set_server(bus.get(), 1, id), "no server");
  check(sd_bus_start(bus.get()), "the client does not answer");
  return bus;
}

}  // namespace

std::unique_ptr<Client> openBusClient(const Road& road) {
  return std::make_unique<BusClient>(road);
}

void serveBus(const Road& road) {
  const bool isDirect = road.way == "bus";
  const Bus bus = isDirect ? serverOfClient(road.address) : connectTo(road);
  check(sd_bus_add_object(bus.get(), nullptr, kPath, answer, nullptr), "no object");
  if (!isDirect) {
    check(sd_bus_request_name(bus.get(), kService, 0), "no name");
    sayReady();
  }
  for (;;) {
    const int done = sd_bus_process(bus.get(), nullptr);
    if (done < 0) throw EndOfRoad();
    if (done == 0) check(sd_bus_wait(bus.get(), kForever), "waiting failed");
  }
}

}  // namespace bench
