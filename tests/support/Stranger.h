// Licence: MIT, see LICENSE.
// A client with no manners: it connects to a port's socket and speaks bytes, without a line of the
// system's own code, so that it says what no honest client would.
#ifndef TESTS_SUPPORT_STRANGER_H
#define TESTS_SUPPORT_STRANGER_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace tests {

/// A packet by its fields; those that an honest packet always has are filled in.
struct RawPacket {
  std::uint32_t magic = 0x51724d31;
  std::uint8_t kind = 1;
  std::uint8_t flags = 0;
  std::uint16_t reserved = 0;
  std::uint32_t destination = 0;
  std::uint32_t reply = 0;
  std::uint32_t id = 0x61657674;
  std::uint32_t total = 0;
  std::string body{};

  std::string bytes() const;
};

inline constexpr std::uint8_t kFirstPacket = 1;
inline constexpr std::uint8_t kContinuingPacket = 2;
inline constexpr std::uint8_t kAbandonment = 3;
inline constexpr std::uint8_t kInMemoryFile = 1;

/// A first packet that has the whole of its body.
RawPacket wholePacket(const std::string& body, std::uint32_t reply = 0);

/// What a packet tells that came back.
struct RawAnswer {
  std::uint8_t kind = 0;
  std::uint32_t destination = 0;
  std::string body;
};

/// One thread.
class Stranger final {
 public:
  /// Connects to a socket file; throws std::runtime_error if nobody listens there.
  explicit Stranger(const std::filesystem::path& socketFile);
  Stranger(Stranger&& other) noexcept;
  ~Stranger();
  Stranger(const Stranger&) = delete;
  Stranger& operator=(const Stranger&) = delete;
  Stranger& operator=(Stranger&&) = delete;

  int number() const { return connection; }

  /// Sends one packet, with descriptors, waiting for room for a while. False once it is cut off.
  bool send(const std::string& bytes, const std::vector<int>& passed = {});
  /// Sends it if there is room now.
  bool sendNow(const std::string& bytes, const std::vector<int>& passed = {});
  /// The next packet; nothing when it is cut off first.
  std::optional<RawAnswer> receive();
  /// Reads until it is cut off: whether that happened.
  bool isCutOff(std::chrono::milliseconds patience = kPatience);

 private:
  int connection = -1;
};

}  // namespace tests

#endif
