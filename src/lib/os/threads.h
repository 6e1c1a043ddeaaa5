// Starting threads.
#pragma once

#include <pthread.h>

#include <functional>

namespace latbox {

// Starts a thread that runs `body` with a null pointer. The bodies are kept for the life of the process,
// since exit() may run while the other threads live. Fails with "Thread registering not possible: voidptr
// size ist too small ..." when the number of the thread does not fit a pointer, and with "Thread could not be
// started" when the system refuses one.
void startThread(pthread_t* id, std::function<void*(void*)> body);

// Waits for the end of a thread.
void joinThread(pthread_t id);

}  // namespace latbox
