// Licence: MIT, see LICENSE.
#include "tools/qrl/Output.h"

#include <algorithm>
#include <iostream>

namespace qrl {

std::string withoutControls(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return text;
}

ExitStatus fail(ExitStatus status, const std::string& text) {
  std::cout.flush();
  std::cerr << "qrl: " << withoutControls(text) << '\n';
  return status;
}

}  // namespace qrl
