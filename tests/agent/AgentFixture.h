// Licence: MIT, see LICENSE.
#ifndef TESTS_AGENT_AGENTFIXTURE_H
#define TESTS_AGENT_AGENTFIXTURE_H

#include <gtest/gtest.h>
#include <quorvant/agent/AgentApplication.h>

#include "tests/agent/ToolboxCalls.h"
#include "tests/support/PrivateRoot.h"

namespace tests {

/// The agent as it is before `main`, in a root of its own.
class AgentFixture : public testing::Test {
 protected:
  AgentFixture() {
    gQuit = false;
    gQuitWhenDone = true;
  }
  ~AgentFixture() override {
    removeAEHandlers();
    AERemoveEventHandler('aevt', 'quit', nullptr, false);
    AERemoveEventHandler('QrlP', 'Mcam', nullptr, false);
    AESetInteractionAllowed(kAEInteractWithLocal);
  }

  PrivateRoot root;
  ToolboxCalls calls;
};

}  // namespace tests

#endif
