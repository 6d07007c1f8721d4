// Licence: MIT, see LICENSE.
#include "platform/events/EventQueue.h"

#include <AE/AEMach.h>
#include <CarbonCore/MacErrors.h>
#include <gtest/gtest.h>
#include <mach/mach.h>

#include <cstdlib>
#include <cstring>

namespace {

using namespace platform;
using events::EventQueue;

/// Makes messages by sending events through a port and taking them out again.
class Queue : public testing::Test {
 protected:
  Queue() {
    EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port), KERN_SUCCESS);
    EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &answers),
              KERN_SUCCESS);
  }
  ~Queue() override {
    mach_port_destroy(mach_task_self(), port);
    mach_port_destroy(mach_task_self(), answers);
  }

  mach::Message messageOf(AEEventClass eventClass, AEEventID eventID,
                          AESendMode mode = kAENoReply) {
    AEAddressDesc target;
    EXPECT_EQ(AECreateDesc(typeMachPort, &port, sizeof port, &target), noErr);
    AppleEvent event;
    EXPECT_EQ(AECreateAppleEvent(eventClass, eventID, &target, 1, 0, &event), noErr);
    if (mode != kAENoReply) {
      EXPECT_EQ(AEPutAttributePtr(&event, keyReplyPortAttr, typeMachPort, &answers, sizeof answers),
                noErr);
    }
    EXPECT_EQ(AESendMessage(&event, nullptr, mode, kAEDefaultTimeout), noErr);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
    mach::Message message;
    EXPECT_EQ(mach::receive(port, message, mach::Deadline::immediate()), KERN_SUCCESS);
    return message;
  }

  /// Whether somebody was told that there will be no answer.
  bool answerWasGivenUp() const {
    mach::Message message;
    return mach::receive(answers, message, mach::Deadline::immediate()) == KERN_SUCCESS &&
           message.id == MACH_NOTIFY_SEND_ONCE;
  }

  static EventRecord recordOf(AEEventClass eventClass, AEEventID eventID) {
    return {kHighLevelEvent,
            eventClass,
            0,
            {static_cast<SInt16>(eventID >> 16), static_cast<SInt16>(eventID & 0xFFFF)},
            0};
  }

  mach_port_t port = MACH_PORT_NULL;
  mach_port_t answers = MACH_PORT_NULL;
  EventQueue queue;
};

TEST_F(Queue, DescribesAnEventByItsClassAndTheHalvesOfItsID) {
  queue.append(messageOf('QrlP', 0x80FF9001), 1234);
  const EventQueue::Entry* entry = queue.oldest(everyEvent);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(+entry->record.what, kHighLevelEvent);
  EXPECT_EQ(+entry->record.message, UInt32{'QrlP'});
  EXPECT_EQ(+entry->record.when, 1234u);
  EXPECT_EQ(+entry->record.where.v, static_cast<SInt16>(0x80FF));
  EXPECT_EQ(+entry->record.where.h, static_cast<SInt16>(0x9001));
  EXPECT_EQ(+entry->record.modifiers, 0);
}

TEST_F(Queue, ShowsTheOldestAndKeepsIt) {
  queue.append(messageOf('test', 'one '), 1);
  queue.append(messageOf('test', 'two '), 2);
  EXPECT_EQ(+queue.oldest(everyEvent)->record.when, 1u);
  EXPECT_EQ(+queue.oldest(highLevelEventMask)->record.when, 1u);
  EXPECT_EQ(queue.size(), 2u);
}

TEST_F(Queue, HasNothingForAMaskWithoutHighLevelEvents) {
  queue.append(messageOf('test', 'one '), 1);
  EXPECT_EQ(queue.oldest(0), nullptr);
  EXPECT_EQ(queue.oldest(static_cast<EventMask>(~highLevelEventMask)), nullptr);
}

TEST_F(Queue, DropsWhatIsNoAppleEvent) {
  mach::Message message;
  message.body.memory.reset(static_cast<std::byte*>(std::calloc(1, 64)));
  message.body.size = 64;
  queue.append(std::move(message), 1);
  queue.append(mach::Message(), 2);
  EXPECT_EQ(queue.size(), 0u);
}

