/* Licence: MIT, see LICENSE. */
/*
 * URLs, above all those of files. A URL is a text, perhaps relative to a base URL, whose characters
 * beyond the legal ones are escaped as %XX of their bytes in UTF-8. URLs are immutable and may be
 * used on several threads at once. Two are equal when their texts and their bases are.
 *
 * A file's URL is "file://localhost" and its path; a folder's ends in a slash. A path of the HFS
 * style is "Volume:folder:file", or relative with a colon in front: the root of the host's files is
 * the volume "Macintosh HD", any other volume what is mounted in "/Volumes"; a slash in a name of
 * either style is a colon in the other's.
 *
 * An argument that is null, of another type or not legal gives null, 0 or false; so does a lack of
 * memory. What Copy and Create give is the caller's.
 */
#ifndef COREFOUNDATION_CFURL_H
#define COREFOUNDATION_CFURL_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>

typedef const struct __CFURL* CFURLRef;

typedef SInt32 CFURLPathStyle;
enum { kCFURLPOSIXPathStyle = 0, kCFURLHFSPathStyle = 1 };

EXTERN_API_BEGIN

CFTypeID CFURLGetTypeID(void);

/* A text that is already escaped, empty only where there is a base. */
CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL);
CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef text, CFURLRef baseURL);

/* Of a path, which is not empty. A relative one is relative to the folder given, or (null, or a
 * function that takes none) to the current folder as it is now. */
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path,
                                       CFURLPathStyle style, Boolean isDirectory);
CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef path,
                                                     CFURLPathStyle style, Boolean isDirectory,
                                                     CFURLRef baseURL);
/* Of a path as the host has it: bytes, which need not be text. */
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* path,
                                                 CFIndex length, Boolean isDirectory);

/* The host's path with its terminator; false if it does not fit, or the URL has no path that the
 * host could have. */
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                         CFIndex bufferSize);
/* The URL's own path, relative if the URL is; null also if it is not text. */
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style);

/* The URL itself where it has no base. */
CFURLRef CFURLCopyAbsoluteURL(CFURLRef url);
/* The URL's own text, and its base; both belong to the URL. */
CFStringRef CFURLGetString(CFURLRef url);
CFURLRef CFURLGetBaseURL(CFURLRef url);

/* Whether the URL consists of components at all, unlike "mailto:somebody". */
Boolean CFURLCanBeDecomposed(CFURLRef url);
/* The scheme that the URL or its base has. */
CFStringRef CFURLCopyScheme(CFURLRef url);
/* Components of the URL's own text as they stand there; null for one that it lacks. The path ends
 * before parameters, query or fragment. */
CFStringRef CFURLCopyNetLocation(CFURLRef url);
CFStringRef CFURLCopyPath(CFURLRef url);
Boolean CFURLHasDirectoryPath(CFURLRef url);
/* Without escapes: the last name in the path ("/" for the root), and what is behind the last dot in
 * that, null if there is none or nothing else. */
CFStringRef CFURLCopyLastPathComponent(CFURLRef url);
CFStringRef CFURLCopyPathExtension(CFURLRef url);

/* URLs with another path, and the same base. */
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef component, Boolean isDirectory);
CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url);
CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef extension);
CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url);

/* Escapes of UTF-8 become characters, but those of the characters given; with null none does. Null
 * where they are not valid. */
CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef text,
                                                       CFStringRef leaveEscaped);
/* Escapes what is not legal in a URL, but the characters that are to be left, and the legal ones
 * that are to be escaped too; either may be null. */
CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef text,
                                                    CFStringRef leaveUnescaped,
                                                    CFStringRef escapeToo,
                                                    CFStringEncoding encoding);

EXTERN_API_END

#endif
