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
  qrl resources FILE [TYPE [ID]] [--hex | --text] [--json]
  qrl --help | --version

Commands:
  ports   Lists the live names of the name space with the IDs of their processes and, where a
          process has one, its serial number.
  send    Sends an Apple event to a named port, or as a high-level event to a process, waits for
          the reply and prints its parameters.
  quit    Sends the event aevt/quit to a named port and waits for the answer.
  wait    Waits until somebody holds a name, or with --gone until nobody does.
  resources
          Lists the resources of a file, or those of a type: type, ID, size, attributes, name. One
          that is named by its ID is shown, as text where it is text. --hex and --text show them
          all, as bytes or as text.

Options of send:
  --process PSN            the process to send to, as HIGH:LOW or as its low word alone; the event
                           goes through its event queue
  --param KEY=TYPE:VALUE   a parameter of the event; may be repeated
  --no-reply               want no reply, and do not wait for one
  --timeout SECONDS        how long to wait for the reply (60)
  --json                   print the reply as JSON

CLASS, ID and KEY are codes of four characters, or 0x and eight hexadecimal digits. So is TYPE, or
one of the words in brackets. VALUE depends on TYPE:
  shor (short, sint16), long (sint32), comp (sint64), ldt ,           whole numbers
  ushr (uint16), magn (uint32), ucom (uint64), port, kpid (pid)
  QDpt, qdrt                                                          V,H and T,L,B,R
  sing (float), doub (double)                                         numbers
  bool                                                                true or false
  type, enum, keyw, prop, sign                                        codes
  psn (psn)                                                           HIGH:LOW or LOW
  TEXT (text), cstr, pstr, encs, utxt (unicode), sutx, ut16, utf8     text
  any other                                                           bytes in hexadecimal
Several values but texts, with commas between them, are an array. TYPE#HEX gives the bytes of any
type. KEY[1]=TYPE:VALUE, KEY[2]=... are the items of a list, KEY.ITEM=TYPE:VALUE those of a record,
also in each other; KEY=list: and KEY=reco: are empty ones. A reply is printed in the same form, one
parameter or item a line.

Exit status:
  0    done
  1    the server answered with an error, printed as "errn -1708 (errAEEventNotHandled)"
  2    the command line makes no sense
  65   the file has no resources, or they are damaged
  66   there is no such file, or it may not be read
  69   nobody holds the name, or there is no such process or resource
  70   the host refused or failed
  76   the server went away before it answered
  124  the time is over

Examples:
  qrl ports --json
  qrl send com.quorvant.qrlagentd.1.1 QrlP Mcam
  qrl send com.example.server.1.1 TesT echo --param ----=TEXT:hello --param numb=long:-5
  qrl send com.example.server.1.1 TesT echo --param IDs#=long:1,2,3 --param 'name=utf8:☃'
  qrl send com.example.server.1.1 TesT echo --param list[1]=bool:true --param list[2].name=TEXT:x
  qrl send --process 0:4711 aevt quit --no-reply
  qrl wait com.quorvant.qrlagentd.1.1 --timeout 10
  qrl resources qrlagentd.rsrc
  qrl resources qrlagentd.rsrc DITL 138 --hex
  qrl quit com.quorvant.qrlagentd.1.1 && qrl wait com.quorvant.qrlagentd.1.1 --gone --timeout 5
)help";

ExitStatus run(const HelpCommand& command) {
  std::cout << command.text;
  return kDone;
}

}  // namespace qrl
