#include "lib/text.h"

namespace latbox {

std::string trimmed(const std::string& text, const char* blanks) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace latbox
