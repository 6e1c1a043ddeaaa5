#include "check/files/solution_file.h"

namespace latbox::check {

void SolutionFile::forEach(const Visit& visit) {
  lines_.rewind();
  long number = 0;
  while (const auto line = lines_.next()) {
    const std::uint64_t offset = line->offset;
    if (const auto solution = read(*line, ++number)) visit(*solution, offset);
  }
}

std::optional<Solution> SolutionFile::read(const LineFile::Line& line, long number) {
  try {
    return readSolution(line.text, number);
  } catch (const BrokenOff&) {
    if (line.hasEnd) throw;
    tornLine_ = number;
    return std::nullopt;
  }
}

Solution SolutionFile::at(std::uint64_t offset) {
  const LineFile::Line line = lines_.at(offset);
  try {
    if (auto solution = readSolution(line.text, 0)) return std::move(*solution);
  } catch (const Unreadable&) {
    // It could be read before.
  }
  throw Unreadable(CHANGED);
}

}  // namespace latbox::check
