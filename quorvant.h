// Licence: MIT, see LICENSE.
/// The whole of Quorvant's library.
#ifndef QUORVANT_QUORVANT_H
#define QUORVANT_QUORVANT_H

#include <quorvant/aemessaging/aemessaging.h>
#include <quorvant/debug/debug.h>
#include <quorvant/util/util.h>

#endif
