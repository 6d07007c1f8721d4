// Licence: MIT, see LICENSE.
/// Apple events between processes, over named Mach ports.
#ifndef QUORVANT_AEMESSAGING_AEMESSAGING_H
#define QUORVANT_AEMESSAGING_AEMESSAGING_H

#include <quorvant/aemessaging/AETypeCoercion.h>
#include <quorvant/aemessaging/CopyAEParams.h>
#include <quorvant/aemessaging/GetAEParams.h>
#include <quorvant/aemessaging/PortNames.h>
#include <quorvant/aemessaging/PutAEParams.h>
#include <quorvant/aemessaging/QRLAppleEvent.h>
#include <quorvant/aemessaging/QRLAppleEventDestinationAddress.h>
#include <quorvant/aemessaging/QRLAppleEventReturnAddress.h>
#include <quorvant/aemessaging/QRLAppleEventWrapper.h>
#include <quorvant/aemessaging/QRLPortAEMachPortListener.h>
#include <quorvant/aemessaging/QRLPortAppleEvent.h>
#include <quorvant/aemessaging/QRLPortDestinationAddress.h>
#include <quorvant/aemessaging/QRLProcessDestinationAddress.h>

#endif
