/* Licence: MIT, see LICENSE. */
/*
 * Resources: typed, numbered blocks of data in files. The application's own resource file is open
 * from the start; files opened later stand before it in the order of search, which begins at the
 * current file. The system's file (kSystemResFile) ends every search; it has no resources on this
 * host.
 *
 * A resource handle belongs to its file and is not to be disposed of: ReleaseResource frees it,
 * DetachResource makes it the caller's, closing the file frees all that are left.
 *
 * All calls may be made from any thread; the current file is one for the process, ResError one for
 * each thread. Every call but ResError sets it: noErr, or resNotFound (no such resource, or not a
 * resource handle), resFNotFound (no such open file), memFullErr (no memory for the data).
 */
#ifndef CARBONCORE_RESOURCES_H
#define CARBONCORE_RESOURCES_H

#include <CarbonCore/MacTypes.h>

enum { kResFileNotOpened = -1, kSystemResFile = 0 };

/* Attributes of a resource. */
enum {
  resSysHeap = 64,
  resPurgeable = 32,
  resLocked = 16,
  resProtected = 8,
  resPreload = 4,
  resChanged = 2
};

EXTERN_API_BEGIN

/* The result of the calling thread's last Resource Manager call. */
OSErr ResError(void);

/* The file that searches begin at; kSystemResFile when nothing else is open. */
SInt16 CurResFile(void);
void UseResFile(SInt16 file);
/* Frees the file's resources. The one opened before it becomes the current file if it was that.
   Closing the system's file does nothing. */
void CloseResFile(SInt16 file);
/* The file of a resource, kResFileNotOpened if the handle is none. */
SInt16 HomeResFile(Handle resource);

/* Whether the calls that find a resource also load it; if not, they give an empty handle for one
   that is not in memory. On at the start, and one setting for the process. */
void SetResLoad(Boolean load);
/* Reads a resource into memory if it is not there. */
void LoadResource(Handle resource);

/* Find a resource from the current file on, or (the calls with 1) in the current file only. Null
   when there is none; ResError is then resNotFound, but noErr where there is no resource of the
   type at all. Names are compared without regard to case. */
Handle GetResource(ResType type, ResID id);
Handle Get1Resource(ResType type, ResID id);
Handle GetNamedResource(ResType type, ConstStr255Param name);
Handle Get1NamedResource(ResType type, ConstStr255Param name);

/* The resources of a type, counted from 1. The calls with 1 look at the current file, the others at
   all open files, the last one opened first, whichever is current. Null and resNotFound for an
   index out of range. */
SInt16 CountResources(ResType type);
SInt16 Count1Resources(ResType type);
Handle GetIndResource(ResType type, SInt16 index);
Handle Get1IndResource(ResType type, SInt16 index);

/* The different types, likewise. The type is 0 for an index out of range. */
SInt16 CountTypes(void);
SInt16 Count1Types(void);
void GetIndType(ResType* type, SInt16 index);
void Get1IndType(ResType* type, SInt16 index);

/* ID, type and name of a resource; each output may be null. An unnamed resource has an empty name.
   Outputs are untouched on failure. */
void GetResInfo(Handle resource, ResID* id, ResType* type, Str255 name);
/* The attributes, 0 on failure. */
SInt16 GetResAttrs(Handle resource);
/* The size that the file states, whatever is in memory; -1 on failure. */
SInt32 GetResourceSizeOnDisk(Handle resource);

/* Frees a resource's memory; the handle is gone. */
void ReleaseResource(Handle resource);
/* Makes the handle the caller's own, no resource any more. */
void DetachResource(Handle resource);

EXTERN_API_END

#endif
