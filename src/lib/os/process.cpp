#include "lib/os/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace latbox {

void settleProcess() {
  // open() takes the lowest free number, so the missing ones are filled in order.
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor) _exit(1);
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void endProcess(int status) {
  _exit(status);
}

void waitForTheEnd() {
  for (;;) pause();
}

}  // namespace latbox
