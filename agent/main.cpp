// Licence: MIT, see LICENSE.
#include <quorvant/agent/AgentApplication.h>

int main(int argc, char** argv) { return AgentMain(argc, argv); }
