// Licence: MIT, see LICENSE.
#include <quorvant/util/WithTempResFile.h>

WithTempResFile::WithTempResFile() { reset(); }

WithTempResFile::WithTempResFile(const FSSpec* spec, SInt8 permission) {
  _OpenFile(spec, permission);
}

WithTempResFile::~WithTempResFile() { _CloseFile(); }

OSErr WithTempResFile::_OpenFile(const FSSpec* spec, SInt8 permission) {
  reset();
  if (spec == nullptr) return status;
  isAlreadyOpen = FSpResourceFileAlreadyOpen(spec, nullptr, nullptr);
  saved = CurResFile();
  opened = FSpOpenResFile(spec, permission);
  status = ResError();
  if (opened != kResFileNotOpened) {
    UseResFile(opened);
  } else if (status == noErr) {
    status = resFNotFound;
  }
  return status;
}

void WithTempResFile::_CloseFile() {
  if (opened != kResFileNotOpened) {
    if (isAlreadyOpen == 0) CloseResFile(opened);
    UseResFile(saved);
  }
  reset();
}

void WithTempResFile::reset() {
  opened = saved = kResFileNotOpened;
  status = fnfErr;
  isAlreadyOpen = 0;
}
