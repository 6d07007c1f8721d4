/* Licence: MIT, see LICENSE. */
#ifndef CORESERVICES_CORESERVICES_H
#define CORESERVICES_CORESERVICES_H

#include <AE/AEDataModel.h>
#include <AE/AEHelpers.h>
#include <AE/AEMach.h>
#include <AE/AppleEvents.h>
#include <CarbonCore/Components.h>
#include <CarbonCore/DriverSynchronization.h>
#include <CarbonCore/Files.h>
#include <CarbonCore/Folders.h>
#include <CarbonCore/MacErrors.h>
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/MacTypes.h>
#include <CarbonCore/NumberFormatting.h>
#include <CarbonCore/Resources.h>
#include <CarbonCore/StringCompare.h>
#include <CarbonCore/TextUtils.h>
#include <CoreFoundation/CoreFoundation.h>

#endif
