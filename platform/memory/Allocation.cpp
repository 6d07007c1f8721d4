// Licence: MIT, see LICENSE.
#include "platform/memory/Allocation.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

namespace platform::memory {
namespace {

constexpr UInt32 kNever = 0;

// The turn that is left until the one that fails. Constant initialization: allocations may come
// before the setting is read.
std::atomic<UInt32> turnsLeft{kNever};
std::atomic<bool> failsOnwards{false};
std::atomic<bool> hasFailed{false};

/// Counts an allocation while a failure is awaited. False for the one that fails.
bool countTurn() {
  UInt32 left = turnsLeft;
  UInt32 next = 0;
  do {
    if (left == kNever) return true;
    next = left > 1 ? left - 1 : UInt32{failsOnwards ? 1U : kNever};
  } while (!turnsLeft.compare_exchange_weak(left, next));
  if (left > 1) return true;
  hasFailed = true;
  return false;
}

/// Takes QRL_FAIL_ALLOCATION. A text that is no such setting asks for no failure.
bool readSetting() {
  const char* setting = std::getenv("QRL_FAIL_ALLOCATION");
  if (setting == nullptr || *setting < '0' || *setting > '9') return false;
  char* end = nullptr;
  const unsigned long turn = std::strtoul(setting, &end, 10);
  const std::string_view rest(end);
  if (turn > UINT32_MAX || (!rest.empty() && rest != "+")) return false;
  failAllocation(static_cast<UInt32>(turn),
                 rest.empty() ? FailureRun::kOne : FailureRun::kAllFollowing);
  return true;
}

[[maybe_unused]] const bool settingWasRead = readSetting();

}  // namespace

bool mayAllocate() {
  if (turnsLeft.load(std::memory_order_relaxed) == kNever) [[likely]]
    return true;
  return countTurn();
}

void* allocate(std::size_t size) {
  return mayAllocate() ? std::malloc(std::max<std::size_t>(size, 1)) : nullptr;
}

void* allocateCleared(std::size_t size) {
  return mayAllocate() ? std::calloc(1, std::max<std::size_t>(size, 1)) : nullptr;
}

void* reallocate(void* block, std::size_t size) {
  return mayAllocate() ? std::realloc(block, std::max<std::size_t>(size, 1)) : nullptr;
}

void failAllocation(UInt32 turn, FailureRun run) {
  turnsLeft = kNever;
  hasFailed = false;
  failsOnwards = run == FailureRun::kAllFollowing;
  turnsLeft = turn;
}

bool allocationHasFailed() { return hasFailed; }

}  // namespace platform::memory
