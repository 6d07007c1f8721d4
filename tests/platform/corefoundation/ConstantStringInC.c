/* Licence: MIT, see LICENSE. */
#include "tests/platform/corefoundation/ConstantStringInC.h"

CFStringRef constantStringMadeInC(void) { return CFSTR("made in C"); }
