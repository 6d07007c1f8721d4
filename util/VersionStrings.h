// Licence: MIT, see LICENSE.
/// A NumVersion (major, minor and fix number, stage, revision, packed into one word) as text. Any
/// thread.
#ifndef QUORVANT_UTIL_VERSIONSTRINGS_H
#define QUORVANT_UTIL_VERSIONSTRINGS_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>

/// Writes a version such as 1.0.2, with the stage 1.0.2b3, as a Pascal string that is also
/// terminated: at most 16 bytes in all. Stages are d, a, b and f, and a question mark for one that
/// is unknown. Returns the address of its first character.
QRL_EXPORT char* VersToString(UInt32 version, unsigned char* buffer, bool withStage);

/// Reads MAJOR[.MINOR[.FIX]][STAGE REVISION] and ignores what follows; white space and a sign may
/// stand before each number. What is left out is 0, the stage f. paramErr, with the version
/// untouched, for a null text and where a number is missing.
QRL_EXPORT OSErr StringToVers(const char* text, UInt32& version);

#endif
