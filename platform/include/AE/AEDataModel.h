/* Licence: MIT, see LICENSE. */
/*
 * Apple event descriptors: typed data, lists of descriptors, records of descriptors under keywords,
 * and Apple events with their parameters and attributes.
 *
 * Ownership: a call that stores a descriptor in a result gives it to the caller, who disposes of it
 * with AEDisposeDesc. What the result held before is overwritten, not disposed of; after an error
 * it is the null descriptor, {typeNull, null}. Data that is put into a descriptor is copied.
 *
 * Threads: any thread, but one descriptor is not to be changed while others use it.
 *
 * Results: paramErr for a missing pointer, a negative size or a null data pointer with a size above
 * 0; memFullErr for exhausted memory. errAENotAEDesc stands for a null descriptor where a list,
 * record or event is asked for, errAEWrongDataType for one of another type, errAENotAppleEvent for
 * anything but an event where one is asked for. errAEDescNotFound means no such item, keyword or
 * attribute; errAECoercionFail that the data cannot be had as the type asked for; errAECorruptData
 * that bytes given for a list, record or event are not one, or are nested deeper than 64.
 */
#ifndef AE_AEDATAMODEL_H
#define AE_AEDATAMODEL_H

#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacTypes.h>

typedef FourCharCode DescType;
typedef FourCharCode AEKeyword;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;

typedef struct OpaqueAEDataStorageType* AEDataStorage;

typedef struct AEDesc {
  DescType descriptorType;
  AEDataStorage dataHandle; /* read with AEGetDescData */
} AEDesc;
typedef AEDesc AEAddressDesc; /* where an event goes */
typedef AEDesc AEDescList;    /* items by index */
typedef AEDescList AERecord;  /* items by keyword */
typedef AERecord AppleEvent;  /* a record of parameters, with attributes beside them */

/* Types of data. Numbers are in the host's byte order, several of one type lie back to back. */
enum {
  typeBoolean = 'bool', /* one byte, 0 or 1 */
  typeTrue = 'true',    /* no data, as typeFalse and typeNull */
  typeFalse = 'fals',
  typeChar = 'TEXT',                        /* MacRoman text without terminator or length */
  typeCString = 'cstr',                     /* MacRoman up to a 0 byte */
  typePString = 'pstr',                     /* a length byte, then so many bytes of MacRoman */
  typeEncodedString = 'encs',               /* a big-endian CFStringEncoding, then text in it */
  typeUnicodeText = 'utxt',                 /* UTF-16, with or without a byte order mark */
  typeStyledUnicodeText = 'sutx',           /* the same; there are no styles */
  typeUTF16ExternalRepresentation = 'ut16', /* UTF-16, big-endian where no mark says otherwise */
  typeUTF8Text = 'utf8',
  typeSInt16 = 'shor',
  typeUInt16 = 'ushr',
  typeSInt32 = 'long',
  typeUInt32 = 'magn',
  typeSInt64 = 'comp',
  typeUInt64 = 'ucom',
  typeIEEE32BitFloatingPoint = 'sing',
  typeIEEE64BitFloatingPoint = 'doub',
  typeType = 'type', /* four-character codes, as the next four */
  typeEnumerated = 'enum',
  typeKeyword = 'keyw',
  typeProperty = 'prop',
  typeApplSignature = 'sign',
  typeProcessSerialNumber = 'psn ', /* two words, high and low */
  typeKernelProcessID = 'kpid',     /* the host's process ID, 32 bits */
  typeMachPort = 'port',            /* a port name, which means something in this process alone */
  typeQDPoint = 'QDpt',
  typeQDRectangle = 'qdrt',
  typeLongDateTime = 'ldt ',
  typeAEList = 'list',
  typeAERecord = 'reco',
  typeAppleEvent = 'aevt',
  typeNull = 'null',
  typeWildCard = '****', /* as a type asked for: whatever the data has, like typeBest */
  typeBest = 'best'
};

