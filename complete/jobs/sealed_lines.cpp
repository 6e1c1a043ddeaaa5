#include "complete/jobs/sealed_lines.h"

#include "complete/files/digest.h"
#include "complete/files/words.h"

namespace latbox::complete::jobs {

std::istringstream linesBehind(const std::string& head, std::string_view text) {
  const auto body = unsealed(text);
  if (!body) throw BadWords("its end is missing, or it was changed");
  std::istringstream lines{std::string(*body)};
  std::string line;
  if (!std::getline(lines, line) || line != head) throw BadWords("its first line is another one");
  return lines;
}

}  // namespace latbox::complete::jobs
