// Licence: MIT, see LICENSE.
#include "tools/qrl/Errors.h"

#include <CarbonCore/MacErrors.h>
#include <IOKit/IOReturn.h>
#include <mach/message.h>
#include <servers/bootstrap.h>

#include <algorithm>
#include <iterator>

namespace qrl {
namespace {

struct Name {
  OSStatus code;
  std::string_view name;
};

constexpr Name kNames[] = {
    {noErr, "noErr"},
    {dskFulErr, "dskFulErr"},
    {nsvErr, "nsvErr"},
    {ioErr, "ioErr"},
    {bdNamErr, "bdNamErr"},
    {eofErr, "eofErr"},
    {tmfoErr, "tmfoErr"},
    {fnfErr, "fnfErr"},
    {dupFNErr, "dupFNErr"},
    {paramErr, "paramErr"},
    {permErr, "permErr"},
    {wrPermErr, "wrPermErr"},
    {portInUse, "portInUse"},
    {memFullErr, "memFullErr"},
    {nilHandleErr, "nilHandleErr"},
    {memWZErr, "memWZErr"},
    {dirNFErr, "dirNFErr"},
    {writingPastEnd, "writingPastEnd"},
    {resNotFound, "resNotFound"},
    {resFNotFound, "resFNotFound"},
    {addResFailed, "addResFailed"},
    {rmvResFailed, "rmvResFailed"},
    {resAttrErr, "resAttrErr"},
    {mapReadErr, "mapReadErr"},
    {nmTypErr, "nmTypErr"},
    {procNotFound, "procNotFound"},
    {memFragErr, "memFragErr"},
    {appModeErr, "appModeErr"},
    {connectionInvalid, "connectionInvalid"},
    {noUserInteractionAllowed, "noUserInteractionAllowed"},
    {errAECoercionFail, "errAECoercionFail"},
    {errAEDescNotFound, "errAEDescNotFound"},
    {errAECorruptData, "errAECorruptData"},
    {errAEWrongDataType, "errAEWrongDataType"},
    {errAENotAEDesc, "errAENotAEDesc"},
    {errAEBadListItem, "errAEBadListItem"},
    {errAENewerVersion, "errAENewerVersion"},
    {errAENotAppleEvent, "errAENotAppleEvent"},
    {errAEEventNotHandled, "errAEEventNotHandled"},
    {errAEReplyNotValid, "errAEReplyNotValid"},
    {errAEUnknownSendMode, "errAEUnknownSendMode"},
    {errAEWaitCanceled, "errAEWaitCanceled"},
    {errAETimeout, "errAETimeout"},
    {errAENoUserInteraction, "errAENoUserInteraction"},
    {errAENotASpecialFunction, "errAENotASpecialFunction"},
    {errAEParamMissed, "errAEParamMissed"},
    {errAEUnknownAddressType, "errAEUnknownAddressType"},
    {errAEHandlerNotFound, "errAEHandlerNotFound"},
    {errAEReplyNotArrived, "errAEReplyNotArrived"},
    {errAEIllegalIndex, "errAEIllegalIndex"},
    {errAEImpossibleRange, "errAEImpossibleRange"},
    {errAEWrongNumberArgs, "errAEWrongNumberArgs"},
    {errAEBufferTooSmall, "errAEBufferTooSmall"},
    {errFSBadFSRef, "errFSBadFSRef"},
    {errFSBadInfoBitmap, "errFSBadInfoBitmap"},
    {errFSRefsDifferent, "errFSRefsDifferent"},
    {pathTooLongErr, "pathTooLongErr"},
    {invalidComponentID, "invalidComponentID"},
    {afpAccessDenied, "afpAccessDenied"},
    {errAEEventFailed, "errAEEventFailed"},
    {eventNotHandledErr, "eventNotHandledErr"},
    {eventLoopTimedOutErr, "eventLoopTimedOutErr"},
    {eventLoopQuitErr, "eventLoopQuitErr"},
    {BOOTSTRAP_NOT_PRIVILEGED, "BOOTSTRAP_NOT_PRIVILEGED"},
    {BOOTSTRAP_NAME_IN_USE, "BOOTSTRAP_NAME_IN_USE"},
    {BOOTSTRAP_UNKNOWN_SERVICE, "BOOTSTRAP_UNKNOWN_SERVICE"},
    {BOOTSTRAP_SERVICE_ACTIVE, "BOOTSTRAP_SERVICE_ACTIVE"},
    {BOOTSTRAP_BAD_COUNT, "BOOTSTRAP_BAD_COUNT"},
    {BOOTSTRAP_NO_MEMORY, "BOOTSTRAP_NO_MEMORY"},
    {MACH_SEND_INVALID_DEST, "MACH_SEND_INVALID_DEST"},
    {MACH_SEND_TIMED_OUT, "MACH_SEND_TIMED_OUT"},
    {MACH_SEND_NO_BUFFER, "MACH_SEND_NO_BUFFER"},
    {MACH_SEND_TOO_LARGE, "MACH_SEND_TOO_LARGE"},
    {kIOReturnError, "kIOReturnError"},
    {kIOReturnNoMemory, "kIOReturnNoMemory"},
    {kIOReturnNoResources, "kIOReturnNoResources"},
};

}  // namespace

std::string_view nameOfError(OSStatus code) {
  const Name* name = std::ranges::find(kNames, code, &Name::code);
  return name == std::end(kNames) ? std::string_view() : name->name;
}

std::string describeError(OSStatus code) {
  std::string_view name = nameOfError(code);
  std::string text = std::to_string(code);
  return name.empty() ? text : text + " (" + std::string(name) + ')';
}

}  // namespace qrl
