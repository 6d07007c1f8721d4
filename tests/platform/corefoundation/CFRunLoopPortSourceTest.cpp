// Licence: MIT, see LICENSE.
// Messages that ports bring to run loops.
#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>

#include <cstring>
#include <future>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/platform/corefoundation/PortTesting.h"
#include "tests/support/StressCount.h"

namespace {

using namespace tests;
using platform::mach::Deadline;
using platform::mach::Message;
using platform::mach::MessageBlock;
using Names = std::vector<std::string>;

class RunLoopPortSource : public PortTest {
 protected:
  static mach_port_t allocate() {
    mach_port_t port = MACH_PORT_NULL;
    EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port), KERN_SUCCESS);
    return port;
  }
  static kern_return_t receive(mach_port_t port, Message& message) {
    return platform::mach::receive(port, message, Deadline::after(30'000'000'000));
  }
};

TEST_F(RunLoopPortSource, HandsAMessageOverAsItsBlock) {
  TestPort port(loop, [&](void* message, CFIndex size) {
    const auto* header = static_cast<const mach_msg_header_t*>(message);
    EXPECT_EQ(size, CFIndex{sizeof(MessageBlock)});
    EXPECT_EQ(header->msgh_size, sizeof(MessageBlock));
    EXPECT_EQ(header->msgh_id, kTestMessage);
    EXPECT_EQ(header->msgh_local_port, port.name());
    EXPECT_EQ(header->msgh_remote_port, MACH_PORT_NULL);
    log.push_back(textOf(message));
  });
  port.send("hello");
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, Names{"hello"});
}

TEST_F(RunLoopPortSource, ServesOneMessageARun) {
  TestPort port(loop, [&](void* message, CFIndex) { log.push_back(textOf(message)); });
  for (const char* text : {"first", "second", "third"}) port.send(text);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, Names{"first"});
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_EQ(log, (Names{"first", "second"}));
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"first", "second", "third"}));
}

TEST_F(RunLoopPortSource, ServesItsPortAgainInANestedRun) {
  TestPort port(loop, [&](void* message, CFIndex) {
    const std::string text = textOf(message);
    if (text == "outer") {
      EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
    }
    log.push_back(text);
  });
  port.send("outer");
  port.send("inner");
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, (Names{"inner", "outer"}));
}

TEST_F(RunLoopPortSource, ServesOnlyInItsModes) {
  TestPort port(loop, [&](void* message, CFIndex) { log.push_back(textOf(message)); });
  Source other([] {});
  add(other, CFSTR("other"));
  port.send("later");
  EXPECT_EQ(CFRunLoopRunInMode(CFSTR("other"), 0.001, false), kCFRunLoopRunTimedOut);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, Names{"later"});
}

TEST_F(RunLoopPortSource, RemovedLeavesMessagesWaiting) {
  TestPort port(loop, [&](void* message, CFIndex) { log.push_back(textOf(message)); });
  Source other([] {});
  add(other);
  CFRunLoopRemoveSource(loop, port.runLoopSource(), kCFRunLoopDefaultMode);
  port.send("kept");
  EXPECT_EQ(turn(), kCFRunLoopRunTimedOut);
  EXPECT_TRUE(log.empty());
  CFRunLoopAddSource(loop, port.runLoopSource(), kCFRunLoopDefaultMode);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(log, Names{"kept"});
}

TEST_F(RunLoopPortSource, InvalidatedByItsOwnCallBackServesNoMore) {
  TestPort port(loop, [&](void* message, CFIndex) {
    log.push_back(textOf(message));
    CFMachPortInvalidate(port);
  });
  port.send("first");
  port.send("second");
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log, Names{"first"});
}

