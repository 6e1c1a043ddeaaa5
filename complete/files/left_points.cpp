#include "complete/files/left_points.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "complete/files/points_file.h"

namespace latbox::complete {
namespace {

// "[ x1 ... ] | ...", with a point of the program.
bool isLineOf(const Program& program, const std::string& line) {
  std::istringstream words(line);
  std::string word;
  if (!(words >> word) || word != "[") return false;
  Point x;
  try {
    while (words >> word && word != "]") x.push_back(parseRational(word));
  } catch (const BadNumber&) {
    return false;
  }
  return words >> word && word == "|" && x.size() == program.variables() && isFeasible(program, x);
}

// What a run writes from there on: a line, or what a kill has left of one.
bool goesOnWithALine(const Program& program, const std::string& path, unsigned long bytes) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(bytes));
  std::string line;
  std::getline(file, line);
  return file.eof() ? line.starts_with('[') : isLineOf(program, line);
}

}  // namespace

bool isFileOf(const Checkpoint& past, const std::string& path, bool single, const Program& program) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return false;
  const bool hasEnded = !past.verdict.empty();
  if (hasEnded && size != past.file.bytes) return false;
  const bool mayBeAnother = single && past.file.count == 1 && !hasEnded;
  if (mayBeAnother && size == 0) return false;
  const unsigned long known = mayBeAnother ? 0 : past.file.bytes;
  if (known > 0 && digestOfFile(path, known) != past.file.digest) return false;
  return size == known || (size > known && goesOnWithALine(program, path, known));
}

}  // namespace latbox::complete
