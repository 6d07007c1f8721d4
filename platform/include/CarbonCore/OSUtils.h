/* Licence: MIT, see LICENSE. */
/* Elements of the system's queues. */
#ifndef CARBONCORE_OSUTILS_H
#define CARBONCORE_OSUTILS_H

#include <CarbonCore/MacTypes.h>

/* What kind of queue an element belongs to. */
enum { nmType = 8 };

#pragma pack(push, 2)
typedef struct QElem {
  struct QElem* qLink;
  SInt16 qType;
  SInt16 qData[1];
} QElem;
#pragma pack(pop)
typedef QElem* QElemPtr;

#endif