TEST_F(RunLoopPortSource, WhosePortDiesInItsCallBackEndsTheRun) {
  TestPort port(loop, [&](void* message, CFIndex) {
    log.push_back(textOf(message));
    mach_port_destroy(mach_task_self(), port.name());
  });
  port.send("last");
  EXPECT_EQ(run(), kCFRunLoopRunFinished);
  EXPECT_EQ(log, Names{"last"});
  EXPECT_FALSE(CFMachPortIsValid(port));
}

TEST_F(RunLoopPortSource, GivesUpTheRightToAnswerThatNobodyTook) {
  const mach_port_t answers = allocate();
  TestPort port(loop, [](void*, CFIndex) {});
  EXPECT_EQ(sendText(port.name(), "question", answers), MACH_MSG_SUCCESS);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  Message message;
  EXPECT_EQ(receive(answers, message), MACH_MSG_SUCCESS);
  EXPECT_EQ(message.id, MACH_NOTIFY_SEND_ONCE);
  mach_port_destroy(mach_task_self(), answers);
}

TEST_F(RunLoopPortSource, LeavesWhatItsCallBackTookAlone) {
  std::optional<Message> taken;
  const mach_port_t answers = allocate();
  TestPort port(loop, [&](void* message, CFIndex) {
    taken = platform::mach::takeFromBlock(static_cast<mach_msg_header_t*>(message));
  });
  EXPECT_EQ(sendText(port.name(), "question", answers), MACH_MSG_SUCCESS);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->body.size, 8u);
  EXPECT_EQ(std::memcmp(taken->body.memory.get(), "question", 8), 0);
  EXPECT_EQ(sendText(taken->reply, "answer"), MACH_MSG_SUCCESS);
  Message message;
  EXPECT_EQ(receive(answers, message), MACH_MSG_SUCCESS);
  EXPECT_EQ(message.body.size, 6u);
  mach_port_destroy(mach_task_self(), answers);
}

TEST_F(RunLoopPortSource, OfAThreadAnswersAnotherThread) {
  const int rounds = stressCount(1000);
  std::promise<std::pair<CFRunLoopRef, mach_port_t>> ready;
  std::thread server([&] {
    TestPort port(CFRunLoopGetCurrent(), [](void* message, CFIndex) {
      auto question =
          platform::mach::takeFromBlock(static_cast<mach_msg_header_t*>(message)).value();
      platform::mach::send(question.reply, MACH_PORT_NULL, question.id + 1, question.body.bytes(),
                           Deadline::never());
    });
    ready.set_value({CFRunLoopGetCurrent(), port.name()});
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, kPatience, false), kCFRunLoopRunStopped);
  });
  const auto [serverLoop, serverPort] = ready.get_future().get();
  const mach_port_t answers = allocate();
  for (int round = 0; round < rounds; ++round) {
    ASSERT_EQ(sendText(serverPort, "ping", answers, round), MACH_MSG_SUCCESS);
    Message answer;
    ASSERT_EQ(receive(answers, answer), MACH_MSG_SUCCESS);
    ASSERT_EQ(answer.id, round + 1);
  }
  CFRunLoopStop(serverLoop);
  server.join();
  mach_port_destroy(mach_task_self(), answers);
}

TEST_F(RunLoopPortSource, MayLoseItsPortToAnotherThread) {
  const int rounds = stressCount(300);
  for (int round = 0; round < rounds; ++round) {
    TestPort port(loop, [](void*, CFIndex) {});
    std::thread killer([&] { mach_port_destroy(mach_task_self(), port.name()); });
    EXPECT_EQ(run(), kCFRunLoopRunFinished);
    killer.join();
  }
}

// A version-1 source of a program's own.
struct Own {
  mach_port_t port = MACH_PORT_NULL;
  int asked = 0;
  Names log;
};

CFRunLoopSourceRef createOwn(Own& own, void* (*perform)(void*, CFIndex, CFAllocatorRef, void*)) {
  CFRunLoopSourceContext1 context{};
  context.version = 1;
  context.info = &own;
  context.getPort = [](void* info) {
    ++static_cast<Own*>(info)->asked;
    return static_cast<Own*>(info)->port;
  };
  context.perform = perform;
  return CFRunLoopSourceCreate(nullptr, 0, reinterpret_cast<CFRunLoopSourceContext*>(&context));
}

