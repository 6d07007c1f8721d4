// Licence: MIT, see LICENSE.
// Bodies of messages for tests: written by hand, so that the form is checked from outside, and
// handed to the decoder as a call-back of a port would get them.
#ifndef TESTS_PLATFORM_APPLEEVENTS_MESSAGES_H
#define TESTS_PLATFORM_APPLEEVENTS_MESSAGES_H

#include <AE/AEMach.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/mach/MessageBlock.h"

namespace tests {

/// One big-endian word.
inline std::string word(UInt32 value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

/// An item: keyword and type as four characters each, and data.
inline std::string item(std::string_view keyword, std::string_view type, std::string_view data) {
  std::string bytes;
  bytes += keyword;
  bytes += type;
  bytes += word(static_cast<UInt32>(data.size()));
  bytes += data;
  bytes.append((4 - data.size() % 4) % 4, '\0');
  return bytes;
}

/// A list's or record's block.
inline std::string block(const std::vector<std::string>& items) {
  std::string bytes = word(static_cast<UInt32>(items.size()));
  for (const std::string& one : items) bytes += one;
  return bytes;
}

/// An event's block.
inline std::string eventBlock(const std::vector<std::string>& attributes,
                              const std::vector<std::string>& parameters) {
  std::string first;
  for (const std::string& attribute : attributes) first += attribute;
  std::string bytes = word(0x61650001);
  bytes += word(static_cast<UInt32>(attributes.size()));
  bytes += word(static_cast<UInt32>(first.size()));
  bytes += word(static_cast<UInt32>(parameters.size()));
  bytes += first;
  for (const std::string& parameter : parameters) bytes += parameter;
  return bytes;
}

/// The attributes of an event 'QrlP' 'Mcam', return ID 7, transaction 9, that wants a reply.
inline std::vector<std::string> travellingAttributes() {
  const std::string none(8, '\0');
  return {item("evcl", "type", "QrlP"),
          item("evid", "type", "Mcam"),
          item("rtid", "shor", std::string("\0\x07", 2)),
          item("tran", "long", word(9)),
          item("addr", "psn ", word(0) + word(5)),
          item("repq", "bool", "\x01"),
          item("timo", "long", word(3600)),
          item("inte", "long", word(0x30)),
          item("esrc", "shor", std::string("\0\x03", 2)),
          item("from", "psn ", word(0) + word(6))};
}

/// A received message with this body.
inline platform::mach::Message makeMessage(std::string_view body,
                                           mach_port_name_t receiver = MACH_PORT_NULL,
                                           mach_port_name_t reply = MACH_PORT_NULL) {
  platform::mach::Message message;
  message.id = platform::mach::kAppleEventMessageID;
  message.receiver = receiver;
  message.reply = reply;
  message.body.memory.reset(static_cast<std::byte*>(std::malloc(body.size() + 1)));
  std::memcpy(message.body.memory.get(), body.data(), body.size());
  message.body.size = body.size();
  return message;
}

/// Decodes a body that arrived at no port and can not be answered.
inline OSStatus decode(std::string_view body, AppleEvent* event, AppleEvent* reply = nullptr) {
  platform::mach::MessageBlock message = platform::mach::makeBlock(makeMessage(body));
  const OSStatus status = AEDecodeMessage(&message.header, event, reply);
  platform::mach::destroyBlock(message);
  return status;
}

}  // namespace tests

#endif
