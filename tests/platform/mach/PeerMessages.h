// Licence: MIT, see LICENSE.
// What the peer process does with a message, by its ID. An answer's ID is one more.
#ifndef TESTS_PLATFORM_MACH_PEERMESSAGES_H
#define TESTS_PLATFORM_MACH_PEERMESSAGES_H

namespace tests {

enum PeerMessage : int {
  kEcho = 1000,          // answers with the same body
  kKeepSilent = 1010,    // keeps the right to answer
  kGiveUp = 1020,        // gives the right to answer up
  kAnswerTwice = 1030,   // tries to use the right twice
  kKillYourself = 1040,  // dies without cleaning up
  kDestroyPort = 1050,   // destroys its port and lives on
  kEnd = 1060,           // ends in good order
};

}  // namespace tests

#endif
