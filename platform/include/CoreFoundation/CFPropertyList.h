/* Licence: MIT, see LICENSE. */
/*
 * Property lists: trees of strings, numbers, booleans, dates, data, arrays, and dictionaries whose
 * keys are strings. They are read from XML, binary and old-style text and written as XML and
 * binary.
 *
 * What is read may come from anywhere: nesting is limited to 512 levels, and memory and time to a
 * multiple of the input's length. Nothing refers to anything outside, and entities other than those
 * of XML itself are errors. A unique ID of a keyed archive, which only the binary form has, reads
 * as a dictionary of one integer under "CF$UID".
 *
 * Dictionaries are written in the order of CFStringCompare of their keys. Integers are 64 bits wide
 * and signed; a number that does not fit is an error. In XML dates have whole seconds (of the year
 * 1 to 9999), the earlier one.
 */
#ifndef COREFOUNDATION_CFPROPERTYLIST_H
#define COREFOUNDATION_CFPROPERTYLIST_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFStream.h>

typedef CFTypeRef CFPropertyListRef;

/* What of a property list that is made can be changed: nothing; its arrays and dictionaries; its
 * strings (but keys) and data too. */
typedef CFOptionFlags CFPropertyListMutabilityOptions;
enum {
  kCFPropertyListImmutable = 0,
  kCFPropertyListMutableContainers = 1,
  kCFPropertyListMutableContainersAndLeaves = 2
};

typedef SInt32 CFPropertyListFormat;
enum {
  kCFPropertyListOpenStepFormat = 1,
  kCFPropertyListXMLFormat_v1_0 = 100,
  kCFPropertyListBinaryFormat_v1_0 = 200
};

EXTERN_API_BEGIN

/*
 * Reads all three forms. Null if the bytes are not a property list, and then *errorString (may be
 * null) is a text of the caller's that says where and why, else null: "line 3, column 7: unknown
 * element" or, for the binary form, "offset 42: the object refers to itself".
 */
CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption,
                                                  CFStringRef* errorString);
/* The same of the next bytes of an open stream: so many, or (0) all to its end. *format (may be
 * null) is the form that was found. */
CFPropertyListRef CFPropertyListCreateFromStream(CFAllocatorRef allocator, CFReadStreamRef stream,
                                                 CFIndex streamLength,
                                                 CFOptionFlags mutabilityOption,
                                                 CFPropertyListFormat* format,
                                                 CFStringRef* errorString);

/* Null if the object cannot be written as XML. */
CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList);
/* The number of bytes written to the open stream, 0 if anything fails; then *errorString (may be
 * null) is a text of the caller's. Old-style text is not written. */
CFIndex CFPropertyListWriteToStream(CFPropertyListRef propertyList, CFWriteStreamRef stream,
                                    CFPropertyListFormat format, CFStringRef* errorString);

/* A copy down to the leaves; what stays immutable may be shared. Null for what is no property list.
 */
CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator,
                                               CFPropertyListRef propertyList,
                                               CFOptionFlags mutabilityOption);
/* Whether the format can express the object: old-style text has only strings, data, arrays and
 * dictionaries. Containers within themselves are not valid. */
Boolean CFPropertyListIsValid(CFPropertyListRef propertyList, CFPropertyListFormat format);

EXTERN_API_END

#endif
