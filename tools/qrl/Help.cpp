// Licence: MIT, see LICENSE.
#include "tools/qrl/Help.h"

#include <iostream>

#include "tools/qrl/Commands.h"

namespace qrl {

const char kHelp[] =
    R"help(qrl looks into a running system: which ports there are, and what they answer.

Usage:
  qrl ports [--json]
  qrl send PORT CLASS ID [options]
  qrl send --process PSN CLASS ID [options]
  qrl quit PORT [--timeout SECONDS]
  qrl wait NAME [--gone] --timeout SECONDS
  qrl --help | --version

Commands:
  ports   Lists the live names of the name space with the IDs of their processes and, where a
          process has one, its serial number.
  send    Sends an Apple event to a named port, or as a high-level event to a process, waits for
          the reply and prints its parameters.
  quit    Sends the event aevt/quit to a named port and waits for the answer.
  wait    Waits until somebody holds a name, or with --gone until nobody does.

Options of send:
  --process PSN            the process to send to, as HIGH:LOW or as its low word alone; the event
                           goes through its event queue
  --param KEY=TYPE:VALUE   a parameter of the event; may be repeated
  --no-reply               want no reply, and do not wait for one
  --timeout SECONDS        how long to wait for the reply (60)
  --json                   print the reply as JSON

CLASS, ID and KEY are codes of four characters, or 0x and eight hexadecimal digits. So is TYPE, or
one of the words in brackets. VALUE depends on TYPE:
  shor (short, sint16), long (sint32), comp (sint64), magn (uint32)   a whole number
  sing (float), doub (double)                                         a number
  bool                                                                true or false
  TEXT (text)                                                         text
  type, enum                                                          a code
  psn (psn)                                                           HIGH:LOW or LOW
  any other                                                           bytes in hexadecimal
TYPE#HEX gives the bytes of any type. A reply is printed in the same form, one parameter a line, the
items of a list as KEY[1]=TYPE:VALUE and those of a record as KEY.ITEM=TYPE:VALUE.

Exit status:
  0    done
  1    the server answered with an error, printed as "errn -1708 (errAEEventNotHandled)"
  2    the command line makes no sense
  69   nobody holds the name, or there is no such process
  70   the host refused or failed
  76   the server went away before it answered
  124  the time is over

Examples:
  qrl ports --json
  qrl send com.quorvant.qrlagentd.1.1 QrlP Mcam
  qrl send com.example.server.1.1 TesT echo --param ----=TEXT:hello --param numb=long:-5
  qrl send --process 0:4711 aevt quit --no-reply
  qrl wait com.quorvant.qrlagentd.1.1 --timeout 10
  qrl quit com.quorvant.qrlagentd.1.1 && qrl wait com.quorvant.qrlagentd.1.1 --gone --timeout 5
)help";

ExitStatus run(const HelpCommand& command) {
  std::cout << command.text;
  return kDone;
}

}  // namespace qrl
