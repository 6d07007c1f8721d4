// Licence: MIT, see LICENSE.
#include "tests/integration/Hostile.h"

#include <AE/AEMach.h>
#include <servers/bootstrap.h>

#include <fstream>

#include "platform/host/Roots.h"
#include "platform/mach/NameSpace.h"
#include "tests/platform/appleevents/Messages.h"
#include "tests/support/TimeScale.h"

namespace tests {

namespace {

// What a process may take more for reasons of its own. The sanitizers and the emulator have more of
// them: they keep freed memory and translated code.
constexpr std::size_t kOwnReasons = (std::size_t{8} << 20) * (kTimeScale > 1 ? 16 : 1);
constexpr SInt32 kMinute = 60 * 60;  // in ticks

constexpr AEEventClass kStrangeClass = 'abcd';
constexpr AEEventID kStrangeID = 'efgh';

std::size_t countOf(const std::filesystem::path& folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

void Hostile::SetUp() {
  agent = startAgent({"-keepRunning"});
  socketFile = std::filesystem::path(platform::host::userNameSpacePath()) / "ports" / kAgentPort;
  ASSERT_EQ(KERN_SUCCESS, bootstrap_look_up(platform::mach::kBootstrapPort, kAgentPort, &port));
  expectService();
  descriptorsBefore = descriptors();
  memoryBefore = memoryAtMost();
}

// What was sent before a connection's end is read before it, and then the descriptors go.
void Hostile::TearDown() {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  do {
    expectService();
  } while (descriptors() != descriptorsBefore && !HasFailure() &&
           std::chrono::steady_clock::now() < deadline);
  EXPECT_EQ(descriptorsBefore, descriptors());
  EXPECT_LE(memoryAtMost(), memoryBefore + sent + kOwnReasons);
  EXPECT_EQ(agent->wait(std::chrono::milliseconds(0)), std::nullopt) << "the agent has ended";
  EXPECT_EQ(KERN_SUCCESS, mach_port_deallocate(mach_task_self(), port));
}

bool Hostile::send(Stranger& stranger, const std::string& bytes, const std::vector<int>& passed) {
  sent += bytes.size();
  return stranger.send(bytes, passed);
}

bool Hostile::sendInParts(Stranger& stranger, const std::string& body, std::uint32_t reply) {
  constexpr std::size_t kPart = 64 << 10;
  RawPacket packet = wholePacket(body, reply);
  for (std::size_t done = 0; done < body.size(); done += kPart) {
    packet.body = body.substr(done, kPart);
    if (!send(stranger, packet.bytes())) return false;
    packet.kind = kContinuingPacket;
  }
  return true;
}

void Hostile::expectService() {
  AEDesc target{};
  AppleEvent request{};
  AppleEvent answer{};
  SInt32 error = 0;
  ASSERT_EQ(noErr, AECreateDesc(typeMachPort, &port, sizeof port, &target));
  ASSERT_EQ(noErr, AECreateAppleEvent(kStrangeClass, kStrangeID, &target, kAutoGenerateReturnID,
                                      kAnyTransactionID, &request));
  EXPECT_EQ(noErr, AESendMessage(&request, &answer, kAEWaitReply, kMinute));
  AEGetParamPtr(&answer, keyErrorNumber, typeSInt32, nullptr, &error, sizeof error, nullptr);
  EXPECT_EQ(errAEEventNotHandled, error);
  for (AEDesc* desc : {&target, &request, &answer}) AEDisposeDesc(desc);
}

std::size_t Hostile::descriptors() const {
  return countOf("/proc/" + std::to_string(agent->pid()) + "/fd");
}

std::size_t Hostile::memoryAtMost() const {
  std::ifstream status("/proc/" + std::to_string(agent->pid()) + "/status");
  std::string word;
  std::size_t kilobytes = 0;
  while (status >> word && word != "VmHWM:") {
  }
  status >> kilobytes;
  return kilobytes << 10;
}

std::string Hostile::event(const std::vector<std::string>& parameters) {
  std::vector<std::string> attributes = travellingAttributes();
  attributes[0] = item("evcl", "type", "abcd");
  attributes[1] = item("evid", "type", "efgh");
  return eventBlock(attributes, parameters);
}

bool Hostile::isNotHandled(const RawAnswer& answer) {
  if (answer.kind != kFirstPacket) return false;
  return answer.body.find(item("errn", "long", word(static_cast<UInt32>(errAEEventNotHandled)))) !=
         std::string::npos;
}

}  // namespace tests
