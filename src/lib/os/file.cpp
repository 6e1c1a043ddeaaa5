#include "lib/os/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace latbox {
namespace {

// A descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  bool open() const { return fd_ >= 0; }
  // Closes at once; false with errno if the system finds only now that it could not write.
  bool close() {
    const int fd = fd_;
    fd_ = -1;
    return ::close(fd) == 0;
  }

 private:
  int fd_;
};

// Regular files only: a directory opens, but has no text, and a pipe may never end. Without O_NONBLOCK the
// mere opening of a pipe would wait for a writer.
Descriptor openForReading(const std::string& path, struct stat& status) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd >= 0 && (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))) {
    ::close(fd);
    return Descriptor(-1);
  }
  return Descriptor(fd);
}

bool writeAll(int fd, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = ::write(fd, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return true;
}

// Makes sure of the space before a byte of the old content is overwritten. A file system that can't tell is
// trusted.
bool reserve(int fd, off_t oldSize, off_t newSize) {
  if (newSize <= oldSize) return true;
  const int error = ::posix_fallocate(fd, 0, newSize);
  if (error == 0 || error == EOPNOTSUPP || error == EINVAL) return true;
  if (::ftruncate(fd, oldSize) != 0) errno = 0;
  errno = error;
  return false;
}

bool rewrite(int fd, off_t oldSize, const std::string& text) {
  const off_t newSize = static_cast<off_t>(text.size());
  return reserve(fd, oldSize, newSize) && writeAll(fd, text) && ::ftruncate(fd, newSize) == 0;
}

// Without O_NONBLOCK a pipe would be waited for until somebody reads it.
bool writeInPlace(const std::string& path, const std::string& text) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666));
  struct stat status;
  if (!file.open() || ::fstat(file.get(), &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) return writeAll(file.get(), text);
  return rewrite(file.get(), status.st_size, text) && file.close();
}

// The file that a link stands for: the link itself must survive the replacement.
std::string linkTarget(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
  return resolved ? std::string(resolved.get()) : path;
}

enum class Replaced { yes, no, notPossible };

bool isFile(int fd, const std::string& path) {
  struct stat opened, named;
  return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
         opened.st_dev == named.st_dev;
}

// The second file, empty and of this process alone, with its name in `fresh`. What a killed process has left
// is taken over; where another process writes at this very moment, the name carries the process id. The lock
// goes with the descriptor; a file system without locks has the plain name.
Descriptor openFresh(const std::string& path, std::string& fresh) {
  constexpr int FLAGS = O_WRONLY | O_CREAT | O_CLOEXEC;
  fresh = path + ".tmp";
  Descriptor file(::open(fresh.c_str(), FLAGS, 0666));
  if (!file.open()) return file;
  const bool taken = ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  if (!taken && isFile(file.get(), fresh))
    return ::ftruncate(file.get(), 0) == 0 ? std::move(file) : Descriptor(-1);
  fresh = path + "." + std::to_string(::getpid()) + ".tmp";
  return Descriptor(::open(fresh.c_str(), FLAGS | O_TRUNC, 0666));
}

// Writes a second file beside the first and puts it in the first one's place. `notPossible` if the folder
// takes no second file. Two runs of one program replace the file in turn, each as a whole.
Replaced replaceFile(const std::string& path, const std::string& text, const struct stat* old) {
  std::string fresh;
  Descriptor file = openFresh(path, fresh);
  if (!file.open()) return Replaced::notPossible;
  // Holds the lock until the name is free again, while `file` is closed for its verdict.
  const Descriptor lock(::dup(file.get()));
  if (old != nullptr && ::fchmod(file.get(), old->st_mode & 07777) != 0) errno = 0;
  if (writeAll(file.get(), text) && file.close() && ::rename(fresh.c_str(), path.c_str()) == 0)
    return Replaced::yes;
  const int error = errno;
  ::unlink(fresh.c_str());
  errno = error;
  return Replaced::no;
}

bool writeWhole(const std::string& path, const std::string& text) {
  struct stat old;
  const bool exists = ::stat(path.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode)) {
    errno = EISDIR;
    return false;
  }
  // A file that is write-protected counts as one that can't be opened for writing, though its folder would
  // let it be replaced.
  if (exists && ::access(path.c_str(), W_OK) != 0) return false;
  if (exists && !S_ISREG(old.st_mode)) return writeInPlace(path, text);
  switch (replaceFile(exists ? linkTarget(path) : path, text, exists ? &old : nullptr)) {
    case Replaced::yes:
      return true;
    case Replaced::no:
      return false;
    default:
      return writeInPlace(path, text);
  }
}

}  // namespace

bool readFile(const std::string& path, std::string& content) {
  struct stat status;
  const Descriptor file = openForReading(path, status);
  if (!file.open()) return false;
  content.clear();
  content.reserve(static_cast<std::size_t>(status.st_size));
  char block[1 << 16];
  for (;;) {
    const ssize_t count = ::read(file.get(), block, sizeof block);
    if (count == 0) return true;
    if (count > 0) {
      content.append(block, static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
}

bool writeFile(const std::string& path, const std::string& text, std::string& reason) {
  errno = 0;
  if (writeWhole(path, text)) return true;
  reason = std::strerror(errno);
  return false;
}

bool canOpen(const std::string& path) {
  struct stat status;
  return openForReading(path, status).open();
}

bool canBeOpened(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)).open();
}

bool modificationTime(const std::string& path, long& seconds) {
  struct stat status;
  if (!openForReading(path, status).open()) return false;
  seconds = static_cast<long>(status.st_mtime);
  return true;
}

void removeFile(const std::string& path) {
  ::unlink(path.c_str());
}

}  // namespace latbox
