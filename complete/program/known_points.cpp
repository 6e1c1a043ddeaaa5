#include "complete/program/known_points.h"

#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

namespace latbox::complete {
namespace {

// Of a line `[ 1 2 ... ] | ...`; nothing if it is none.
std::optional<Point> pointOf(const std::string& line, std::size_t variables) {
  const std::size_t end = line.find(']');
  if (line.empty() || line[0] != '[' || end == std::string::npos) return std::nullopt;
  std::istringstream words(line.substr(1, end - 1));
  Point x;
  for (std::string word; words >> word;) try {
      x.push_back(parseRational(word));
    } catch (const BadNumber&) {
      return std::nullopt;
    }
  return x.size() == variables ? std::optional(std::move(x)) : std::nullopt;
}

}  // namespace

KnownPoints::KnownPoints(const Program& program, std::string path, std::atomic<bool>& interrupt)
    : program_(program), path_(std::move(path)), interrupt_(interrupt) {}

bool KnownPoints::hasChanged() {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path_, error);
  if (error) return false;
  const auto time = std::filesystem::last_write_time(path_, error);
  if (error || (size == size_ && time == time_)) return false;
  size_ = size;
  time_ = time;
  return true;
}

void KnownPoints::look() {
  if (!hasChanged()) return;
  std::ifstream file(path_, std::ios::binary);
  for (std::string line; std::getline(file, line);)
    if (!file.eof()) take(line);
}

void KnownPoints::take(const std::string& line) {
  std::optional<Point> x = pointOf(line, program_.variables());
  if (!x || !isFeasible(program_, *x)) return;
  Norms norms = normsOf(program_, *x);
  const std::lock_guard lock(mutex_);
  if (best_ && !(norms < norms_)) return;
  best_ = std::move(x);
  norms_ = std::move(norms);
  fresh_ = true;
  interruptIfWanted();
}

void KnownPoints::interruptIfWanted() {
  if (!ended_ && fresh_ && (!limit_ || norms_.target <= *limit_)) interrupt_ = true;
}

void KnownPoints::want(std::optional<Rational> limit) {
  const std::lock_guard lock(mutex_);
  limit_ = std::move(limit);
  interruptIfWanted();
}

std::optional<Point> KnownPoints::takeBetter(const std::optional<Norms>& than) {
  const std::lock_guard lock(mutex_);
  interrupt_ = false;
  if (!std::exchange(fresh_, false) || (than && !(norms_ < *than))) return std::nullopt;
  return best_;
}

void KnownPoints::end() {
  const std::lock_guard lock(mutex_);
  ended_ = true;
  interrupt_ = false;
}

}  // namespace latbox::complete