/* Keywords of attributes. Those of AECreateAppleEvent and AESend stand in every event. */
enum {
  keyEventClassAttr = 'evcl',      /* typeType */
  keyEventIDAttr = 'evid',         /* typeType */
  keyReturnIDAttr = 'rtid',        /* typeSInt16 */
  keyTransactionIDAttr = 'tran',   /* typeSInt32 */
  keyAddressAttr = 'addr',         /* where it goes */
  keyOriginalAddressAttr = 'from', /* typeProcessSerialNumber; {0, kNoProcess}: not checked in */
  keyEventSourceAttr = 'esrc',     /* typeSInt16, an AEEventSource */
  keyReplyRequestedAttr = 'repq',  /* typeBoolean */
  keyTimeoutAttr = 'timo',         /* typeSInt32, ticks */
  keyInteractLevelAttr = 'inte',   /* typeSInt32, kAENeverInteract to kAEAlwaysInteract */
  keyOptionalKeywordAttr = 'optk', /* typeAEList of the parameters that a server may ignore */
  keyMissedKeywordAttr = 'miss'    /* typeKeyword: the first parameter that must be read still; not
                                      found when there is none */
};

enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0 };

/* Converts a block, or a descriptor, to the type that it was installed for or, for typeWildCard, is
   asked for. Makes the result, which is the null descriptor before, or answers errAECoercionFail
   where it does not know how. */
typedef OSErr (*AECoercePtrProcPtr)(DescType type, const void* data, Size size, DescType toType,
                                    SInt32 refcon, AEDesc* result);
typedef OSErr (*AECoerceDescProcPtr)(const AEDesc* desc, DescType toType, SInt32 refcon,
                                     AEDesc* result);
typedef AECoercePtrProcPtr AECoercePtrUPP;
typedef AECoerceDescProcPtr AECoerceDescUPP;
typedef void (*AECoercionHandlerUPP)(void); /* one of the two, cast */

EXTERN_API_BEGIN

/* -- Descriptors -- */

/* Makes it the null descriptor, whatever it held. */
void AEInitializeDesc(AEDesc* desc);
OSErr AECreateDesc(DescType type, const void* data, Size size, AEDesc* result);
/* Leaves the null descriptor, which it also accepts. */
OSErr AEDisposeDesc(AEDesc* desc);
OSErr AEDuplicateDesc(const AEDesc* desc, AEDesc* result);

/* Copies at most maximumSize bytes of the data. */
OSErr AEGetDescData(const AEDesc* desc, void* data, Size maximumSize);
Size AEGetDescDataSize(const AEDesc* desc);
/* errAEBufferTooSmall, and nothing copied, when the data ends before offset + length. */
OSErr AEGetDescDataRange(const AEDesc* desc, void* buffer, Size offset, Size length);
/* Gives a descriptor another type and data, which may be a stretch of its own. On error it keeps
   what it has. */
OSErr AEReplaceDescData(DescType type, const void* data, Size size, AEDesc* desc);

/*
 * -- Coercion. Data is given as it is to who asks for its own type, typeWildCard or typeBest. Else
 * the handlers that match are tried as AEInstallCoercionHandler says, and then the conversions that
 * every process knows; what none of them can do is errAECoercionFail:
 *
 *   - numbers to each other, a real to the nearest whole number (the even one of two); a number
 * that does not fit fails;
 *   - texts to each other; a character that the other form lacks, more than 255 bytes for
 *     typePString or a 0 byte within for typeCString fails;
 *   - numbers to text in the shortest form that reads back, and text to them;
 *   - truth (typeBoolean, typeTrue, typeFalse) to each other, to and from the numbers 0 and 1, the
 *     texts "true" and "false" and the enumerations 'true' and 'fals', and from 'yes ' and 'no  ';
 *   - codes to each other and to and from text of four characters;
 *   - running processes: typeProcessSerialNumber, typeKernelProcessID and typeApplSignature to each
 *     other, a signature being the first process that has it;
 *   - typeAppleEvent to typeAERecord, its parameters alone;
 *   - anything to a list of one, and a list of one to whatever its item can be.
 *
 * A block or descriptor is one value: of a packed array nothing can be made. --
 */

OSErr AECoercePtr(DescType type, const void* data, Size size, DescType toType, AEDesc* result);
OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result);

AECoercePtrUPP NewAECoercePtrUPP(AECoercePtrProcPtr handler);
void DisposeAECoercePtrUPP(AECoercePtrUPP handler);
AECoerceDescUPP NewAECoerceDescUPP(AECoerceDescProcPtr handler);
void DisposeAECoerceDescUPP(AECoerceDescUPP handler);

