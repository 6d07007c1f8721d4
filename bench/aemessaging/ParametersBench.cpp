// Licence: MIT, see LICENSE.
// What do an event's parameters cost? Ten of them, as a request of the device monitor has at most,
// are put into an event and read back by their keywords; the same values are appended to a D-Bus
// message, which is sealed as sending does, and read back in their order; and they are copied as a
// plain structure. Then the number of parameters grows to ten thousand: the time for each must not.
#include <benchmark/benchmark.h>
#include <quorvant/aemessaging/GetAEParams.h>
#include <quorvant/aemessaging/PutAEParams.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "bench/support/Comparison.h"

namespace {

using bench::Comparison;

/// Ten parameters.
struct Content {
  SInt32 device = 5;
  SInt32 location = 0x14100000;
  SInt32 mask = 0x1000;
  SInt16 vendor = 0x046D;
  SInt16 product = 0x0825;
  SInt64 moment = 123456789012;
  double gain = 0.75;
  bool isOn = true;
  char key[16] = "Exposure Mode";
  char serial[40] = "0A5C-21E8-000000000042";

  friend bool operator==(const Content& left, const Content& right) {
    return left.device == right.device && left.location == right.location &&
           left.mask == right.mask && left.vendor == right.vendor &&
           left.product == right.product && left.moment == right.moment &&
           left.gain == right.gain && left.isOn == right.isOn &&
           std::strcmp(left.key, right.key) == 0 && std::strcmp(left.serial, right.serial) == 0;
  }
};

const Content kEmpty = {0, 0, 0, 0, 0, 0, 0, false, "", ""};

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

/// An event, disposed of with the object.
class Event final {
 public:
  Event() {
    AEInitializeDesc(&desc);
    require(AECreateAppleEvent('CmoN', 'StPf', nullptr, -1, 0, &desc) == noErr, "no event");
  }
  ~Event() { AEDisposeDesc(&desc); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  AppleEvent desc;
};

OSErr put(AppleEvent& event, Content& content) {
  OSErr status = PutAELong(event, 'DvI#', &content.device);
  status |= PutAELong(event, 'SLoc', &content.location);
  status |= PutAELong(event, 'NMsk', &content.mask);
  status |= PutAEShort(event, 'SVnd', &content.vendor);
  status |= PutAEShort(event, 'SPrd', &content.product);
  status |= PutAELongLong(event, 'Time', &content.moment);
  status |= PutAEDouble(event, 'Gain', &content.gain);
  status |= PutAEBoolean(event, 'IsOn', &content.isOn);
  status |= PutAECString(event, 'PKey', content.key);
  status |= PutAECString(event, 'SSer', content.serial);
  return status;
}

OSErr get(const AppleEvent& event, Content& content) {
  OSErr status = GetAELong(event, 'DvI#', &content.device);
  status |= GetAELong(event, 'SLoc', &content.location);
  status |= GetAELong(event, 'NMsk', &content.mask);
  status |= GetAEShort(event, 'SVnd', &content.vendor);
  status |= GetAEShort(event, 'SPrd', &content.product);
  status |= GetAELongLong(event, 'Time', &content.moment);
  status |= AEGetParamPtr(&event, 'Gain', typeIEEE64BitFloatingPoint, nullptr, &content.gain,
                          sizeof content.gain, nullptr);
  status |= GetAEBoolean(event, 'IsOn', &content.isOn);
  status |= GetAECString(event, 'PKey', content.key, sizeof content.key);
  status |= GetAECString(event, 'SSer', content.serial, sizeof content.serial);
  return status;
}

void parametersAsEvent(benchmark::State& state) {
  Content content;
  Content read = kEmpty;
  OSErr status = noErr;
  for (auto _ : state) {
    Event event;
    status |= put(event.desc, content);
    status |= get(event.desc, read);
    benchmark::DoNotOptimize(read);
  }
  if (status != noErr || !(read == content)) state.SkipWithError("what was read is wrong");
}

/// A bus that is connected to nobody who answers: messages can be made for it.
class IdleBus final {
 public:
  IdleBus() {
    std::array<int, 2> ends;
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0, "no sockets");
    other = ends[1];
    require(sd_bus_new(&bus) >= 0, "no bus");
    require(sd_bus_set_fd(bus, ends[0], ends[0]) >= 0, "no connection");
    require(sd_bus_start(bus) >= 0, "the bus does not start");
  }
  ~IdleBus() {
    sd_bus_close(bus);
    sd_bus_unref(bus);
    close(other);
  }
  IdleBus(const IdleBus&) = delete;
  IdleBus& operator=(const IdleBus&) = delete;

  sd_bus_message* makeCall() const {
    sd_bus_message* made = nullptr;
    require(sd_bus_message_new_method_call(bus, &made, nullptr, "/com/example/Server",
                                           "com.example.Server", "Set") >= 0,
            "no message");
    return made;
  }

