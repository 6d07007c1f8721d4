/* Licence: MIT, see LICENSE. */
/* Apple event descriptors as text. Any thread. */
#ifndef AE_AEHELPERS_H
#define AE_AEHELPERS_H

#include <AE/AEDataModel.h>

EXTERN_API_BEGIN

/*
 * Writes a descriptor as one line of MacRoman text, without a terminator, into a new handle that is
 * the caller's to dispose of:
 *
 *   -5                             typeSInt32
 *   'shor'(-5)  'bool'("true")     other numbers, truth
 *   'yes '  'type'('cwin')         an enumeration, other codes
 *   "text"  'utxt'("text")         text, with a backslash before quotation marks and backslashes
 *   'psn '($0000000000000005$)     bytes of other data, and of what is no value of its type or, of
 *                                  text, no line of MacRoman; numbers as they travel, high byte
 *                                  first
 *   'null'()                       no data
 *   [1, "two"]                     a list
 *   {'errn':-50, 'errs':"why"}     a record
 *   'aevt'\'quit'{'----':1, &'addr':'port'($00000503$)}
 *                                  an event: class, ID, parameters, and with an & those attributes
 *                                  that not every event has
 *
 * paramErr for a null pointer; errAECorruptData; memFullErr. After an error the handle is null.
 */
OSStatus AEPrintDescToHandle(const AEDesc* desc, Handle* result);

EXTERN_API_END

#endif
