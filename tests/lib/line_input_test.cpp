#include "lib/os/line_input.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "lib/os/signals.h"

namespace latbox {
namespace {

// A pipe with `text` written into it by a thread of its own, so that it may be longer than the pipe holds.
class FedPipe {
 public:
  explicit FedPipe(std::string text) {
    if (pipe(ends_) != 0) std::abort();
    writer_ = std::thread([this, text = std::move(text)] {
      std::size_t done = 0;
      while (done < text.size()) {
        const ssize_t count = write(ends_[1], text.data() + done, text.size() - done);
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
      }
      close(ends_[1]);
    });
  }
  ~FedPipe() {
    writer_.join();
    close(ends_[0]);
  }
  int readEnd() const { return ends_[0]; }

 private:
  int ends_[2];
  std::thread writer_;
};

std::vector<std::string> linesOf(const std::string& text) {
  const FedPipe pipe(text);
  LineInput input(pipe.readEnd());
  std::vector<std::string> lines;
  std::string line;
  while (input.next(line)) lines.push_back(line);
  return lines;
}

using Lines = std::vector<std::string>;

TEST(LineInput, SplitsAtLineEnds) {
  EXPECT_EQ(linesOf("one\ntwo\n\nthree\n"), (Lines{"one", "two", "", "three"}));
}

TEST(LineInput, LastLineNeedsNoLineEnd) {
  EXPECT_EQ(linesOf("one\ntwo"), (Lines{"one", "two"}));
}

TEST(LineInput, EmptyInputEndsAtOnce) {
  EXPECT_EQ(linesOf(""), Lines{});
}

TEST(LineInput, KeepsZeroBytesAndCarriageReturns) {
  const std::string odd("a\0b\rc", 5);
  EXPECT_EQ(linesOf(odd + "\n"), Lines{odd});
}

TEST(LineInput, LongestLinePassesAndLongerOnesAreSkipped) {
  const std::string longest(LineInput::MAX_LENGTH, 'x');
  EXPECT_EQ(linesOf(longest + "\nend\n"), (Lines{longest, "end"}));
  EXPECT_EQ(linesOf(longest + "y\nend\n"), Lines{"end"});
  EXPECT_EQ(linesOf(std::string(5 * LineInput::MAX_LENGTH, 'x') + "\nend"), Lines{"end"});
}

TEST(LineInput, OverlongLastLineIsSkipped) {
  EXPECT_EQ(linesOf("begin\n" + std::string(3 * LineInput::MAX_LENGTH, 'x')), Lines{"begin"});
}

TEST(LineInput, ClosedDescriptorIsTheEnd) {
  LineInput input(9999);
  std::string line;
  EXPECT_FALSE(input.next(line));
}

volatile std::sig_atomic_t handled = 0;

TEST(LineInput, PendingSignalArrivesDuringTheWait) {
  const FedPipe pipe("line\n");
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  blockTermination();
  const auto previous = std::signal(SIGTERM, [](int) { handled = 1; });
  std::raise(SIGTERM);
  EXPECT_EQ(handled, 0);
  LineInput input(pipe.readEnd());
  std::string line;
  EXPECT_TRUE(input.next(line));
  EXPECT_EQ(handled, 1);
  EXPECT_EQ(line, "line");
  std::signal(SIGTERM, previous);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
}  // namespace latbox
