// Licence: MIT, see LICENSE.
#ifndef QUORVANT_UTIL_WITHCOMPONENTRESFILE_H
#define QUORVANT_UTIL_WITHCOMPONENTRESFILE_H

#include <Carbon/Carbon.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>

/// A component's resource file that is the current one while the object lives. One thread at a
/// time.
///
/// At its end the file is closed only if opening it left the current file as it was; one that
/// became current by being opened stays open. The file that is current then stays so, rather than
/// the one that was at the beginning.
class QRL_EXPORT WithComponentResFile {
 public:
  explicit WithComponentResFile(ComponentRecord* component);
  ~WithComponentResFile();
  WithComponentResFile(const WithComponentResFile&) = delete;
  WithComponentResFile& operator=(const WithComponentResFile&) = delete;

  /// What construction does: opens the file and makes it current. `status` tells how it went.
  void Ctor(ComponentRecord* component);

  SInt16 saved;       // the current file before
  SInt16 opened;      // the component's file
  OSErr status;       // the Component Manager's
  Boolean32 changed;  // whether opening the file made another one current
};

#endif
