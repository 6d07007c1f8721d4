// Licence: MIT, see LICENSE.
#include "platform/corefoundation/RunLoopMode.h"

#include <algorithm>
#include <limits>

namespace platform::corefoundation {

namespace {

using Kind = RunLoopItem::Kind;

template <typename T, typename Entry>
T& as(const Entry& entry) {
  return static_cast<T&>(*entry.item.get());
}

template <typename T>
Held<T*> retained(T& object) {
  return Held<T*>::retaining(&object);
}

}  // namespace

bool RunLoopMode::isEmpty() const {
  return listOf(Kind::kSource).empty() && listOf(Kind::kTimer).empty();
}

bool RunLoopMode::contains(const RunLoopItem& item) const {
  const List& list = listOf(item.kind());
  return std::any_of(list.begin(), list.end(),
                     [&](const Entry& entry) { return entry.item.get() == &item; });
}

void RunLoopMode::insert(RunLoopItem& item, mach_port_name_t port) {
  List& list = listOf(item.kind());
  const auto place = std::upper_bound(
      list.begin(), list.end(), item.order(),
      [](CFIndex order, const Entry& entry) { return order < entry.item.get()->order(); });
  list.insert(place, Entry{Held<RunLoopItem*>::retaining(&item), port, ++lastNumber});
  noteObservers();
  if (port != MACH_PORT_NULL) portSet.insert(port);
}

Held<RunLoopItem*> RunLoopMode::remove(const RunLoopItem& item) {
  List& list = listOf(item.kind());
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&](const Entry& entry) { return entry.item.get() == &item; });
  if (found == list.end()) return {};
  Held<RunLoopItem*> reference = std::move(found->item);
  const mach_port_name_t port = found->port;
  list.erase(found);
  noteObservers();
  // The name may have been taken for another port since this one died.
  if (port != MACH_PORT_NULL && !sourceOf(port)) portSet.remove(port);
  return reference;
}

void RunLoopMode::noteObservers() {
  CFOptionFlags wanted = 0;
  for (const Entry& entry : listOf(Kind::kObserver)) {
    wanted |= as<const RunLoopObserver>(entry).activities();
  }
  observed.store(static_cast<UInt32>(wanted), std::memory_order_release);
}

RunLoopItem* RunLoopMode::anyItem() const {
  for (const List& list : lists) {
    if (!list.empty()) return list.back().item.get();
  }
  return nullptr;
}

bool RunLoopMode::hasSignalledSource() const {
  const List& list = listOf(Kind::kSource);
  return std::any_of(list.begin(), list.end(), [](const Entry& entry) {
    return as<const RunLoopSource>(entry).isSignalled();
  });
}

host::Nanoseconds RunLoopMode::nextTimerTime() const {
  host::Nanoseconds next = std::numeric_limits<host::Nanoseconds>::max();
  for (const Entry& entry : listOf(Kind::kTimer)) {
    next = std::min(next, as<const RunLoopTimer>(entry).nextTime());
  }
  return next;
}

CFAbsoluteTime RunLoopMode::nextTimerDate() const {
  CFAbsoluteTime next = 0;
  for (const Entry& entry : listOf(Kind::kTimer)) {
    const CFAbsoluteTime date = as<const RunLoopTimer>(entry).nextDate();
    if (next == 0 || date < next) next = date;
  }
  return next;
}

Held<RunLoopSource*> RunLoopMode::takeSignalled(Turn turn, Choice choice) {
  Entry* chosen = nullptr;
  for (Entry& entry : listOf(Kind::kSource)) {
    if (entry.served >= turn || !as<RunLoopSource>(entry).isSignalled()) continue;
    if (chosen == nullptr) {
      chosen = &entry;
      if (choice == Choice::kInOrder) break;
    } else if (entry.item.get()->order() != chosen->item.get()->order()) {
      break;
    } else if (entry.served < chosen->served) {
      chosen = &entry;
    }
  }
  // Another loop that has the source may have taken the signal: then the next turn looks again.
  if (chosen == nullptr || !as<RunLoopSource>(*chosen).takeSignal()) return {};
  chosen->served = turn;
  return retained(as<RunLoopSource>(*chosen));
}

Held<RunLoopTimer*> RunLoopMode::takeDueTimer(Turn turn, host::Nanoseconds now) {
  Entry* first = nullptr;
  host::Nanoseconds earliest = now;
  for (Entry& entry : listOf(Kind::kTimer)) {
    const host::Nanoseconds time = as<RunLoopTimer>(entry).nextTime();
    if (entry.served >= turn || time > earliest || (first != nullptr && time == earliest)) continue;
    first = &entry;
    earliest = time;
  }
  if (first == nullptr || !as<RunLoopTimer>(*first).beginFiring(now)) return {};
  first->served = turn;
  return retained(as<RunLoopTimer>(*first));
}

Held<RunLoopObserver*> RunLoopMode::takeObserver(Progress& progress, CFRunLoopActivity activity) {
  for (const Entry& entry : listOf(Kind::kObserver)) {
    const Progress place{entry.item.get()->order(), entry.number};
    if (!(progress < place) || !as<RunLoopObserver>(entry).beginCall(activity)) continue;
    progress = place;
    return retained(as<RunLoopObserver>(entry));
  }
  return {};
}

Held<RunLoopSource*> RunLoopMode::sourceOf(mach_port_name_t port) const {
  const List& list = listOf(Kind::kSource);
  // The youngest: an older one of the same name is about to go.
  const auto found = std::find_if(list.rbegin(), list.rend(),
                                  [&](const Entry& entry) { return entry.port == port; });
  if (found == list.rend()) return {};
  return retained(as<RunLoopSource>(*found));
}

}  // namespace platform::corefoundation
