// Licence: MIT, see LICENSE.
/// Types and utilities that the other folders share.
#ifndef QUORVANT_UTIL_UTIL_H
#define QUORVANT_UTIL_UTIL_H

#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

#endif
