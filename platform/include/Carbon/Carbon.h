/* Licence: MIT, see LICENSE. */
#ifndef CARBON_CARBON_H
#define CARBON_CARBON_H

#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>
#include <HIToolbox/AEInteraction.h>
#include <HIToolbox/CarbonEventsCore.h>
#include <HIToolbox/Dialogs.h>
#include <HIToolbox/Events.h>
#include <HIToolbox/Notification.h>

#endif
