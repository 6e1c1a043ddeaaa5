// Locks, threads, the clock, files and signals.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "lib/failure.h"
#include "lib/os/clock.h"
#include "lib/os/file.h"
#include "lib/os/mutex_type.h"
#include "lib/os/output.h"
#include "lib/os/process.h"
#include "lib/os/random_device.h"
#include "lib/os/semaphore.h"
#include "lib/os/signals.h"
#include "lib/os/threads.h"
#include "support/failure.h"

namespace latbox {
namespace {

void waitFor(const std::atomic<bool>& flag) {
  while (!flag.load()) usleep(100);
}

// Runs `body` on a thread of its own and waits for its end.
void onThread(std::function<void()> body) {
  pthread_t id;
  startThread(&id, [body](void*) -> void* {
    body();
    return nullptr;
  });
  joinThread(id);
}

TEST(MutexType, GetAndSet) {
  MutexType<long> number(5);
  EXPECT_EQ(number.get(), 5);
  number.set(7);
  EXPECT_EQ(number.get(), 7);
  EXPECT_EQ(MutexType<std::string>().get(), "");
  EXPECT_EQ(MutexType<long>().get(), 0);
}

TEST(MutexType, CopiedOntoItselfStaysIntact) {
  MutexType<std::string> text("abc");
  const MutexType<std::string>& self = text;
  text = self;
  EXPECT_EQ(text.get(), "abc");
  text.set("still alive");
  EXPECT_EQ(text.get(), "still alive");
}

TEST(MutexType, ACopyHasItsOwnLock) {
  MutexType<std::string> source("abc");
  const MutexType<std::string> copy(source);
  source.lock("holder");
  EXPECT_EQ(copy.get(), "abc");
  source.unlock("holder");
  MutexType<std::string> assigned;
  assigned = source;
  source.set("other");
  EXPECT_EQ(assigned.get(), "abc");
}

TEST(MutexType, CompareAndSetUnless) {
  MutexType<std::string> state("waiting");
  state.compareAndSetUnless("running", "stopped");
  EXPECT_EQ(state.get(), "running");
  state.set("stopped");
  state.compareAndSetUnless("running", "stopped");
  EXPECT_EQ(state.get(), "stopped");
}

TEST(MutexType, TextForm) {
  MutexType<std::string> text("abc");
  std::ostringstream out;
  out << text;
  EXPECT_EQ(out.str(), "abc");
  std::istringstream in("  first second");
  in >> text;
  EXPECT_EQ(text.get(), "first");
  MutexType<long> number;
  std::istringstream digits("42 x");
  digits >> number;
  EXPECT_EQ(number.get(), 42);
}

TEST(Semaphore, AnUnlockByAnotherNameLeavesItLocked) {
  Semaphore semaphore;
  EXPECT_EQ(semaphore.lockOwner, "");
  semaphore.lock("outer");
  EXPECT_EQ(semaphore.lockOwner, "outer");
  semaphore.unlock("inner");
  std::atomic<bool> entered{false};
  pthread_t id;
  startThread(&id, [&](void*) -> void* {
    semaphore.lock("thread");
    entered = true;
    semaphore.unlock("thread");
    return nullptr;
  });
  usleep(20'000);
  EXPECT_FALSE(entered.load());
  semaphore.unlock("outer");
  joinThread(id);
  EXPECT_TRUE(entered.load());
}

TEST(Semaphore, ALockEndsWithItsScope) {
  Semaphore semaphore;
  std::atomic<bool> entered{false};
  pthread_t id;
  try {
    const SemaphoreLock guard(semaphore);
    startThread(&id, [&](void*) -> void* {
      const SemaphoreLock theirs(semaphore);
      entered = true;
      return nullptr;
    });
    usleep(5000);
    EXPECT_FALSE(entered.load());
    throw std::runtime_error("x");
  } catch (const std::runtime_error&) {
  }
  joinThread(id);
  EXPECT_TRUE(entered.load());
}

TEST(Semaphore, TheEmptyNameAlwaysUnlocks) {
  Semaphore semaphore;
  semaphore.lock("someone");
  semaphore.unlock("");
  semaphore.lock("again");
  semaphore.unlock("again");
}

TEST(Threads, BodiesRunAndReturn) {
  std::atomic<long> sum{0};
  pthread_t ids[20];
  for (long i = 0; i < 20; ++i)
    startThread(&ids[i], [&sum, i](void* argument) -> void* {
      EXPECT_EQ(argument, nullptr);
      sum += i;
      return nullptr;
    });
  for (const pthread_t id : ids) joinThread(id);
  EXPECT_EQ(sum.load(), 190);
}

// Guarded values under fire from several threads.
TEST(Threads, NoUpdateIsTorn) {
  MutexType<std::string> shared(std::string(40, 'a'));
  std::atomic<bool> torn{false};
  pthread_t ids[3];
  for (int t = 0; t < 3; ++t)
    startThread(&ids[t], [&, t](void*) -> void* {
      for (int i = 0; i < 3000; ++i) {
        shared.set(std::string(40, static_cast<char>('a' + t)));
        const std::string seen = shared.get();
        if (seen != std::string(40, seen[0])) torn = true;
      }
      return nullptr;
    });
  for (const pthread_t id : ids) joinThread(id);
  EXPECT_FALSE(torn.load());
}

TEST(Threads, ExitRunsWhileOthersLive) {
  EXPECT_EXIT(
      {
        pthread_t id;
        startThread(&id, [](void*) -> void* {
          for (;;) {
            pthread_t inner;
            startThread(&inner, [](void*) -> void* { return nullptr; });
            joinThread(inner);
          }
        });
        usleep(5000);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(Threads, TwoFailuresEndTheProcessOnce) {
  EXPECT_EXIT(
      {
        for (int t = 0; t < 4; ++t) {
          pthread_t id;
          startThread(&id, [](void*) -> void* { fail("from a thread"); });
        }
        for (;;) pause();
      },
      ::testing::ExitedWithCode(1), "\n\\*\\*\\* FAIL: from a thread\n$");
}

TEST(Clock, ATestStandsIn) {
  EXPECT_GT(now(), 1'000'000'000);
  setClock([]() -> long { return 77; });
  EXPECT_EQ(now(), 77);
  setClock(nullptr);
  EXPECT_GT(now(), 77);
}

TEST(Clock, NeverGoesBack) {
  static const long times[] = {1000, 500, 400, 1000, 1001, -5};
  static long next;
  next = 0;
  setClock([] { return times[next++]; });
  for (const long shown : {1000, 1000, 1000, 1000, 1001, 1001}) EXPECT_EQ(now(), shown);
  // The next clock starts afresh.
  setClock([]() -> long { return 3; });
  EXPECT_EQ(now(), 3);
  setClock(nullptr);
}

TEST(Clock, AgreesWithTheSystemsTimeAtTheStart) {
  const long before = static_cast<long>(std::time(nullptr));
  const long shown = now();
  EXPECT_LE(std::labs(shown - before), 2);
}

// The process that a test starts, with standard error as what it may say.
TEST(ProcessDeathTest, ClosedDescriptorsBecomeTheNullDevice) {
  EXPECT_EXIT(
      {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        settleProcess();
        const bool taken = open("/dev/null", O_RDONLY) > STDERR_FILENO;
        char byte;
        std::exit(taken && read(STDIN_FILENO, &byte, 1) == 0 && write(STDOUT_FILENO, "x", 1) == 1 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$");
}

TEST(ProcessDeathTest, OpenDescriptorsStay) {
  EXPECT_EXIT(
      {
        settleProcess();
        (void)!write(STDERR_FILENO, "here", 4);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^here$");
}

void limitFileSize(rlim_t size) {
  const rlimit limit = {size, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST(ProcessDeathTest, ABrokenPipeAndALimitAreErrors) {
  EXPECT_EXIT(
      {
        settleProcess();
        int ends[2];
        (void)!pipe(ends);
        close(ends[0]);
        const bool pipeFails = write(ends[1], "x", 1) == -1 && errno == EPIPE;
        limitFileSize(0);
        FILE* const file = tmpfile();
        const bool fileFails = write(fileno(file), "x", 1) == -1 && errno == EFBIG;
        std::exit(pipeFails && fileFails ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$");
}

TEST(ProcessDeathTest, TheEndIsAtOnce) {
  EXPECT_EXIT(
      {
        std::atexit([] { (void)!write(STDERR_FILENO, "atexit", 6); });
        endProcess(7);
      },
      ::testing::ExitedWithCode(7), "^$");
}

// A signal that is handled meanwhile does not end the wait.
TEST(ProcessDeathTest, TheWaitLastsUntilAnotherThreadEndsTheProcess) {
  EXPECT_EXIT(
      {
        std::signal(SIGALRM, [](int) { (void)!write(STDERR_FILENO, "handled", 7); });
        const pthread_t waiting = pthread_self();
        pthread_t other;
        startThread(&other, [waiting](void*) -> void* {
          usleep(5000);
          pthread_kill(waiting, SIGALRM);
          usleep(5000);
          endProcess(3);
        });
        waitForTheEnd();
      },
      ::testing::ExitedWithCode(3), "^handled$");
}

TEST(RandomDevice, SeedsDiffer) {
  unsigned first = 0, second = 0, third = 0;
  EXPECT_TRUE(readSeed(first) && readSeed(second) && readSeed(third));
  EXPECT_FALSE(first == second && second == third);
}

TEST(OutputDeathTest, WhatCannotBeWrittenIsToldOnceAndDropped) {
  EXPECT_EXIT(
      {
        const int keep = dup(STDERR_FILENO);
        const int full = open("/dev/full", O_WRONLY);
        dup2(full, STDOUT_FILENO);
        installOutput();
        std::cout << "lost\n" << std::flush;
        std::cout << "lost, too\n" << std::flush;
        const bool good = std::cout.good();
        dup2(keep, STDOUT_FILENO);
        std::cout << "there again\n" << std::flush;
        std::exit(good ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^\\*\\*\\* Standard output: No space left on device\nthere again\n$");
}

TEST(OutputDeathTest, WhatIsPendingIsWrittenAtTheEnd) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        installOutput();
        installOutput();
        std::cout << "a" << 1 << 'b' << std::string(100'000, 'c');
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^a1bc*$");
}

TEST(OutputDeathTest, NobodyElsePrintsAfterTheEnd) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        installOutput();
        std::atomic<bool> printing = false;
        std::thread([&] {
          for (;;) {
            std::cout << "line\n" << std::flush;
            printing = true;
          }
        }).detach();
        while (!printing) usleep(100);
        closeOutput();
        std::string text = "end\n";
        iovec piece;
        piece.iov_base = text.data();
        piece.iov_len = text.size();
        writeOutputPieces(&piece, 1);
        usleep(20'000);
        _exit(0);
      },
      ::testing::ExitedWithCode(0), "^(line\n)+end\n$");
}

class Files : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "latbox_XXXXXX";
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  static std::string contentOf(const std::string& path) {
    std::string content = "unread";
    EXPECT_TRUE(readFile(path, content));
    return content;
  }
  long entries() const {
    return std::distance(std::filesystem::directory_iterator(folder_), std::filesystem::directory_iterator());
  }
  std::string folder_;
};

TEST_F(Files, RoundTrip) {
  std::string reason;
  std::string text = "line\n";
  text += '\0';
  text += std::string(200'000, 'x');
  EXPECT_TRUE(writeFile(path("a"), text, reason));
  EXPECT_EQ(contentOf(path("a")), text);
  EXPECT_TRUE(writeFile(path("a"), "", reason));
  EXPECT_EQ(contentOf(path("a")), "");
  EXPECT_EQ(entries(), 1);
}

TEST_F(Files, MissingFilesAndDirectoriesCannotBeOpened) {
  std::string content;
  long seconds;
  EXPECT_FALSE(readFile(path("none"), content));
  EXPECT_FALSE(readFile(folder_, content));
  EXPECT_FALSE(canOpen(path("none")));
  EXPECT_FALSE(canOpen(folder_));
  EXPECT_FALSE(canBeOpened(path("none")));
  EXPECT_FALSE(modificationTime(path("none"), seconds));
  EXPECT_FALSE(modificationTime(folder_, seconds));
  EXPECT_FALSE(readFile("", content));
}

// A pipe without a writer would hold a reader for ever.
TEST_F(Files, APipeIsNoFile) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  std::string content;
  EXPECT_FALSE(readFile(path("pipe"), content));
  EXPECT_FALSE(canOpen(path("pipe")));
  EXPECT_TRUE(canBeOpened(path("pipe")));
}

TEST_F(Files, UnwritablePlacesGiveAReason) {
  std::string reason;
  EXPECT_FALSE(writeFile(path("no/such/folder"), "x", reason));
  EXPECT_EQ(reason, "No such file or directory");
  EXPECT_FALSE(writeFile(folder_, "x", reason));
  EXPECT_EQ(reason, "Is a directory");
  EXPECT_EQ(entries(), 0);
}

// Runs `check` as a user who is not root, for whom modes of files count, and exits 0 if it returns true.
template <class Check>
void exitAsNobody(Check check) {
  constexpr uid_t NOBODY = 65534;
  if (geteuid() == 0 && setuid(NOBODY) != 0) std::exit(2);
  std::exit(check() ? 0 : 1);
}

TEST_F(Files, WriteProtectedFilesStay) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "old", reason));
  chmod(folder_.c_str(), 0777);
  chmod(path("a").c_str(), 0444);
  EXPECT_EXIT(exitAsNobody([&] {
                std::string why;
                return !writeFile(path("a"), "new", why) && why == "Permission denied" && canOpen(path("a"));
              }),
              ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(contentOf(path("a")), "old");
}

TEST_F(Files, UnreadableFilesCannotBeOpened) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "secret", reason));
  chmod(folder_.c_str(), 0777);
  chmod(path("a").c_str(), 0);
  EXPECT_EXIT(exitAsNobody([&] {
                std::string content;
                return !readFile(path("a"), content) && !canOpen(path("a"));
              }),
              ::testing::ExitedWithCode(0), "");
}

TEST_F(Files, AWriteProtectedFolderIsWrittenInPlace) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "old", reason));
  chmod(path("a").c_str(), 0666);
  chmod(folder_.c_str(), 0555);
  EXPECT_EXIT(exitAsNobody([&] {
                std::string why;
                return writeFile(path("a"), "new", why) && !writeFile(path("b"), "new", why) &&
                       why == "Permission denied";
              }),
              ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(contentOf(path("a")), "new");
  chmod(folder_.c_str(), 0755);
}

TEST_F(Files, ReplacingKeepsModeAndLinks) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("target"), "old", reason));
  chmod(path("target").c_str(), 0640);
  std::filesystem::create_symlink(path("target"), path("link"));
  EXPECT_TRUE(writeFile(path("link"), "new", reason));
  EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
  EXPECT_EQ(contentOf(path("target")), "new");
  struct stat status;
  ASSERT_EQ(stat(path("target").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

// What a killed process has left beside the file, longer than what is written now.
TEST_F(Files, ALeftOverSecondFileIsTakenOver) {
  std::ofstream(path("a.tmp")) << std::string(5000, 'k');
  std::string reason;
  EXPECT_TRUE(writeFile(path("a"), "new", reason)) << reason;
  EXPECT_EQ(contentOf(path("a")), "new");
  EXPECT_EQ(entries(), 1);
}

// Another process is in the middle of its second file: its text must not be touched, nor its name taken away.
TEST_F(Files, TheSecondFileOfAnotherProcessIsLeftAlone) {
  const std::string theirs(3000, 't');
  const int other = open(path("a.tmp").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
  ASSERT_EQ(write(other, theirs.data(), theirs.size()), static_cast<ssize_t>(theirs.size()));
  std::string reason;
  EXPECT_TRUE(writeFile(path("a"), "mine", reason)) << reason;
  EXPECT_EQ(contentOf(path("a")), "mine");
  EXPECT_EQ(contentOf(path("a.tmp")), theirs);
  EXPECT_EQ(entries(), 2);
  ASSERT_EQ(rename(path("a.tmp").c_str(), path("a").c_str()), 0);
  close(other);
  EXPECT_EQ(contentOf(path("a")), theirs);
  EXPECT_TRUE(writeFile(path("a"), "again", reason)) << reason;
  EXPECT_EQ(contentOf(path("a")), "again");
  EXPECT_EQ(entries(), 1);
}

// A name that no second file may have, while the first choice is taken.
TEST_F(Files, TheSecondFileOfAnotherProcessIsLeftAloneWhereTheFolderTakesNone) {
  const std::string name(251, 'n');  // with ".tmp" as long as a name may be, and too long with a process id
  const int other = open(path(name + ".tmp").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
  std::string reason;
  EXPECT_TRUE(writeFile(path(name), "mine", reason)) << reason;
  EXPECT_EQ(contentOf(path(name)), "mine");
  EXPECT_TRUE(std::filesystem::exists(path(name + ".tmp")));
  close(other);
}

// Symptom: of two processes that wrote one file, one reported "No such file or directory".
TEST_F(Files, TwoProcessesReplaceAFileInTurn) {
  constexpr int ROUNDS = 400;
  const auto writeOften = [this](char letter) {
    const std::string text(20'000, letter);
    std::string why;
    for (int i = 0; i < ROUNDS; ++i)
      if (!writeFile(path("a"), text, why)) return false;
    return true;
  };
  const pid_t other = fork();
  if (other == 0) _exit(writeOften('b') ? 0 : 1);
  EXPECT_TRUE(writeOften('a'));
  int status = -1;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the other process could not write";
  const std::string text = contentOf(path("a"));
  EXPECT_TRUE(text == std::string(20'000, 'a') || text == std::string(20'000, 'b'));
  EXPECT_EQ(entries(), 1);
}

TEST_F(Files, DevicesAreWrittenInPlace) {
  std::string reason;
  EXPECT_FALSE(writeFile("/dev/full", "x", reason));
  EXPECT_EQ(reason, "No space left on device");
}

// Where the folder takes no second file, the file is rewritten in place: here its name leaves no room for
// one.
TEST_F(Files, FallsBackToWritingInPlace) {
  const std::string longName = path(std::string(253, 'n'));
  std::string reason;
  EXPECT_TRUE(writeFile(longName, "first", reason));
  EXPECT_TRUE(writeFile(longName, "second", reason));
  EXPECT_EQ(contentOf(longName), "second");
}

// Room is made sure of before the old content is touched.
TEST_F(Files, InPlaceTheOldContentStandsWhenTheNewDoesNotFit) {
  const std::string longName = path(std::string(253, 'n'));
  const std::string old(5000, 'o');
  std::string reason;
  ASSERT_TRUE(writeFile(longName, old, reason));
  EXPECT_EXIT(
      {
        settleProcess();
        limitFileSize(6000);
        std::string why;
        const bool refused = !writeFile(longName, std::string(7000, 'n'), why) && why == "File too large";
        std::exit(refused && contentOf(longName) == old ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(contentOf(longName), old);
  EXPECT_TRUE(writeFile(longName, "shorter", reason));
  EXPECT_EQ(contentOf(longName), "shorter");
}

TEST_F(Files, TheOldFileStandsWhenTheNewDoesNotFit) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "old", reason));
  EXPECT_EXIT(
      {
        settleProcess();
        limitFileSize(6000);
        std::string why;
        const bool refused = !writeFile(path("a"), std::string(7000, 'n'), why) && why == "File too large" &&
                             contentOf(path("a")) == "old" && entries() == 1;
        limitFileSize(RLIM_INFINITY);
        std::exit(refused && writeFile(path("a"), std::string(7000, 'n'), why) ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_EQ(contentOf(path("a")), std::string(7000, 'n'));
}

// A pipe without a reader would hold a writer for ever.
TEST_F(Files, APipeWithoutAReaderIsNotWritten) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  std::string reason;
  EXPECT_FALSE(writeFile(path("pipe"), "x", reason));
  EXPECT_EQ(reason, "No such device or address");
}

TEST_F(Files, ModificationTimeInWholeSeconds) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "x", reason));
  const timespec times[2] = {{1000, 0}, {123456, 999'999'999}};
  ASSERT_EQ(utimensat(AT_FDCWD, path("a").c_str(), times, 0), 0);
  long seconds = 0;
  EXPECT_TRUE(modificationTime(path("a"), seconds));
  EXPECT_EQ(seconds, 123456);
}

TEST_F(Files, RemovingAMissingFileIsNoError) {
  std::string reason;
  ASSERT_TRUE(writeFile(path("a"), "x", reason));
  removeFile(path("a"));
  removeFile(path("a"));
  EXPECT_EQ(entries(), 0);
}

bool isBlocked(int signal) {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, signal) == 1;
}

std::atomic<int> handled{0};
void countSignal(int) {
  ++handled;
}

void unblock() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void setHandler(void (*handler)(int)) {
  std::signal(SIGINT, handler);
  std::signal(SIGTERM, handler);
}

class Signals : public ::testing::Test {
 protected:
  void SetUp() override {
    handled = 0;
    unblock();
    setHandler(countSignal);
  }
  void TearDown() override {
    unblock();
    setHandler(SIG_DFL);
  }
};

TEST_F(Signals, BlockingIsInheritedByThreads) {
  blockTermination();
  EXPECT_TRUE(isBlocked(SIGINT));
  EXPECT_TRUE(isBlocked(SIGTERM));
  onThread([] {
    EXPECT_TRUE(isBlocked(SIGINT));
    EXPECT_TRUE(isBlocked(SIGTERM));
  });
  unblock();
  EXPECT_FALSE(isBlocked(SIGINT));
}

TEST_F(Signals, AWindowLetsThemInAndPutsTheMaskBack) {
  blockTermination();
  std::raise(SIGINT);
  EXPECT_EQ(handled, 0);
  {
    const TerminationWindow window;
    EXPECT_EQ(handled, 1);
    EXPECT_FALSE(isBlocked(SIGTERM));
  }
  EXPECT_TRUE(isBlocked(SIGTERM));
}

TEST_F(Signals, ARaiseInABlockedThreadArrives) {
  blockTermination();
  onThread([] { raiseTermination(SIGTERM); });
  EXPECT_EQ(handled, 1);
  EXPECT_TRUE(isBlocked(SIGTERM));
}

TEST_F(Signals, AHoldKeepsThemOff) {
  {
    const SignalHold hold;
    const SignalHold nested;
    std::raise(SIGTERM);
    EXPECT_EQ(handled, 0);
  }
  EXPECT_EQ(handled, 1);
  EXPECT_FALSE(isBlocked(SIGTERM));
}

TEST_F(Signals, TheEndOfANestedHoldLetsNobodyIn) {
  std::atomic<bool> entered{false};
  pthread_t other;
  {
    const SignalHold hold;
    { const SignalHold nested; }
    startThread(&other, [&](void*) -> void* {
      const SignalHold theirs;
      entered = true;
      return nullptr;
    });
    usleep(10'000);
    EXPECT_FALSE(entered.load());
  }
  joinThread(other);
  EXPECT_TRUE(entered.load());
}

TEST_F(Signals, NamesAreKept) {
  EXPECT_STREQ(keptSignalName(SIGTERM), strsignal(SIGTERM));
  const char* const name = keptSignalName(SIGRTMIN + 3);
  const std::string before(name);
  strsignal(SIGRTMIN + 4);  // into the same storage of the library
  EXPECT_EQ(name, before);
}

// Nothing opens the sections again, so each test has a process of its own.
TEST(SignalHoldsDeathTest, ClosingWaitsForTheHoldOfAnotherThread) {
  EXPECT_EXIT(
      {
        static std::atomic<bool> inside{false};
        static std::atomic<bool> left{false};
        pthread_t writer;
        startThread(&writer, [](void*) -> void* {
          const SignalHold hold;
          inside = true;
          usleep(10'000);
          left = true;
          return nullptr;
        });
        waitFor(inside);
        closeSignalHolds();
        std::_Exit(left.load() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(SignalHoldsDeathTest, AfterClosingNobodyElseEnters) {
  EXPECT_EXIT(
      {
        closeSignalHolds();
        static std::atomic<bool> tries{false};
        static std::atomic<bool> entered{false};
        pthread_t writer;
        startThread(&writer, [](void*) -> void* {
          tries = true;
          const SignalHold hold;
          entered = true;
          return nullptr;
        });
        waitFor(tries);
        usleep(10'000);
        {
          const SignalHold own;  // the thread that closed may still enter
        }
        usleep(10'000);
        std::_Exit(entered.load() ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(SignalHoldsDeathTest, ClosingDoesNotWaitForItself) {
  EXPECT_EXIT(
      {
        const SignalHold hold;
        closeSignalHolds();
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace latbox
