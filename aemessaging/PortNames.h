// Licence: MIT, see LICENSE.
/// The names under which ports are registered with the bootstrap server, and its errors.
#ifndef QUORVANT_AEMESSAGING_PORTNAMES_H
#define QUORVANT_AEMESSAGING_PORTNAMES_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Composes BASE[.SUFFIX][.SERIALNUMBER][.INDEX]. A null or empty suffix and a negative index add
/// nothing. The serial number is this process's own: sixteen hexadecimal digits, the LOW word
/// first, which every party to a conversation must keep to.
///
/// `dst` has room for `dstSize` bytes, the terminating zero included, may overlap `base` and
/// `suffix`, and is untouched on failure. paramErr for a null or empty base, a null `dst` or a name
/// that does not fit; else the Process Manager's error if the serial number cannot be had;
/// memFullErr.
QRL_EXPORT SInt32 QRLAEMakePortName(char* dst, UInt32 dstSize, const char* base,
                                    bool addProcessSerialNumber, const char* suffix, int index);

/// Whether an error is the bootstrap server's (1100 to 1105).
QRL_EXPORT bool IsBootstrapError(SInt32 err);

#endif
