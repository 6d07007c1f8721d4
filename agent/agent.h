// Licence: MIT, see LICENSE.
/// The agent.
#ifndef QUORVANT_AGENT_AGENT_H
#define QUORVANT_AGENT_AGENT_H

#include <quorvant/agent/AgentApplication.h>

#endif
