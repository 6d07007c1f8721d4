// Licence: MIT, see LICENSE.
// A client that does what lines of its input tell it and prints one line for each. It looks the
// port up that its argument names, prints the result, and ends with its input. Time-outs are in
// ticks.
//
//   find                         looks the port up again: STATUS
//   ask CLASS ID NUMBER TICKS    a request: STATUS ANSWER HANDLED SPENT ENDED
//   again TICKS                  the last request once more, likewise
//   many COUNT FIRST             requests with numbers from FIRST on: how many came back right
//   data BYTES TICKS             sends bytes and compares what comes back: STATUS same|different
//   fill TICKS                   events without a reply until one fails: COUNT STATUS SPENT
//   tell ID COUNT                events without a reply and without a time-out: COUNT STATUS SPENT
//   pour COUNT BYTES             requests whose answers it does not read: COUNT STATUS SPENT
//
// SPENT is in microseconds, ENDED in microseconds of the monotonic clock.
#include <quorvant/aemessaging/aemessaging.h>

#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr AEEventClass kTestClass = 'TesT';
constexpr SInt32 kPatience = 60 * 60;

using Clock = std::chrono::steady_clock;

long long microseconds(Clock::duration span) {
  return std::chrono::duration_cast<std::chrono::microseconds>(span).count();
}

FourCharCode codeOf(const std::string& text) {
  FourCharCode code = 0;
  for (const char letter : text) code = code << 8 | static_cast<unsigned char>(letter);
  return code;
}

SInt32 numberIn(const AppleEvent& reply, AEKeyword key) {
  SInt32 number = -1;
  AEGetParamPtr(&reply, key, typeSInt32, nullptr, &number, sizeof number, nullptr);
  return number;
}