TEST_F(Queue, TellsTheSenderOfAnythingThatItDrops) {
  mach::Message message = messageOf('test', 'one ', kAEQueueReply);
  message.body.size = 3;
  queue.append(std::move(message), 1);
  EXPECT_TRUE(answerWasGivenUp());
}

TEST_F(Queue, KeepsTheRightToAnswerWithTheEvent) {
  queue.append(messageOf('test', 'one ', kAEQueueReply), 1);
  EXPECT_FALSE(answerWasGivenUp());
  std::optional<events::OwnedMessage> taken = queue.take(recordOf('test', 'one '));
  ASSERT_TRUE(taken);
  const mach::Message message = taken->take();
  EXPECT_NE(message.reply, mach_port_name_t{MACH_PORT_NULL});
  taken.reset();
  EXPECT_FALSE(answerWasGivenUp());
  mach_port_deallocate(mach_task_self(), message.reply);
  EXPECT_TRUE(answerWasGivenUp());
}

TEST_F(Queue, TakesTheOldestOfAKind) {
  queue.append(messageOf('test', 'one '), 1);
  queue.append(messageOf('test', 'two '), 2);
  queue.append(messageOf('test', 'two '), 3);
  EXPECT_TRUE(queue.take(recordOf('test', 'two ')));
  EXPECT_EQ(queue.size(), 2u);
  EXPECT_EQ(+queue.firstAfter(0)->record.when, 1u);
  EXPECT_EQ(+queue.firstAfter(1)->record.when, 3u);
}

TEST_F(Queue, TakesNothingOfAnotherClassOrID) {
  queue.append(messageOf('test', 'one '), 1);
  EXPECT_FALSE(queue.take(recordOf('tesT', 'one ')));
  EXPECT_FALSE(queue.take(recordOf('test', 'onE ')));
  EXPECT_FALSE(queue.take(recordOf('test', 'One ')));
  EXPECT_EQ(queue.size(), 1u);
}

TEST_F(Queue, TakesWhatWasSetAsideFirst) {
  queue.append(messageOf('test', 'one '), 1);
  queue.append(messageOf('test', 'one '), 2);
  queue.setAsideOldest();
  EXPECT_EQ(queue.size(), 1u);
  EXPECT_EQ(+queue.oldest(everyEvent)->record.when, 2u);
  EXPECT_TRUE(queue.take(recordOf('test', 'one ')));
  EXPECT_EQ(queue.size(), 1u);
  EXPECT_TRUE(queue.take(recordOf('test', 'one ')));
  EXPECT_FALSE(queue.take(recordOf('test', 'one ')));
}

TEST_F(Queue, LosesWhatWasSetAsideWhenTheNextIs) {
  queue.append(messageOf('test', 'one ', kAEQueueReply), 1);
  queue.append(messageOf('test', 'two '), 2);
  queue.setAsideOldest();
  EXPECT_FALSE(answerWasGivenUp());
  queue.setAsideOldest();
  EXPECT_TRUE(answerWasGivenUp());
  EXPECT_FALSE(queue.take(recordOf('test', 'one ')));
  EXPECT_TRUE(queue.take(recordOf('test', 'two ')));
}

TEST_F(Queue, FindsTheNextThatCameAfterAnother) {
  EXPECT_EQ(queue.firstAfter(0), nullptr);
  queue.append(messageOf('test', 'one '), 1);
  queue.append(messageOf('test', 'two '), 2);
  const EventQueue::Entry* first = queue.firstAfter(0);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->arrival, 1u);
  EXPECT_EQ(queue.firstAfter(1)->arrival, 2u);
  EXPECT_EQ(queue.firstAfter(2), nullptr);
}

TEST_F(Queue, IsFullAtItsCapacity) {
  for (std::size_t i = 0; i < EventQueue::kCapacity; ++i) {
    EXPECT_FALSE(queue.isFull());
    queue.append(messageOf('test', 'one '), 1);
  }
  EXPECT_TRUE(queue.isFull());
  queue.setAsideOldest();
  EXPECT_FALSE(queue.isFull());
}

}  // namespace
