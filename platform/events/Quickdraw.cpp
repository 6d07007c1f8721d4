// Licence: MIT, see LICENSE.
#include <QD/Quickdraw.h>

void InitCursor(void) {}
