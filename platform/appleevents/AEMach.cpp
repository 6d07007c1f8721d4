// Licence: MIT, see LICENSE.
#include <AE/AEMach.h>

#include <utility>

#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Sending.h"
#include "platform/appleevents/Storage.h"
#include "platform/mach/MessageBlock.h"

using namespace platform::appleevents;

OSStatus AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                       SInt32 timeOutInTicks) {
  const OSErr status = checkSending(event, reply, sendMode, timeOutInTicks);
  if (status != noErr) return status;
  return sendMessage(*event, reply, {sendMode, timeOutInTicks});
}

OSStatus AEDecodeMessage(mach_msg_header_t* message, AppleEvent* event, AppleEvent* reply) {
  if (event != nullptr) *event = kNullDesc;
  if (reply != nullptr) *reply = kNullDesc;
  if (message == nullptr || event == nullptr) return paramErr;
  std::optional<platform::mach::Message> taken = platform::mach::takeFromBlock(message);
  if (!taken) return errAECorruptData;
  return decodeMessage(std::move(*taken), event, reply);
}

OSStatus AEProcessMessage(mach_msg_header_t* message) {
  if (message == nullptr) return paramErr;
  std::optional<platform::mach::Message> taken = platform::mach::takeFromBlock(message);
  if (!taken) return errAECorruptData;
  return processMessage(std::move(*taken));
}
