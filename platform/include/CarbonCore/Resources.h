/* Licence: MIT, see LICENSE. */
/*
 * Resources: typed, numbered blocks of data in files. The application's own resource file is open
 * from the start; files opened later stand before it in the order of search, which begins at the
 * current file. The system's file (kSystemResFile) ends every search; it has no resources on this
 * host. Files whose resources are in an AppleDouble companion ("._name") keep them there.
 *
 * A resource handle belongs to its file and is not to be disposed of: ReleaseResource frees it,
 * DetachResource makes it the caller's, closing the file frees all that are left.
 *
 * What is changed is changed in memory until it is written: by WriteResource, UpdateResFile or
 * CloseResFile. The file is replaced at one stroke: it holds all of the old resources or all of the
 * new ones, and where writing fails everything stays to be written. A file that is left open when
 * the process ends is not written.
 *
 * All calls may be made from any thread; the current file is one for the process, ResError one for
 * each thread. Every call but ResError sets it: noErr, or resNotFound (no such resource, or not a
 * resource handle), resFNotFound (no such open file), memFullErr (no memory for the data). Calls
 * that write: wrPermErr (the file is open for reading only, or the host refuses), dskFulErr (no
 * room on the disk or in the format), ioErr.
 */
#ifndef CARBONCORE_RESOURCES_H
#define CARBONCORE_RESOURCES_H

#include <CarbonCore/Files.h>
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

/* Attributes of a file's map. */
enum { mapReadOnly = 128, mapCompact = 64, mapChanged = 32 };

EXTERN_API_BEGIN

/* The result of the calling thread's last Resource Manager call. */
OSErr ResError(void);

/* Opens a file's resources and makes it the current file; kResFileNotOpened on failure. A file that
   is open already is not opened again: the result is its number, and the current file stays.
   Results: fnfErr and the others of FSMakeFSSpec; permErr (the host refuses, or the file is open
   for reading only and is now wanted for writing); eofErr for an empty file; mapReadErr for one
   whose resources are damaged or that has none; tmfoErr (too many files); ioErr. */
SInt16 FSpOpenResFile(const FSSpec* spec, SInt8 permission);
SInt16 FSOpenResFile(const FSRef* ref, SInt8 permission);
/* Whether a file's resources are open. `inChain` and `refNum` may be null; they are set to whether
   it is searched, and to its number, false and kResFileNotOpened when it is not open. Every open
   file is searched. */
Boolean FSpResourceFileAlreadyOpen(const FSSpec* resourceFile, Boolean* inChain, SInt16* refNum);
/* Gives a file a map without resources: a new one, an empty one, or, in its companion, one that
   holds other data. dupFNErr if it has resources already. Creator, type and script are not kept on
   this host. */
void FSpCreateResFile(const FSSpec* spec, OSType creator, OSType fileType, ScriptCode scriptTag);

/* The file that searches begin at; kSystemResFile when nothing else is open. */
SInt16 CurResFile(void);
void UseResFile(SInt16 file);
/* Writes what was changed and frees the file's resources, also when writing fails. The one opened
   before it becomes the current file if it was that. Closing the system's file does nothing. */
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

/* Frees a resource's memory; the handle is gone. A resource with changes stays, with noErr. */
void ReleaseResource(Handle resource);
/* Makes the handle the caller's own, no resource any more. resAttrErr if it has changes. */
void DetachResource(Handle resource);

/* Makes the caller's block a resource of the current file, with no attribute but resChanged. A null
   name is an empty one. addResFailed for what is not a block or is a resource already, and where
   there is no file to add to. That the ID is not in use is the caller's to see to. */
void AddResource(Handle data, ResType type, ResID id, ConstStr255Param name);
/* Takes a resource out of the current file; the handle is then the caller's own. rmvResFailed if it
   is protected or not in the current file. */
void RemoveResource(Handle resource);
/* Marks a resource, its data as well as what is told about it, to be written. resAttrErr if it is
   protected. */
void ChangedResource(Handle resource);
/* Change ID and name, and attributes; ChangedResource makes them last. A null or empty name leaves
   the old one. resAttrErr for the ID and name of a protected resource. The attributes locked and
   purgeable hold from the next time that the resource is loaded; resChanged is not for the caller
   to set. */
void SetResInfo(Handle resource, ResID id, ConstStr255Param name);
void SetResAttrs(Handle resource, SInt16 attributes);
/* An ID above 127 that no resource of that type has, in all open files or (the call with 1) in the
   current one. 0 and resNotFound if there is none. */
SInt16 UniqueID(ResType type);
SInt16 Unique1ID(ResType type);

/* Writes a resource if it has changes; other resources stay in the file as they were. A changed
   resource that was purged keeps the data that the file has. resAttrErr if it is protected. */
void WriteResource(Handle resource);
/* Writes all changes of a file. */
void UpdateResFile(SInt16 file);
/* The attributes of a file's map, 0 on failure. One that is mapReadOnly is not written: changes are
   then wrPermErr; a file that is open for reading only stays so. mapChanged has the map written
   with the next update. */
SInt16 GetResFileAttrs(SInt16 file);
void SetResFileAttrs(SInt16 file, SInt16 attributes);

EXTERN_API_END

#endif
