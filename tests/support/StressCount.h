// Licence: MIT, see LICENSE.
// How often a stress test goes round: in full natively, a tenth as often where every step costs
// much more, under a sanitizer or emulation.
#ifndef TESTS_SUPPORT_STRESSCOUNT_H
#define TESTS_SUPPORT_STRESSCOUNT_H

namespace tests {

constexpr int stressCount(int native) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__powerpc__)
  return native / 10;
#else
  return native;
#endif
}

}  // namespace tests

#endif
