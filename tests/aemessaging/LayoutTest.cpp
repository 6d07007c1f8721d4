// Licence: MIT, see LICENSE.
// Classes that other programs derive from and read keep the order of their fields and of their
// virtual functions. The offsets of the 32-bit build are those of the original.
#include <gtest/gtest.h>
#include <quorvant/aemessaging/aemessaging.h>

#include <cstring>

namespace {

constexpr bool kIs32Bit = sizeof(void*) == 4;

struct Field {
  const char* name;
  std::size_t actual;
  std::size_t in32Bit;
  std::size_t in64Bit;
};

// Every class in question begins with the pointer to its virtual functions.
template <typename T, typename F>
std::size_t offset(const T& object, const F& field) {
  return static_cast<std::size_t>(reinterpret_cast<const char*>(&field) -
                                  reinterpret_cast<const char*>(&object));
}

void expectLayout(std::initializer_list<Field> fields) {
  for (const Field& field : fields) {
    EXPECT_EQ(field.actual, kIs32Bit ? field.in32Bit : field.in64Bit) << field.name;
  }
}

// The number of a virtual function in its table. A pointer to a virtual member function is one more
// than its offset there; the destructor takes the slots 0 and 1.
template <typename Member>
std::size_t slot(Member member) {
  std::size_t words[2];
  static_assert(sizeof member == sizeof words);
  std::memcpy(words, &member, sizeof words);
  EXPECT_EQ(words[0] % sizeof(void*), 1u) << "not virtual";
  return words[0] / sizeof(void*);
}

class Listener : public QRLPortAEMachPortListener {
 public:
  void check() const {
    expectLayout({{"machPort", offset(*this, machPort), 4, 8},
                  {"runLoopSource", offset(*this, runLoopSource), 8, 16},
                  {"callback", offset(*this, callback), 12, 24},
                  {"refcon", offset(*this, refcon), 16, 32},
                  {"registeredPort", offset(*this, registeredPort), 20, 40},
                  {"portName", offset(*this, portName), 24, 44},
                  {"size", sizeof(QRLPortAEMachPortListener), 152, 176}});
    EXPECT_EQ(sizeof portName, 128u);
  }
};

class Event : public QRLPortAppleEvent {
 public:
  using QRLPortAppleEvent::doSendEvent;
};

class WrapperBase : public QRLAppleEventWrapper {
 public:
  using QRLAppleEventWrapper::doSendEvent;
};

TEST(Layout, OfTheListener) { Listener().check(); }

TEST(Layout, OfTheWrapper) {
  const Event e;
  expectLayout({{"target", offset(e, e.target), 4, 8},
                {"targetCreated", offset(e, e.targetCreated), 12, 24},
                {"eventCreated", offset(e, e.eventCreated), 16, 28},
                {"replyReceived", offset(e, e.replyReceived), 20, 32},
                {"replyHadError", offset(e, e.replyHadError), 24, 36},
                {"eventClass", offset(e, e.eventClass), 28, 40},
                {"eventID", offset(e, e.eventID), 32, 44},
                {"replyMode", offset(e, e.replyMode), 36, 48},
                {"returnID", offset(e, e.returnID), 40, 52},
                {"transactionID", offset(e, e.transactionID), 44, 56},
                {"destination", offset(e, e.destination), 48, 64},
                {"returnAddress", offset(e, e.returnAddress), 52, 72},
                {"event", offset(e, e.event), 64, 88},
                {"reply", offset(e, e.reply), 72, 104},
                {"size", sizeof e, 80, 120}});
  EXPECT_EQ(sizeof e.returnID, 2u);
}

TEST(Layout, OfThePortDestination) {
  const QRLPortDestinationAddress a;
  expectLayout({{"port", offset(a, a.port), 4, 8},
                {"name", offset(a, a.name), 8, 12},
                {"located", offset(a, a.located), 136, 140},
                {"size", sizeof a, 140, 144}});
  EXPECT_EQ(sizeof a.located, 4u);
}

TEST(Layout, OfTheProcessDestination) {
  const QRLProcessDestinationAddress a;
  expectLayout({{"psn", offset(a, a.psn), 4, 8}, {"size", sizeof a, 12, 16}});
}

TEST(Layout, OfTheReturnAddress) {
  const QRLAppleEventReturnAddress a;
  expectLayout({{"port", offset(a, a.port), 4, 8},
                {"allocated", offset(a, a.allocated), 8, 12},
                {"size", sizeof a, 12, 16}});
}

TEST(Slots, OfTheListener) {
  EXPECT_EQ(slot(&QRLPortAEMachPortListener::ListenOnPort), 2u);
  EXPECT_EQ(slot(&QRLPortAEMachPortListener::PortCallback), 3u);
  EXPECT_EQ(slot(&QRLPortAEMachPortListener::PortInvalidated), 4u);
}

TEST(Slots, OfTheWrapper) {
  EXPECT_EQ(slot(&QRLAppleEventWrapper::finalizeEvent), 2u);
  EXPECT_EQ(slot(&WrapperBase::doSendEvent), 3u);
  EXPECT_EQ(slot(&Event::doSendEvent), 3u);
}

TEST(Slots, OfTheDestinations) {
  EXPECT_EQ(slot(&QRLAppleEventDestinationAddress::initialize), 2u);
  EXPECT_EQ(slot(&QRLAppleEventDestinationAddress::getDestinationAddress), 3u);
  EXPECT_EQ(slot(&QRLPortDestinationAddress::initialize), 2u);
  EXPECT_EQ(slot(&QRLPortDestinationAddress::getDestinationAddress), 3u);
  EXPECT_EQ(slot(&QRLProcessDestinationAddress::initialize), 2u);
  EXPECT_EQ(slot(&QRLProcessDestinationAddress::getDestinationAddress), 3u);
}

}  // namespace
