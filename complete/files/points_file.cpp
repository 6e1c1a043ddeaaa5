#include "complete/files/points_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace latbox::complete {
namespace {

std::string listOf(const std::vector<Rational>& values) {
  std::string text = "[ ";
  for (const Rational& value : values) text += toText(value) + " ";
  return text + "]";
}

// A rule of the .sol file, kept here so that both programs' files read alike.
std::vector<std::size_t> targetOrder(const Program& program) {
  const std::size_t count = program.wanted.size();
  std::vector<std::size_t> order(count);
  for (std::size_t i = 0; i < count; ++i) order[i] = i;
  std::vector<bool> moved(count);
  std::size_t atEnd = 0;
  for (std::size_t i = 0; i < count;) {
    const std::size_t target = order[i];
    if (moved[target] || !program.wanted[target].finite()) {
      ++i;
      continue;
    }
    moved[target] = true;
    const std::size_t before = atEnd++;
    if (before == i + 1)
      ++i;
    else
      std::swap(order[i], order[count - 1 - before]);
  }
  return order;
}

}  // namespace

std::string lineOf(const Program& program, const Point& x, const Norms& norms, long seconds,
                   const std::string& parameters) {
  const std::vector<Rational> values = targetValues(program, x);
  std::vector<Rational> ordered;
  for (const std::size_t i : targetOrder(program)) ordered.push_back(values[i]);
  return listOf(x) + " | " + toText(norms.target) + " | " + listOf(ordered) + " | " + toText(norms.slack) +
         " | " + std::to_string(seconds) + " | " + parameters + "\n";
}

std::optional<Digest> digestOfFile(const std::string& path, unsigned long bytes) {
  std::ifstream file(path, std::ios::binary);
  std::string part(1 << 16, ' ');
  Digest digest;
  while (bytes > 0) {
    const unsigned long size = std::min(bytes, part.size());
    if (!file.read(part.data(), static_cast<std::streamsize>(size))) return std::nullopt;
    digest.add(std::string_view(part).substr(0, size));
    bytes -= size;
  }
  return digest;
}

PointsFile::PointsFile(std::string path) : path_(std::move(path)) {
  std::error_code error;
  if (std::filesystem::exists(path_, error) && !std::filesystem::is_empty(path_, error)) {
    std::filesystem::rename(path_, path_ + KEPT, error);
    if (error) throw WriteFailure(path_ + ": cannot be kept as " + path_ + KEPT + ": " + error.message());
  }
  open(false);
}

PointsFile::PointsFile(std::string path, unsigned long bytes, const Digest& digest)
    : path_(std::move(path)), bytes_(bytes), digest_(digest) {
  std::error_code error;
  if (std::filesystem::file_size(path_, error) < bytes || error)
    throw WriteFailure(path_ + ": is shorter than the run that it belongs to has left it");
  std::filesystem::resize_file(path_, bytes, error);
  if (error) throw WriteFailure(path_ + ": " + error.message());
  open(true);
}

void PointsFile::open(bool append) {
  file_ = std::ofstream();
  errno = 0;
  file_.open(path_, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
  require(file_.is_open());
}

void PointsFile::append(const std::string& line) {
  errno = 0;
  file_ << line;
  require(file_.good());
  bytes_ += line.size();
  digest_.add(line);
}

void PointsFile::flush() {
  errno = 0;
  file_.flush();
  require(file_.good());
}

void PointsFile::replace(const std::string& line) {
  const std::string next = path_ + NEXT;
  errno = 0;
  std::ofstream file(next, std::ios::binary | std::ios::trunc);
  file << line;
  file.close();
  require(file.good());
  std::error_code error;
  std::filesystem::rename(next, path_, error);
  if (error) throw WriteFailure(path_ + ": " + error.message());
  open(true);
  bytes_ = line.size();
  digest_ = {};
  digest_.add(line);
}

void PointsFile::require(bool well) {
  if (well) return;
  if (error_ == 0) error_ = errno;
  throw WriteFailure(path_ + ": " + (error_ != 0 ? std::strerror(error_) : "cannot be written"));
}

}  // namespace latbox::complete
