#include "lib/os/output.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <streambuf>

#include "lib/os/semaphore.h"

namespace latbox {
namespace {

// Takes `count` bytes off the front of the pieces.
void advance(iovec* pieces, int number, std::size_t count) {
  for (int i = 0; i < number; ++i) {
    const std::size_t part = count < pieces[i].iov_len ? count : pieces[i].iov_len;
    pieces[i].iov_base = static_cast<char*>(pieces[i].iov_base) + part;
    pieces[i].iov_len -= part;
    count -= part;
  }
}

// 0 or the error. A descriptor that was made non-blocking by whoever shares it is waited for.
int writeAll(int descriptor, iovec* pieces, int number) {
  std::size_t rest = 0;
  for (int i = 0; i < number; ++i) rest += pieces[i].iov_len;
  while (rest > 0) {
    const ssize_t written = writev(descriptor, pieces, number);
    if (written >= 0) {
      advance(pieces, number, static_cast<std::size_t>(written));
      rest -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {
      pollfd request{descriptor, POLLOUT, 0};
      poll(&request, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

iovec piece(const char* text) {
  return {const_cast<char*>(text), std::strlen(text)};
}

// Once per process: with nobody to read them, the warnings would follow each other as fast as the output.
void warnOnce(int error) {
  static constinit std::atomic_flag told = ATOMIC_FLAG_INIT;
  if (told.test_and_set()) return;
  const char* const name = strerrordesc_np(error);
  iovec pieces[] = {piece("*** Standard output: "), piece(name != nullptr ? name : "unknown error"),
                    piece("\n")};
  writeAll(STDERR_FILENO, pieces, 3);
}

// Without a put area every insertion comes by xsputn or overflow, where it is locked. Storage of fixed size,
// since an insertion that fails to allocate would leave std::cout in error.
class OutputBuffer : public std::streambuf {
 public:
  // For good: no guard gives the lock back.
  void close() {
    semaphore_.lock("");
    flush();
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const SemaphoreLock guard(semaphore_);
    for (std::streamsize i = 0; i < count; ++i) put(text[i]);
    return count;
  }
  int overflow(int ch) override {
    if (ch == traits_type::eof()) return traits_type::not_eof(ch);
    const SemaphoreLock guard(semaphore_);
    put(static_cast<char>(ch));
    return ch;
  }
  int sync() override {
    const SemaphoreLock guard(semaphore_);
    flush();
    return 0;
  }

 private:
  void put(char ch) {
    if (size_ == CAPACITY) flush();
    text_[size_++] = ch;
  }
  void flush() {
    iovec pieces[] = {{text_, size_}};
    size_ = 0;
    writeOutputPieces(pieces, 1);
  }

  static constexpr std::size_t CAPACITY = 1U << 16;
  Semaphore semaphore_;
  std::size_t size_ = 0;
  char text_[CAPACITY];
};

constinit std::atomic<OutputBuffer*> installed{nullptr};

}  // namespace

void writeOutputPieces(iovec* pieces, int number) {
  if (const int error = writeAll(STDOUT_FILENO, pieces, number)) warnOnce(error);
}

// Never destroyed: exit() may run while another thread prints.
void installOutput() {
  if (installed.load() != nullptr) return;
  auto* const buffer = new OutputBuffer;
  std::cout.rdbuf(buffer);
  installed.store(buffer);
}

void closeOutput() {
  if (OutputBuffer* const buffer = installed.load()) buffer->close();
  flockfile(stdout);
  fflush(stdout);
}

}  // namespace latbox
