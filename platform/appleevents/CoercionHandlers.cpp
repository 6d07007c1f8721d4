// Licence: MIT, see LICENSE.
#include "platform/appleevents/CoercionHandlers.h"

#include <atomic>

#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/PairTables.h"

namespace platform::appleevents {
namespace {

struct CoercionHandler {
  AECoercionHandlerUPP procedure;
  SInt32 refcon;
  bool takesDesc;
};

PairTables<CoercionHandler>& coercionHandlers() {
  static auto& instance = *new PairTables<CoercionHandler>;  // as the events' handlers
  return instance;
}

/// Spares those programs a lock that never install a handler.
std::atomic<bool> gAnyInstalled{false};

OSErr runDescHandler(const CoercionHandler& handler, const Source& from, const AEDesc* desc,
                     DescType toType, AEDesc* result) {
  const auto procedure = reinterpret_cast<AECoerceDescUPP>(handler.procedure);
  if (desc != nullptr) return procedure(desc, toType, handler.refcon, result);
  HeldDesc made;
  const OSErr status = makeDesc(from.type, from.data, made.out());
  return status == noErr ? procedure(&made.get(), toType, handler.refcon, result) : status;
}

OSErr runHandler(const CoercionHandler& handler, const Source& from, const AEDesc* desc,
                 DescType toType, AEDesc* result) {
  if (handler.takesDesc) return runDescHandler(handler, from, desc, toType, result);
  const auto procedure = reinterpret_cast<AECoercePtrUPP>(handler.procedure);
  return procedure(from.type, from.data.data(), static_cast<Size>(from.data.size()), toType,
                   handler.refcon, result);
}

}  // namespace

OSErr coerceByHandler(const Source& from, const AEDesc* desc, DescType toType, AEDesc* result) {
  *result = kNullDesc;
  if (!gAnyInstalled.load(std::memory_order_acquire)) return errAECoercionFail;
  for (const CoercionHandler& handler : coercionHandlers().matching(from.type, toType)) {
    HeldDesc made;
    const OSErr status = runHandler(handler, from, desc, toType, made.out());
    if (status == errAECoercionFail) continue;
    if (status == noErr) *result = made.take();
    return status;
  }
  return errAECoercionFail;
}

}  // namespace platform::appleevents

using namespace platform::appleevents;

OSErr AEInstallCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                               SInt32 refcon, Boolean fromTypeIsDesc, Boolean isSystemHandler) {
  if (handler == nullptr) return paramErr;
  const OSErr status = coercionHandlers().install(
      fromType, toType, {handler, refcon, fromTypeIsDesc != 0}, isSystemHandler);
  if (status == noErr) gAnyInstalled.store(true, std::memory_order_release);
  return status;
}

OSErr AERemoveCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                              Boolean isSystemHandler) {
  return coercionHandlers().remove(fromType, toType, isSystemHandler,
                                   [=](const CoercionHandler& installed) {
                                     return handler == nullptr || handler == installed.procedure;
                                   });
}

OSErr AEGetCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP* handler,
                           SInt32* refcon, Boolean* fromTypeIsDesc, Boolean isSystemHandler) {
  if (handler == nullptr || refcon == nullptr || fromTypeIsDesc == nullptr) return paramErr;
  const auto installed = coercionHandlers().at(fromType, toType, isSystemHandler);
  if (!installed) return errAEHandlerNotFound;
  *handler = installed->procedure;
  *refcon = installed->refcon;
  *fromTypeIsDesc = installed->takesDesc;
  return noErr;
}

AECoercePtrUPP NewAECoercePtrUPP(AECoercePtrProcPtr handler) { return handler; }
void DisposeAECoercePtrUPP(AECoercePtrUPP) {}
AECoerceDescUPP NewAECoerceDescUPP(AECoerceDescProcPtr handler) { return handler; }
void DisposeAECoerceDescUPP(AECoerceDescUPP) {}
