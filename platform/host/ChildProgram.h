// Licence: MIT, see LICENSE.
// Another program that runs beside this process until it has an answer.
#ifndef PLATFORM_HOST_CHILDPROGRAM_H
#define PLATFORM_HOST_CHILDPROGRAM_H

#include <string>
#include <vector>

#include "platform/host/Descriptor.h"
#include "platform/host/Result.h"
#include "platform/host/WakeEvent.h"

namespace platform::host {

class ChildProgram final {
 public:
  /// How a program is asked to end: some tidy up after an interruption only.
  enum class Ending { kTerminate, kInterrupt };

  /// Starts the program at a path; its input and output are the null device, its errors ours.
  /// `command` holds the path, then the arguments. Programs of the host's own are started directly,
  /// whatever processor this process is built for. The host asks the program to end when the thread
  /// that started it ends, however that comes about, the death of this process included.
  static Result<ChildProgram> start(const std::vector<std::string>& command,
                                    Ending ending = Ending::kTerminate);

  ChildProgram(ChildProgram&& other) noexcept;
  ChildProgram& operator=(ChildProgram&&) = delete;
  /// Ends the program if it still runs: asks it to, and kills it if it takes its time.
  ~ChildProgram();

  /// Waits for its end and gives its exit status. kWouldBlock when the event was raised first;
  /// kFailed when a signal ended it.
  Result<int> wait(const WakeEvent& wake);

 private:
  ChildProgram(int started, int signal, Descriptor end)
      : process(started), endingSignal(signal), life(std::move(end)) {}
  Result<int> collect();

  int process;
  int endingSignal;
  Descriptor life;  // reads its end when the program has ended, which holds the other end
};

}  // namespace platform::host

#endif
