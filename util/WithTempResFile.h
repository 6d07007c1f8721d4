// Licence: MIT, see LICENSE.
#ifndef QUORVANT_UTIL_WITHTEMPRESFILE_H
#define QUORVANT_UTIL_WITHTEMPRESFILE_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

/// A resource file that is the current one for as long as the object lives. A file that was open
/// before stays open afterwards. One thread at a time; objects that are nested end in the order of
/// their scopes.
class QRL_EXPORT WithTempResFile {
 public:
  /// With nothing open yet.
  WithTempResFile();
  /// Opens a file; `status` tells how it went.
  explicit WithTempResFile(const FSSpec* spec, SInt8 permission = fsCurPerm);
  ~WithTempResFile();
  WithTempResFile(const WithTempResFile&) = delete;
  WithTempResFile& operator=(const WithTempResFile&) = delete;

  /// Opens the file and makes it current. fnfErr for null; the Resource Manager's result, or
  /// resFNotFound when that is 0 and there is no file. What the object had open before is forgotten
  /// and not closed: call _CloseFile first.
  OSErr _OpenFile(const FSSpec* spec, SInt8 permission);
  /// Closes the file unless it was open before, and makes the file current that was. Nothing if
  /// nothing is open.
  void _CloseFile();

  SInt16 opened;            // the file's number, -1 for none
  SInt16 saved;             // the current file before, -1 for none
  OSErr status;             // of the last opening, fnfErr when nothing is open
  Boolean32 isAlreadyOpen;  // whether somebody had the file open before

 private:
  void reset();
};

#endif
