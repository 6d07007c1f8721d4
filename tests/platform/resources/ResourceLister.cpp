// Licence: MIT, see LICENSE.
// A program that tells which resources it has from the start: a line "TYPE ID size" for each.
#include <CarbonCore/MacMemory.h>
#include <CarbonCore/Resources.h>

#include <cstdio>

int main() {
  std::printf("files: %s\n", CurResFile() == kSystemResFile ? "none" : "application");
  for (SInt16 i = 1; i <= Count1Types(); ++i) {
    ResType type = 0;
    Get1IndType(&type, i);
    for (SInt16 j = 1; j <= Count1Resources(type); ++j) {
      Handle resource = Get1IndResource(type, j);
      ResID id = 0;
      GetResInfo(resource, &id, nullptr, nullptr);
      std::printf("%c%c%c%c %d %ld\n", static_cast<char>(type >> 24), static_cast<char>(type >> 16),
                  static_cast<char>(type >> 8), static_cast<char>(type), id,
                  static_cast<long>(GetHandleSize(resource)));
    }
  }
  return 0;
}