/*
 * The process's coercion handlers, in two tables: the application's, and behind it the system's.
 * Either type may be typeWildCard, which matches any. Of the handlers that match, the application's
 * go first; in each table both types named outrank the first one named, that outranks the second
 * one, and all outrank none. Where one answers errAECoercionFail the next is tried; any other
 * result is the coercion's. Any thread.
 */

/* Takes the place of a handler for the same two types. `fromTypeIsDesc` says of which of the two
   kinds it is: an AECoerceDescUPP or an AECoercePtrUPP. paramErr for a null handler. */
OSErr AEInstallCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                               SInt32 refcon, Boolean fromTypeIsDesc, Boolean isSystemHandler);
/* A handler given must be the one installed, null is any: else errAEHandlerNotFound. */
OSErr AERemoveCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP handler,
                              Boolean isSystemHandler);
/* Gives what was installed for exactly these two types: else errAEHandlerNotFound. */
OSErr AEGetCoercionHandler(DescType fromType, DescType toType, AECoercionHandlerUPP* handler,
                           SInt32* refcon, Boolean* fromTypeIsDesc, Boolean isSystemHandler);

/*
 * -- Lists and records by index, which counts from 1. Of an event it is the parameters. --
 */

/* The factoring data, which the items may have in common, affects no result: items are kept whole.
 */
OSErr AECreateList(const void* factoring, Size factoredSize, Boolean isRecord, AEDescList* result);
OSErr AECountItems(const AEDescList* list, SInt32* count);
/* Replaces an item, or appends one when the index is 0 or the count plus 1; errAEIllegalIndex for
   another index. Lists only. */
OSErr AEPutPtr(AEDescList* list, SInt32 index, DescType type, const void* data, Size size);
OSErr AEPutDesc(AEDescList* list, SInt32 index, const AEDesc* desc);
/* The keyword of an item of a list is typeWildCard. The actual size is that of the whole data, also
   when only maximumSize bytes of it were copied. Each result but the descriptor may be null. */
OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                  DescType* actualType, void* data, Size maximumSize, Size* actualSize);
OSErr AEGetNthDesc(const AEDescList* list, SInt32 index, DescType desiredType, AEKeyword* keyword,
                   AEDesc* result);
/* The type and size of the item as it is stored. */
OSErr AESizeOfNthItem(const AEDescList* list, SInt32 index, DescType* type, Size* size);
/* errAEIllegalIndex when there is no such item. */
OSErr AEDeleteItem(AEDescList* list, SInt32 index);

/*
 * -- Records by keyword. Putting replaces. Of an event it is the parameters, so that these calls
 * and those with Param in their names are the same. --
 */

Boolean AECheckIsRecord(const AEDesc* desc);
OSErr AEPutKeyPtr(AERecord* record, AEKeyword keyword, DescType type, const void* data, Size size);
OSErr AEPutKeyDesc(AERecord* record, AEKeyword keyword, const AEDesc* desc);
OSErr AEGetKeyPtr(const AERecord* record, AEKeyword keyword, DescType desiredType,
                  DescType* actualType, void* data, Size maximumSize, Size* actualSize);
OSErr AEGetKeyDesc(const AERecord* record, AEKeyword keyword, DescType desiredType, AEDesc* result);
OSErr AESizeOfKeyDesc(const AERecord* record, AEKeyword keyword, DescType* type, Size* size);
OSErr AEDeleteKeyDesc(AERecord* record, AEKeyword keyword);

/* -- Apple events -- */

/* Starts an event without parameters. The target, which may be null, is where AESend sends it.
   kAutoGenerateReturnID takes an ID that this process has not used lately. */
OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);

OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                    Size size);
OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc);
OSErr AEGetParamPtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                    DescType* actualType, void* data, Size maximumSize, Size* actualSize);
OSErr AEGetParamDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                     AEDesc* result);
OSErr AESizeOfParam(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size);
OSErr AEDeleteParam(AppleEvent* event, AEKeyword keyword);

/* An attribute whose type is fixed is coerced to it. keyMissedKeywordAttr cannot be put: paramErr.
 */
OSErr AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                        Size size);
OSErr AEPutAttributeDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc);
OSErr AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                        DescType* actualType, void* data, Size maximumSize, Size* actualSize);
OSErr AEGetAttributeDesc(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                         AEDesc* result);
OSErr AESizeOfAttribute(const AppleEvent* event, AEKeyword keyword, DescType* type, Size* size);

EXTERN_API_END

#endif
