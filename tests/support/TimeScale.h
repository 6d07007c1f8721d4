// Licence: MIT, see LICENSE.
// How much longer than natively things may take under a sanitizer or emulation.
#ifndef TESTS_SUPPORT_TIMESCALE_H
#define TESTS_SUPPORT_TIMESCALE_H

namespace tests {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__powerpc__)
inline constexpr int kTimeScale = 10;
#else
inline constexpr int kTimeScale = 1;
#endif

}  // namespace tests

#endif
