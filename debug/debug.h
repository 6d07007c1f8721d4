// Licence: MIT, see LICENSE.
/// Diagnostics.
#ifndef QUORVANT_DEBUG_DEBUG_H
#define QUORVANT_DEBUG_DEBUG_H

#include <quorvant/debug/QRLAppErrorUtils.h>

#endif
