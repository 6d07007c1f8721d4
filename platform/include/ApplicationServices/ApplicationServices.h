/* Licence: MIT, see LICENSE. */
#ifndef APPLICATIONSERVICES_APPLICATIONSERVICES_H
#define APPLICATIONSERVICES_APPLICATIONSERVICES_H

#include <CoreServices/CoreServices.h>
#include <HIServices/Processes.h>
#include <QD/Quickdraw.h>

#endif
