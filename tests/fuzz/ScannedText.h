// Licence: MIT, see LICENSE.
// What the fuzz targets share that compare a reader of text with the C library's scanner.
#ifndef TESTS_FUZZ_SCANNEDTEXT_H
#define TESTS_FUZZ_SCANNEDTEXT_H

#include <cctype>
#include <cstdlib>
#include <string>

namespace tests {

inline void require(bool holds) {
  if (!holds) std::abort();
}

/// The scanner's numbers of more than nine digits are undefined where they do not fit.
inline bool hasLongNumber(const std::string& text) {
  int digits = 0;
  for (const char character : text) {
    digits = std::isdigit(static_cast<unsigned char>(character)) != 0 ? digits + 1 : 0;
    if (digits > 9) return true;
  }
  return false;
}

}  // namespace tests

#endif
