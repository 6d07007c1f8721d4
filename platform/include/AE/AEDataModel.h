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
  typeChar = 'TEXT', /* text without terminator or length */
  typeUnicodeText = 'utxt',
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

/* -- Coercion. A number that does not fit the type asked for is errAECoercionFail. -- */

OSErr AECoercePtr(DescType type, const void* data, Size size, DescType toType, AEDesc* result);
OSErr AECoerceDesc(const AEDesc* desc, DescType toType, AEDesc* result);

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
