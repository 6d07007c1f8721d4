// Licence: MIT, see LICENSE.
#include <quorvant/util/WithComponentResFile.h>

WithComponentResFile::WithComponentResFile(ComponentRecord* component) { Ctor(component); }

WithComponentResFile::~WithComponentResFile() {
  if (status != noErr || opened == kResFileNotOpened) return;
  const SInt16 current = CurResFile();
  if (changed == 0) CloseComponentResFile(opened);
  if (current != opened) UseResFile(current);
}

void WithComponentResFile::Ctor(ComponentRecord* component) {
  saved = CurResFile();
  opened = kResFileNotOpened;
  status = OpenAComponentResFile(component, &opened);
  changed = CurResFile() != saved ? 1 : 0;
  if (status == noErr) UseResFile(opened);
}