std::vector<char> patternOf(std::size_t size) {
  std::vector<char> bytes(size);
  UInt32 state = 1;
  for (char& byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

class Client {
 public:
  explicit Client(const char* name) { std::strncpy(address.name, name, sizeof address.name - 1); }
  ~Client() {
    if (last) last->finalizeEvent();
  }

  SInt32 find() {
    address.located = false;
    return address.initialize();
  }

  void ask(AEEventClass eventClass, AEEventID eventID, SInt32 number, SInt32 ticks) {
    if (last) last->finalizeEvent();
    last = std::make_unique<QRLPortAppleEvent>();
    const OSErr made = make(*last, eventClass, eventID, kAEWaitReply);
    if (made == noErr) putNumber(*last, number);
    again(ticks);
  }

  void again(SInt32 ticks) {
    const Clock::time_point start = Clock::now();
    const SInt32 status = last->sendEvent(kAECanInteract, ticks, kAENormalPriority);
    const Clock::time_point end = Clock::now();
    const bool isAnswered = last->replyReceived;
    std::cout << status << ' ' << (isAnswered ? numberIn(last->reply, keyDirectObject) : -1) << ' '
              << (isAnswered ? numberIn(last->reply, 'hand') : -1) << ' '
              << microseconds(end - start) << ' ' << microseconds(end.time_since_epoch())
              << std::endl;
  }

  void askMany(SInt32 count, SInt32 first) {
    SInt32 right = 0;
    for (SInt32 number = first; number < first + count; ++number) {
      QRLPortAppleEvent event;
      if (make(event, kTestClass, 'numb', kAEWaitReply) != noErr) break;
      putNumber(event, number);
      const SInt32 status = event.sendEvent(kAECanInteract, kPatience, kAENormalPriority);
      if (status == noErr && numberIn(event.reply, keyDirectObject) == number) ++right;
      event.finalizeEvent();
    }
    std::cout << right << std::endl;
  }

  void sendData(std::size_t size, SInt32 ticks) {
    const std::vector<char> sent = patternOf(size);
    QRLPortAppleEvent event;
    SInt32 status = make(event, kTestClass, 'data', kAEWaitReply);
    if (status == noErr) status = putData(event, sent);
    if (status == noErr) status = event.sendEvent(kAECanInteract, ticks, kAENormalPriority);
    std::cout << status << ' '
              << (status == noErr && carries(event.reply, sent) ? "same" : "different")
              << std::endl;
    event.finalizeEvent();
  }

  void fill(SInt32 ticks) {
    QRLPortAppleEvent event;
    if (make(event, kTestClass, 'numb', kAENoReply) == noErr) putNumber(event, 0);
    repeat(event, -1, ticks);
  }

  void tell(AEEventID eventID, SInt32 count) {
    QRLPortAppleEvent event;
    if (make(event, kTestClass, eventID, kAENoReply) == noErr) putNumber(event, 0);
    repeat(event, count, kNoTimeOut);
  }

  void pour(SInt32 count, SInt32 size) {
    if (last) last->finalizeEvent();
    last = std::make_unique<QRLPortAppleEvent>();
    if (make(*last, kTestClass, 'pour', kAEQueueReply) == noErr) putNumber(*last, size);
    repeat(*last, count, kPatience);
  }

 private:
  OSErr make(QRLPortAppleEvent& event, AEEventClass eventClass, AEEventID eventID, SInt32 mode) {
    event.eventClass = eventClass;
    event.eventID = eventID;
    event.replyMode = mode;
    event.returnID = kAutoGenerateReturnID;
    event.transactionID = kAnyTransactionID;
    event.destination = &address;
    return event.createEvent();
  }

  static void putNumber(QRLPortAppleEvent& event, SInt32 number) {
    AEPutParamPtr(&event.event, keyDirectObject, typeSInt32, &number, sizeof number);
  }

  static OSErr putData(QRLPortAppleEvent& event, const std::vector<char>& bytes) {
    return AEPutParamPtr(&event.event, keyDirectObject, 'DATA', bytes.data(),
                         static_cast<Size>(bytes.size()));
  }

  static bool carries(const AppleEvent& reply, const std::vector<char>& sent) {
    std::vector<char> back(sent.size() + 1);
    Size size = 0;
    const OSErr error = AEGetParamPtr(&reply, keyDirectObject, 'DATA', nullptr, back.data(),
                                      static_cast<Size>(back.size()), &size);
    back.resize(static_cast<std::size_t>(size));
    return error == noErr && back == sent;
  }

  static void repeat(QRLPortAppleEvent& event, SInt32 count, SInt32 ticks) {
    SInt32 sent = 0;
    SInt32 status = noErr;
    Clock::time_point start = Clock::now();
    for (; sent != count && status == noErr; ++sent) {
      start = Clock::now();
      status = event.sendEvent(kAECanInteract, ticks, kAENormalPriority);
    }
    std::cout << (status == noErr ? sent : sent - 1) << ' ' << status << ' '
              << microseconds(Clock::now() - start) << std::endl;
  }

  QRLPortDestinationAddress address;
  std::unique_ptr<QRLPortAppleEvent> last;
};

void obey(Client& client, const std::string& line) {
  std::istringstream words(line);
  std::string verb, eventClass, eventID;
  words >> verb;
  if (verb == "ask") words >> eventClass;
  if (verb == "ask" || verb == "tell") words >> eventID;
  SInt32 first = 0;
  SInt32 second = 0;
  words >> first >> second;
  if (verb == "find") std::cout << client.find() << std::endl;
  if (verb == "ask") client.ask(codeOf(eventClass), codeOf(eventID), first, second);
  if (verb == "again") client.again(first);
  if (verb == "many") client.askMany(first, second);
  if (verb == "data") client.sendData(static_cast<std::size_t>(first), second);
  if (verb == "fill") client.fill(first);
  if (verb == "tell") client.tell(codeOf(eventID), first);
  if (verb == "pour") client.pour(first, second);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Client client(argv[1]);
  std::cout << client.find() << std::endl;
  for (std::string line; std::getline(std::cin, line);) obey(client, line);
  return 0;
}
