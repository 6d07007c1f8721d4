/* Licence: MIT, see LICENSE. */
/*
 * The well-known folders. Each domain (the system, the machine, the network, the user) has its
 * own; the host's places are in docs/host-mapping.md.
 */
#ifndef CARBONCORE_FOLDERS_H
#define CARBONCORE_FOLDERS_H

#include <CarbonCore/Files.h>

/* Domains, in place of a volume's number. The first two, like a volume's number itself, stand for
   the domain where a folder of that kind usually is. */
enum {
  kOnSystemDisk = -32768,
  kOnAppropriateDisk = -32767,
  kSystemDomain = -32766,
  kLocalDomain = -32765,
  kNetworkDomain = -32764,
  kUserDomain = -32763
};

enum { kDontCreateFolder = 0, kCreateFolder = 1 };

/* Kinds of folders. */
enum {
  kDomainTopLevelFolderType = 'dtop',
  kDomainLibraryFolderType = 'dlib',
  kApplicationsFolderType = 'apps',
  kApplicationSupportFolderType = 'asup',
  kCachedDataFolderType = 'cach',
  kCurrentUserFolderType = 'cusr',
  kFrameworksFolderType = 'fram',
  kLogsFolderType = 'logs',
  kPreferencesFolderType = 'pref',
  kTemporaryFolderType = 'temp'
};

EXTERN_API_BEGIN

/* Finds a folder and, if told to, makes it with what is missing above it. nsvErr for an unknown
   domain; fnfErr for an unknown kind, a kind that the domain lacks, and a folder that does not
   exist and is not to be made; dupFNErr if something else stands in its place; afpAccessDenied,
   dskFulErr, ioErr if it cannot be made; paramErr for a null output. Outputs are written on
   success only. */
OSErr FindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder, SInt16* foundVRefNum,
                 SInt32* foundDirID);
OSErr FSFindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef);

EXTERN_API_END

#endif
