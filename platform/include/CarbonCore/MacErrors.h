/* Licence: MIT, see LICENSE. */
/* Result codes of the Toolbox. Codes of the kernel and the bootstrap server are in <mach/...>. */
#ifndef CARBONCORE_MACERRORS_H
#define CARBONCORE_MACERRORS_H

enum {
  qErr = -1,
  paramErr = -50,
  eofErr = -39,
  fnfErr = -43,
  permErr = -54,
  ioErr = -36,
  tmfoErr = -42,
  dskFulErr = -34,
  portInUse = -97,
  memFullErr = -108,
  nilHandleErr = -109,
  memWZErr = -111,
  memPurErr = -112,
  memLockedErr = -117,
  resNotFound = -192,
  resFNotFound = -193,
  addResFailed = -194,
  rmvResFailed = -196,
  resAttrErr = -198,
  mapReadErr = -199,
  nmTypErr = -299,
  procNotFound = -600,
  memFragErr = -601,
  appModeErr = -602,
  connectionInvalid = -609,
  noUserInteractionAllowed = -610
};

/* Of files and resources. */
enum {
  nsvErr = -35,
  bdNamErr = -37,
  wrPermErr = -61,
  dupFNErr = -48,
  dirNFErr = -120,
  writingPastEnd = -189,
  errFSBadFSRef = -1401,
  errFSBadInfoBitmap = -1405,
  errFSRefsDifferent = -1420,
  pathTooLongErr = -2110,
  invalidComponentID = -3000,
  afpAccessDenied = -5000
};

enum {
  errAECoercionFail = -1700,
  errAEDescNotFound = -1701,
  errAECorruptData = -1702,
  errAEWrongDataType = -1703,
  errAENotAEDesc = -1704,
  errAEBadListItem = -1705,
  errAENewerVersion = -1706,
  errAENotAppleEvent = -1707,
  errAEEventNotHandled = -1708,
  errAEReplyNotValid = -1709,
  errAEUnknownSendMode = -1710,
  errAEWaitCanceled = -1711,
  errAETimeout = -1712,
  errAENoUserInteraction = -1713,
  errAENotASpecialFunction = -1714,
  errAEParamMissed = -1715,
  errAEUnknownAddressType = -1716,
  errAEHandlerNotFound = -1717,
  errAEReplyNotArrived = -1718,
  errAEIllegalIndex = -1719,
  errAEImpossibleRange = -1720,
  errAEWrongNumberArgs = -1721,
  errAEEventFailed = -10000,
  errAEBufferTooSmall = -1741
};

enum { eventNotHandledErr = -9874, eventLoopTimedOutErr = -9875, eventLoopQuitErr = -9876 };

#endif
