// Licence: MIT, see LICENSE.
#ifndef PLATFORM_COREFOUNDATION_WITHOUTMEMORY_H
#define PLATFORM_COREFOUNDATION_WITHOUTMEMORY_H

#include <new>

namespace platform::corefoundation {

/// Runs the body of a call, turning exhausted memory into the result's null, 0 or false.
template <typename Call>
auto nullWithoutMemory(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace platform::corefoundation

#endif
