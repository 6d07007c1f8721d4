/* Licence: MIT, see LICENSE. */
/*
 * Components as far as their resource files: a component is registered from a resource of type
 * 'thng', which tells what it is, and has the resources of the file that the resource was in. It is
 * registered for the process, and stays so when the file is closed. All calls may be made from any
 * thread.
 */
#ifndef CARBONCORE_COMPONENTS_H
#define CARBONCORE_COMPONENTS_H

#include <CarbonCore/Resources.h>

/* Opaque; a number that is never used again, not an address. */
typedef struct ComponentRecord* Component;

enum { kComponentResourceType = 'thng', kAnyComponentType = 0 };

/* What a component is, or (with zeros for anything) what is looked for. */
typedef struct ComponentDescription {
  OSType componentType;
  OSType componentSubType;
  OSType componentManufacturer;
  UInt32 componentFlags;
  UInt32 componentFlagsMask; /* of a search: the flags that matter */
} ComponentDescription;

EXTERN_API_BEGIN

/* Registers every component of an open resource file; `global` has no meaning on this host. The
   number of components, 0 without one, or a negative result: resFNotFound, memFullErr. A 'thng'
   resource that is too short registers nothing. */
SInt32 RegisterComponentResourceFile(SInt16 resRefNum, SInt16 global);
/* invalidComponentID for one that is not registered. */
OSErr UnregisterComponent(Component component);

/* The next component after that one, in the order of registration, that fits the description; null
   when there is no more. Null starts the search, and so does a component that is gone. */
Component FindNextComponent(Component component, ComponentDescription* looking);
SInt32 CountComponents(ComponentDescription* looking);

/* Opens the resource file of a component for reading, as FSOpenResFile does: it becomes the current
   file, unless it was open already. Results of that call, invalidComponentID, or paramErr for a
   null output; on failure the number is kResFileNotOpened. */
OSErr OpenAComponentResFile(Component component, SInt16* refNum);
/* Closes such a file, however often it was opened. resFNotFound if it is not open. */
OSErr CloseComponentResFile(SInt16 refNum);

EXTERN_API_END

#endif
