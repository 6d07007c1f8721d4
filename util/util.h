// Licence: MIT, see LICENSE.
/// Types and utilities that the other folders share.
#ifndef QUORVANT_UTIL_UTIL_H
#define QUORVANT_UTIL_UTIL_H

#include <quorvant/util/ByteDumps.h>
#include <quorvant/util/HandleUtils.h>
#include <quorvant/util/OSTypeStrings.h>
#include <quorvant/util/QRLExport.h>
#include <quorvant/util/QRLTypes.h>
#include <quorvant/util/ResourceUtils.h>
#include <quorvant/util/StringUtils.h>
#include <quorvant/util/VersionStrings.h>
#include <quorvant/util/WithComponentResFile.h>
#include <quorvant/util/WithTempResFile.h>

#endif
