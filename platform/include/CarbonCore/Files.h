/* Licence: MIT, see LICENSE. */
/*
 * Files and folders. There is one volume, the host's whole file system; other file systems are
 * folders in it, where they are mounted. A folder has a directory ID, good within the process that
 * met it: it stays the folder's when that is renamed where it is. Links are items of their own;
 * only paths are followed through them, to their end.
 *
 * Names in an FSSpec are MacRoman, with the host's ':' as '/' (and no ':' in them). A host name
 * that has more than 31 characters or some that MacRoman lacks appears shortened, with its sum in
 * the middle: "A very long name #6B1C4B41.text". Such a name finds its item again, in any process.
 * Capital and small letters differ, as they do on the host.
 *
 * All calls may be made from any thread. Results that several of them give:
 *   nsvErr        no such volume
 *   dirNFErr      the folder that the item would be in does not exist
 *   fnfErr        no such item
 *   bdNamErr      a name that no item can have
 *   paramErr      a null pointer where something is needed
 *   errFSBadFSRef bytes that are no FSRef of this process
 *   afpAccessDenied  the host refuses; ioErr: it fails; memFullErr
 * Outputs are written on success only, but FSMakeFSSpec's.
 */
#ifndef CARBONCORE_FILES_H
#define CARBONCORE_FILES_H

#include <CarbonCore/MacTypes.h>

/* The IDs of the volume's root and of what would be its parent. */
enum { fsRtParID = 1, fsRtDirID = 2 };

/* How a file is to be opened; fsCurPerm takes what is allowed. */
enum { fsCurPerm = 0, fsRdPerm = 1, fsWrPerm = 2, fsRdWrPerm = 3 };

#pragma pack(push, 2)
/* A place for an item, which need not exist: a name in a folder. */
typedef struct FSSpec {
  SInt16 vRefNum;
  SInt32 parID;
  Str63 name;
} FSSpec;
#pragma pack(pop)

/* An item that exists. It stays the same one when that is renamed where it is, or replaced under
   its name. Two of one item need not have the same bytes; see FSCompareFSRefs. */
typedef struct FSRef {
  UInt8 hidden[80];
} FSRef;

/* A host's name in UTF-16, with ':' as '/'. A byte that is not UTF-8 appears as "%FF". */
typedef struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
} HFSUniStr255;

/* What FSGetCatalogInfo can tell. */
typedef UInt32 FSCatalogInfoBitmap;
enum {
  kFSCatInfoNone = 0x0000,
  kFSCatInfoNodeFlags = 0x0002,
  kFSCatInfoVolume = 0x0004,
  kFSCatInfoParentDirID = 0x0008,
  kFSCatInfoNodeID = 0x0010,
  kFSCatInfoPermissions = 0x0400,
  kFSCatInfoDataSizes = 0x4000
};

/* A bit of nodeFlags. */
enum { kFSNodeIsDirectoryMask = 0x0010 };

#pragma pack(push, 2)
typedef struct UTCDateTime {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
} UTCDateTime;
#pragma pack(pop)

/* Fields that were not asked for stay as they are. */
typedef struct FSCatalogInfo {
  UInt16 nodeFlags;
  SInt16 volume;
  UInt32 parentDirID;
  UInt32 nodeID; /* of a folder its directory ID */
  UInt8 sharingFlags;
  UInt8 userPrivileges;
  UInt8 reserved1;
  UInt8 reserved2;
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  UTCDateTime backupDate;
  UInt32 permissions[4]; /* user ID, group ID, 0, mode */
  UInt8 finderInfo[16];
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize; /* 0 for a folder */
  UInt64 dataPhysicalSize;
  UInt64 rsrcLogicalSize;
  UInt64 rsrcPhysicalSize;
  UInt32 valence;
  UInt32 textEncodingHint;
} FSCatalogInfo;

EXTERN_API_BEGIN

/* Makes the FSSpec of an item. The volume 0 is the only one, the directory 0 its root. The name is
   an item's in the directory, or a path: ":folder:item" from the directory on ("::" goes up one
   folder), "Volume:folder:item" from the root on. Null and the empty name stand for the directory
   itself. fnfErr, with the FSSpec complete, if all but the last item exists. */
OSErr FSMakeFSSpec(SInt16 vRefNum, SInt32 dirID, ConstStr255Param fileName, FSSpec* spec);
/* fnfErr for an item that does not exist. */
OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef);

/* The item at a host path, links followed; a relative one starts at the process's current folder.
   `isDirectory` may be null. */
OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);
/* The item's full host path, ended by NUL. pathTooLongErr if that takes more than `pathSize`
   bytes. */
OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathSize);

/* Tells about an item; every output may be null, `catalogInfo` only with kFSCatInfoNone. The root
   has no parent: errFSBadFSRef comes of asking `parentRef` about anything. errFSBadInfoBitmap for
   what cannot be told. */
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef);
/* noErr if both are the same item, errFSRefsDifferent if not. */
OSErr FSCompareFSRefs(const FSRef* ref1, const FSRef* ref2);

/* Makes a folder. dupFNErr if there is something of that name. The script is not used. */
OSErr FSpDirCreate(const FSSpec* spec, ScriptCode scriptTag, SInt32* createdDirID);

EXTERN_API_END

#endif
