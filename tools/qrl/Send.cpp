// Licence: MIT, see LICENSE.
#include <quorvant/aemessaging/QRLAppleEvent.h>
#include <quorvant/aemessaging/QRLPortAppleEvent.h>
#include <quorvant/aemessaging/QRLPortDestinationAddress.h>
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>
#include <servers/bootstrap.h>

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>

#include "tools/qrl/Building.h"
#include "tools/qrl/Commands.h"
#include "tools/qrl/Errors.h"
#include "tools/qrl/Output.h"
#include "tools/qrl/Reply.h"

namespace qrl {
namespace {

// What a send that did not come to an answer means to the person.
ExitStatus failed(const std::string& server, SInt32 error) {
  switch (error) {
    case BOOTSTRAP_UNKNOWN_SERVICE:
    case procNotFound:
      return fail(kNoSuchName, "there is no " + server);
    case errAETimeout:
      return fail(kTimedOut, server + " did not answer in time");
    case connectionInvalid:
      return fail(kServerGone, server + " went away before it answered");
    case BOOTSTRAP_NOT_PRIVILEGED:
      return kHostFailed;  // the refusal has its own line
    default:
      return fail(kHostFailed, server + " cannot be reached: " + describeError(error));
  }
}

SInt32 ticksOf(Seconds span) { return static_cast<SInt32>(std::ceil(span.count() * 60)); }

// Makes the event with its parameters; a parameter that cannot be put is the person's mistake.
OSErr build(QRLAppleEventWrapper& event, QRLAppleEventDestinationAddress& address,
            const SendCommand& command) {
  event.eventClass = command.eventClass;
  event.eventID = command.eventID;
  event.replyMode = command.wantsReply ? kAEWaitReply : kAENoReply;
  event.returnID = kAutoGenerateReturnID;
  event.transactionID = kAnyTransactionID;
  event.destination = &address;
  if (OSErr error = event.createEvent()) return error;
  return putParameters(event.event, command.parameters);
}

void printReply(const QRLAppleEventWrapper& event, SInt32 result, bool json) {
  if (json) {
    nlohmann::ordered_json answer{{"parameters", jsonOf(event.reply)}};
    if (result != noErr) answer["error"] = {{"code", result}, {"name", nameOfError(result)}};
    std::cout << answer.dump(2) << '\n';
    return;
  }
  AEKeyword leftOut = result == noErr ? 0 : AEKeyword{keyErrorNumber};
  for (const std::string& line : linesOf(event.reply, leftOut)) std::cout << line << '\n';
}

ExitStatus exchange(QRLAppleEventWrapper& event, QRLAppleEventDestinationAddress& address,
                    const SendCommand& command, const std::string& server) {
  SInt32 result = address.initialize();
  if (result == noErr) result = build(event, address, command);
  if (result == noErr) {
    result = event.sendEvent(kAECanInteract, ticksOf(command.timeout), kAENormalPriority);
  }
  event.finalizeEvent();
  if (result != noErr && !event.replyHadError) return failed(server, result);
  if (event.replyReceived) printReply(event, result, command.json);
  if (result == noErr) return kDone;
  std::cout.flush();
  std::cerr << "errn " << describeError(result) << '\n';
  return kServerError;
}

}  // namespace

ExitStatus run(const SendCommand& command) {
  if (command.process) {
    QRLProcessDestinationAddress address;
    address.psn = *command.process;
    QRLAppleEvent event;
    return exchange(event, address, command, "process " + formatSerialNumber(*command.process));
  }
  QRLPortDestinationAddress address;
  command.port.copy(address.name, sizeof address.name - 1);
  QRLPortAppleEvent event;
  return exchange(event, address, command, "port " + command.port);
}

}  // namespace qrl
