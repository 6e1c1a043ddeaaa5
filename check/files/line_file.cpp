#include "check/files/line_file.h"

#include <stdio.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "check/files/scanner.h"

namespace latbox::check {
namespace {

[[noreturn]] void refuse(const std::string& what = "") {
  throw Unreadable(what + std::strerror(errno));
}

[[noreturn]] void refuseCopy() {
  refuse("cannot be copied to a temporary file, to be read twice: ");
}

struct stat status(std::FILE* file) {
  struct stat found {};
  if (fstat(fileno(file), &found) != 0) refuse();
  return found;
}

}  // namespace

LineFile::LineFile(const std::string& path) : file_(std::fopen(path.c_str(), "rb")) {
  if (!file_) refuse();
  if (!S_ISREG(status(file_.get()).st_mode)) file_ = copyOf(file_.get());
  end_ = static_cast<std::uint64_t>(status(file_.get()).st_size);
}

LineFile::File LineFile::copyOf(std::FILE* from) {
  errno = 0;
  File copy(std::tmpfile());
  if (!copy) refuseCopy();
  std::array<char, 1 << 16> part;
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), from))
    if (std::fwrite(part.data(), 1, size, copy.get()) != size) refuseCopy();
  if (std::ferror(from) != 0) refuse();
  if (std::fflush(copy.get()) != 0) refuseCopy();
  std::rewind(copy.get());
  return copy;
}

std::optional<LineFile::Line> LineFile::next() {
  if (next_ >= end_) return std::nullopt;
  return at(next_);
}

LineFile::Line LineFile::at(std::uint64_t offset) {
  errno = 0;
  if (offset != position_ && fseeko(file_.get(), static_cast<off_t>(offset), SEEK_SET) != 0) refuse();
  char* room = text_.release();
  const ssize_t length = getline(&room, &capacity_, file_.get());
  text_.reset(room);
  if (length <= 0 && errno != 0) refuse();
  if (length <= 0) throw Unreadable(CHANGED);
  next_ = position_ = offset + static_cast<std::uint64_t>(length);
  const std::string_view text =
      std::string_view(room, static_cast<std::size_t>(length)).substr(0, end_ - offset);
  const bool hasEnd = text.back() == '\n';
  return {hasEnd ? text.substr(0, text.size() - 1) : text, offset, hasEnd};
}

}  // namespace latbox::check
