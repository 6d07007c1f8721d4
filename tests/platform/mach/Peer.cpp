// Licence: MIT, see LICENSE.
// A process at the other end, driven by its arguments and by lines on its standard input. It ends
// when its input does, or when a message tells it to.
//
//   peer serve NAME    registers a port and does what messages ask (PeerMessages.h)
//   peer deaf NAME     registers a port and never receives
//   peer contend NAME  waits for a line, then registers, like its rivals
//   peer tell NAME ID  sends one message without waiting for anything, and ends
//   peer ask NAME      sends one request with a word and prints the word that comes back
//
// The first line of output is the result code of the registration or of the look-up.
#include <servers/bootstrap.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "platform/mach/NameSpace.h"
#include "platform/mach/PortSpace.h"
#include "tests/platform/mach/PeerMessages.h"

namespace {

using namespace platform::mach;
using namespace tests;

constexpr platform::host::Nanoseconds kPatience = 60'000'000'000;

void say(kern_return_t code) { std::cout << code << std::endl; }

mach_port_name_t registered(const char* name) {
  mach_port_name_t port = MACH_PORT_NULL;
  mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port);
  say(bootstrap_register(kBootstrapPort, name, port));
  return port;
}

int untilInputEnds() {
  std::string line;
  while (std::getline(std::cin, line)) {
  }
  return 0;
}

void answer(const Message& message) {
  send(message.reply, MACH_PORT_NULL, message.id + 1, message.body.bytes(),
       Deadline::after(kPatience));
}

/// Does what a message asks. False when the process shall end.
bool obey(const Message& message) {
  switch (message.id) {
    case kEcho:
      answer(message);
      return true;
    case kKeepSilent:
      return true;
    case kGiveUp:
      mach_port_deallocate(mach_task_self(), message.reply);
      return true;
    case kAnswerTwice:
      answer(message);
      answer(message);
      return true;
    case kKillYourself:
      raise(SIGKILL);
      return false;
    case kDestroyPort:
      mach_port_destroy(mach_task_self(), message.receiver);
      untilInputEnds();
      return false;
    default:
      return false;
  }
}

int serve(const char* name) {
  const mach_port_name_t port = registered(name);
  PortSet set;
  set.insert(port);
  // The end of input ends the process even while it waits for messages.
  std::thread([] { _exit(untilInputEnds()); }).detach();
  for (;;) {
    mach_port_name_t ready = MACH_PORT_NULL;
    if (set.wait(ready, Deadline::never()) != PortSet::Outcome::kMessage) continue;
    Message message;
    if (receive(ready, message, Deadline::immediate()) != KERN_SUCCESS) continue;
    if (!obey(message)) return 0;
  }
}

int contend(const char* name) {
  std::string line;
  std::getline(std::cin, line);
  registered(name);
  return untilInputEnds();
}

mach_port_name_t found(const char* name) {
  mach_port_name_t port = MACH_PORT_NULL;
  say(bootstrap_look_up(kBootstrapPort, name, &port));
  return port;
}

int tell(const char* name, int id) {
  const std::byte body[] = {std::byte{'h'}, std::byte{'i'}};
  return send(found(name), MACH_PORT_NULL, id, body, Deadline::after(kPatience));
}

int ask(const char* name) {
  const mach_port_name_t port = found(name);
  mach_port_name_t reply = MACH_PORT_NULL;
  mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &reply);
  const std::byte body[] = {std::byte{'w'}, std::byte{'o'}, std::byte{'r'}, std::byte{'d'}};
  say(send(port, reply, kEcho, body, Deadline::after(kPatience)));
  Message message;
  say(receive(reply, message, Deadline::after(kPatience)));
  std::cout << message.id << " "
            << std::string(reinterpret_cast<const char*>(message.body.memory.get()),
                           message.body.size)
            << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[1] : "";
  if (mode == "serve") return serve(argv[2]);
  if (mode == "contend") return contend(argv[2]);
  if (mode == "tell" && argc > 3) return tell(argv[2], std::atoi(argv[3]));
  if (mode == "ask") return ask(argv[2]);
  if (mode != "deaf") return 2;
  registered(argv[2]);
  return untilInputEnds();
}
