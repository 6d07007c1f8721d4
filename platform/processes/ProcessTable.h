// Licence: MIT, see LICENSE.
// The processes of the name space that have checked in, below the calls of
// <HIServices/Processes.h>. A process checks in on its first use of the Toolbox: it gets a serial
// number, a record that the others can read, and a private port for high-level events. All of it is
// gone when the process is, however it ended.
#ifndef PLATFORM_PROCESSES_PROCESSTABLE_H
#define PLATFORM_PROCESSES_PROCESSTABLE_H

#include <HIServices/Processes.h>
#include <mach/port.h>

#include "platform/processes/ProcessRecord.h"

namespace platform::processes {

/// This process's serial number, checking in if that has not happened yet. Results: noErr, or
/// procNotFound when the name space cannot be used.
OSStatus checkIn(ProcessSerialNumber& self);

/// The number under which this process is checked in, without looking whether the name space is
/// still the same one; {0, kNoProcess} before check-in.
ProcessSerialNumber presentSerialNumber();

/// The receive right of this process's private port, MACH_PORT_NULL before check-in.
mach_port_name_t privatePort();

/// A send right to a process's private port. kCurrentProcess ({0, 2}) is this process itself.
/// procNotFound when there is no such process.
OSStatus portOfProcess(const ProcessSerialNumber& process, mach_port_name_t& port);

/// Whether a serial number names this process, {0, kCurrentProcess} included.
bool isCurrentProcess(const ProcessSerialNumber& process);

/// A live process's own serial number and record, else procNotFound.
OSStatus findProcess(const ProcessSerialNumber& process, ProcessSerialNumber& found,
                     ProcessRecord& record);
OSStatus findProcessWithID(SInt32 pid, ProcessSerialNumber& found);

/// Moves on to the live process with the next higher serial number: procNotFound, and {0,
/// kNoProcess}, behind the last.
OSStatus advance(ProcessSerialNumber& process);

}  // namespace platform::processes

#endif