void* noteText(void* message, CFIndex, CFAllocatorRef, void* info) {
  static_cast<Own*>(info)->log.push_back(textOf(message));
  return nullptr;
}

// Answers in capitals, in the shape of the message that it got.
void* answer(void* message, CFIndex size, CFAllocatorRef allocator, void*) {
  auto* question = static_cast<MessageBlock*>(message);
  auto* block = static_cast<MessageBlock*>(CFAllocatorAllocate(allocator, size, 0));
  new (block) MessageBlock(*question);
  question->header.msgh_remote_port = MACH_PORT_NULL;
  question->data.address = nullptr;
  auto* text = static_cast<char*>(block->data.address);
  for (mach_msg_size_t i = 0; i < block->data.size; ++i) text[i] = static_cast<char>(text[i] - 32);
  return block;
}

TEST_F(RunLoopPortSource, OfAProgramIsAskedForItsPortWhenItJoinsAMode) {
  Own own{allocate(), 0, {}};
  const CFRunLoopSourceRef source = createOwn(own, noteText);
  EXPECT_EQ(own.asked, 0);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  EXPECT_EQ(own.asked, 1);
  EXPECT_EQ(sendText(own.port, "text"), MACH_MSG_SUCCESS);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  EXPECT_EQ(own.log, Names{"text"});
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
  mach_port_destroy(mach_task_self(), own.port);
}

TEST_F(RunLoopPortSource, OfAProgramHasItsAnswerSent) {
  Own own{allocate(), 0, {}};
  const mach_port_t answers = allocate();
  const CFRunLoopSourceRef source = createOwn(own, answer);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  EXPECT_EQ(sendText(own.port, "question", answers), MACH_MSG_SUCCESS);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  Message message;
  EXPECT_EQ(receive(answers, message), MACH_MSG_SUCCESS);
  EXPECT_EQ(message.id, kTestMessage);
  EXPECT_EQ(std::memcmp(message.body.memory.get(), "QUESTION", 8), 0);
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
  for (const mach_port_t port : {own.port, answers}) mach_port_destroy(mach_task_self(), port);
}

TEST_F(RunLoopPortSource, OfAProgramMayAnswerNobody) {
  Own own{allocate(), 0, {}};
  const CFRunLoopSourceRef source = createOwn(own, answer);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  EXPECT_EQ(sendText(own.port, "question"), MACH_MSG_SUCCESS);
  EXPECT_EQ(runForOneSource(), kCFRunLoopRunHandledSource);
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
  mach_port_destroy(mach_task_self(), own.port);
}

TEST_F(RunLoopPortSource, WithoutAPortNeverPerforms) {
  Own own;
  const CFRunLoopSourceRef source = createOwn(own, noteText);
  CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  CFRunLoopSourceSignal(source);
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.001, false), kCFRunLoopRunTimedOut);
  EXPECT_TRUE(own.log.empty());
  CFRunLoopSourceInvalidate(source);
  CFRelease(source);
}

TEST_F(RunLoopPortSource, GivesItsContextForItsVersion) {
  Own own;
  const CFRunLoopSourceRef source = createOwn(own, noteText);
  CFRunLoopSourceContext1 context{};
  context.version = 1;
  CFRunLoopSourceGetContext(source, reinterpret_cast<CFRunLoopSourceContext*>(&context));
  EXPECT_EQ(context.info, &own);
  EXPECT_EQ(context.perform, &noteText);
  CFRunLoopSourceContext other{};
  CFRunLoopSourceGetContext(source, &other);
  EXPECT_EQ(other.info, nullptr);
  CFRelease(source);
}

}  // namespace