 private:
  sd_bus* bus = nullptr;
  int other = -1;
};

int append(sd_bus_message* message, const Content& content) {
  const int isOn = content.isOn;
  int status = sd_bus_message_append_basic(message, 'i', &content.device);
  status |= sd_bus_message_append_basic(message, 'i', &content.location);
  status |= sd_bus_message_append_basic(message, 'i', &content.mask);
  status |= sd_bus_message_append_basic(message, 'n', &content.vendor);
  status |= sd_bus_message_append_basic(message, 'n', &content.product);
  status |= sd_bus_message_append_basic(message, 'x', &content.moment);
  status |= sd_bus_message_append_basic(message, 'd', &content.gain);
  status |= sd_bus_message_append_basic(message, 'b', &isOn);
  status |= sd_bus_message_append_basic(message, 's', content.key);
  status |= sd_bus_message_append_basic(message, 's', content.serial);
  return status;
}

int readText(sd_bus_message* message, char* buffer, std::size_t size) {
  const char* text = nullptr;
  const int status = sd_bus_message_read_basic(message, 's', &text);
  if (status > 0) std::memcpy(buffer, text, std::min(std::strlen(text) + 1, size));
  return status;
}

int read(sd_bus_message* message, Content& content) {
  int isOn = 0;
  int status = sd_bus_message_read_basic(message, 'i', &content.device);
  status |= sd_bus_message_read_basic(message, 'i', &content.location);
  status |= sd_bus_message_read_basic(message, 'i', &content.mask);
  status |= sd_bus_message_read_basic(message, 'n', &content.vendor);
  status |= sd_bus_message_read_basic(message, 'n', &content.product);
  status |= sd_bus_message_read_basic(message, 'x', &content.moment);
  status |= sd_bus_message_read_basic(message, 'd', &content.gain);
  status |= sd_bus_message_read_basic(message, 'b', &isOn);
  content.isOn = isOn != 0;
  status |= readText(message, content.key, sizeof content.key);
  status |= readText(message, content.serial, sizeof content.serial);
  return status;
}

void parametersAsBusMessage(benchmark::State& state) {
  const IdleBus bus;
  const Content content;
  Content found = kEmpty;
  int status = 0;
  for (auto _ : state) {
    sd_bus_message* message = bus.makeCall();
    status |= append(message, content);
    status |= sd_bus_message_seal(message, 1, 0);
    status |= read(message, found);
    sd_bus_message_unref(message);
    benchmark::DoNotOptimize(found);
  }
  if (status < 0 || !(found == content)) state.SkipWithError("what was read is wrong");
}

void parametersAsStructure(benchmark::State& state) {
  Content content;
  Content found;
  for (auto _ : state) {
    benchmark::DoNotOptimize(content);
    std::memcpy(&found, &content, sizeof found);
    benchmark::DoNotOptimize(found);
    benchmark::ClobberMemory();
  }
}

BENCHMARK(parametersAsEvent);
BENCHMARK(parametersAsBusMessage);
BENCHMARK(parametersAsStructure);

const Comparison kToBus("ten parameters, event : D-Bus message", "parametersAsEvent",
                        "parametersAsBusMessage", bench::speedAtLeast(3));
const Comparison kToStructure("ten parameters, event : structure", "parametersAsEvent",
                              "parametersAsStructure", bench::onlyShown());

/// So many numbers, each under a keyword of its own, put and read back.
void manyParameters(benchmark::State& state) {
  const auto count = static_cast<SInt32>(state.range(0));
  OSErr status = noErr;
  SInt64 sum = 0;
  for (auto _ : state) {
    Event event;
    for (SInt32 i = 1; i <= count; ++i) {
      status |= PutAELong(event.desc, static_cast<AEKeyword>(i), &i);
    }
    sum = 0;
    for (SInt32 i = 1; i <= count; ++i) {
      SInt32 value = 0;
      status |= GetAELong(event.desc, static_cast<AEKeyword>(i), &value);
      sum += value;
    }
  }
  if (status != noErr || sum != SInt64{count} * (count + 1) / 2) {
    state.SkipWithError("what was read is wrong");
  }
  state.counters["eachParameter"] =
      benchmark::Counter(static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

BENCHMARK(manyParameters)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

// A search from the beginning would make each ten times as dear with every row. What is left is
// that more memory is touched for the first time.
const Comparison kHundred("each of 100 parameters : of 10", "manyParameters/100",
                          "manyParameters/10", bench::counterAtMost("eachParameter", 2));
const Comparison kThousand("each of 1000 parameters : of 100", "manyParameters/1000",
                           "manyParameters/100", bench::counterAtMost("eachParameter", 2));
const Comparison kTenThousand("each of 10000 parameters : of 100", "manyParameters/10000",
                              "manyParameters/100", bench::counterAtMost("eachParameter", 3));

}  // namespace
