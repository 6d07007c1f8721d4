// Licence: MIT, see LICENSE.
// A process that has a port under the name that its argument says, and throws away what comes.
#include <mach/mach.h>
#include <servers/bootstrap.h>

#include <iostream>

#include "platform/mach/NameSpace.h"
#include "platform/mach/PortSpace.h"

int main(int argc, char** argv) {
  mach_port_t port = MACH_PORT_NULL;
  if (argc != 2 ||
      mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port) != KERN_SUCCESS ||
      bootstrap_register(platform::mach::kBootstrapPort, argv[1], port) != KERN_SUCCESS) {
    return 1;
  }
  std::cout << "ready" << std::endl;
  platform::mach::Message message;
  while (platform::mach::receive(port, message, platform::mach::Deadline::never()) ==
         KERN_SUCCESS) {
  }
  return 0;
}
