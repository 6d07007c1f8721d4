// Licence: MIT, see LICENSE.
// Descriptors as text, for comparing them in tests.
#ifndef TESTS_PLATFORM_APPLEEVENTS_PRINTING_H
#define TESTS_PLATFORM_APPLEEVENTS_PRINTING_H

#include <AE/AEHelpers.h>
#include <CarbonCore/MacMemory.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/appleevents/Descriptors.h"

namespace tests {

inline std::string printed(const AEDesc& desc) {
  Handle handle = nullptr;
  const OSStatus status = AEPrintDescToHandle(&desc, &handle);
  EXPECT_EQ(status, noErr);
  if (status != noErr) return {};
  std::string text(*handle, static_cast<std::size_t>(GetHandleSize(handle)));
  DisposeHandle(handle);
  return text;
}

inline std::string printed(const Desc& desc) { return printed(*&desc); }

/// What a descriptor is as another type, or the error in brackets.
inline std::string coerced(const AEDesc& desc, DescType type) {
  Desc result;
  const OSErr status = AECoerceDesc(&desc, type, &result);
  if (status == noErr) return printed(result);
  EXPECT_TRUE(result.isNull());
  return "<" + std::to_string(status) + ">";
}

inline std::string codeText(DescType code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
  return text;
}

}  // namespace tests

#endif
