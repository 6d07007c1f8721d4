// Licence: MIT, see LICENSE.
// A process of its own for tests of the Process Manager. It does what each line of its input says
// and answers with one line; the end of its input ends it.
#include <HIServices/Processes.h>

#include <iostream>
#include <string>

namespace {

void checkIn() {
  ProcessSerialNumber psn = {9, 9};
  const OSErr error = GetCurrentProcess(&psn);
  std::cout << error << ' ' << psn.highLongOfPSN << ' ' << psn.lowLongOfPSN << std::endl;
}

void list() {
  ProcessSerialNumber psn = {0, kNoProcess};
  while (GetNextProcess(&psn) == 0) std::cout << psn.lowLongOfPSN << ' ';
  std::cout << "end" << std::endl;
}

}  // namespace

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "check in") {
      checkIn();
    } else if (line == "list") {
      list();
    } else {
      return 2;
    }
  }
  return 0;
}
