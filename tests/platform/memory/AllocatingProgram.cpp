// Licence: MIT, see LICENSE.
// A program that makes six handles and writes a character for each: + for one made, - for none.
#include <CarbonCore/MacMemory.h>

#include <cstdio>

int main() {
  for (int i = 0; i < 6; ++i) {
    Handle handle = NewHandle(16);
    std::putchar(handle != nullptr ? '+' : '-');
    if (handle != nullptr) DisposeHandle(handle);
  }
  std::putchar('\n');
  return 0;
}
