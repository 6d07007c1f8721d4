// Licence: MIT, see LICENSE.
/// Marks what the shared library lets its users see; everything else stays inside.
#ifndef QUORVANT_UTIL_QRLEXPORT_H
#define QUORVANT_UTIL_QRLEXPORT_H

#define QRL_EXPORT __attribute__((visibility("default")))

#endif
