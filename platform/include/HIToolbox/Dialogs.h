/* Licence: MIT, see LICENSE. */
/* Alerts that are stored as resources: an 'ALRT' and the 'DITL' that it names. */
#ifndef HITOOLBOX_DIALOGS_H
#define HITOOLBOX_DIALOGS_H

#include <CarbonCore/MacTypes.h>
#include <HIToolbox/Events.h>

typedef struct OpaqueDialogPtr* DialogRef;
typedef SInt16 DialogItemIndex;
typedef Boolean (*ModalFilterProcPtr)(DialogRef alert, EventRecord* event,
                                      DialogItemIndex* itemHit);
typedef ModalFilterProcPtr ModalFilterUPP;

/* Types of items in a 'DITL'; the last is a bit. */
enum { kButtonDialogItem = 4, kStaticTextDialogItem = 8, kItemDisableBit = 128 };

/* What the first two items of an alert are. */
enum { kStdOkItemIndex = 1, kStdCancelItemIndex = 2 };

EXTERN_API_BEGIN

/*
 * Shows the alert to the user and returns the number of the button that was chosen. The calling
 * thread's run loop goes on in its default mode meanwhile, so that events are served; one of them
 * may show another alert, which is answered first. The filter, if there is one, is called with a
 * null dialog and a null event when the alert is up, and again whenever the run loop has served
 * something; where it returns true the alert is taken down and the item that it stored is the
 * answer.
 *
 * Returns -1, and shows nothing, where either resource is missing or damaged, or the alert's
 * present stage (how often in a row it was asked for) draws no box.
 */
DialogItemIndex Alert(SInt16 alertID, ModalFilterUPP filter);

EXTERN_API_END

#endif
