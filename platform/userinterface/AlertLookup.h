// Licence: MIT, see LICENSE.
// Finding an alert in the open resource files.
#ifndef PLATFORM_USERINTERFACE_ALERTLOOKUP_H
#define PLATFORM_USERINTERFACE_ALERTLOOKUP_H

#include <CarbonCore/MacTypes.h>

#include <optional>

#include "platform/userinterface/AlertResource.h"
#include "platform/userinterface/Presenter.h"

namespace platform::userinterface {

/// What an alert says at a stage of its own; the item list is read as it is now. Nothing where a
/// resource is missing or damaged.
struct StoredAlert {
  AlertTemplate form;
  std::vector<DialogItem> items;
};
std::optional<StoredAlert> findAlert(ResID alertID);

/// The alert as a presenter takes it: the first static text of several is the title, the others are
/// the text; buttons keep the numbers of their items. Without any button there is one that says
/// "OK".
AlertContents contentsOf(const StoredAlert& alert, const AlertStage& stage);

}  // namespace platform::userinterface

#endif
