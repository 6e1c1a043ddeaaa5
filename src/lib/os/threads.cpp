#include "lib/os/threads.h"

#include <bit>
#include <cstdint>
#include <utility>

#include "lib/array.h"
#include "lib/immortal.h"
#include "lib/os/semaphore.h"

namespace latbox {
namespace {

using Body = std::function<void*(void*)>;

// The lock keeps a thread from
// reading its body while another start moves the table.
Array<Body>& threadRegistry() {
  static Immortal<Array<Body>> registry;
  return *registry;
}
Semaphore& registryLock() {
  static Immortal<Semaphore> lock;
  return *lock;
}

void* trampoline(void* index) {
  registryLock().lock("");
  const Body body = threadRegistry()[static_cast<long>(reinterpret_cast<std::intptr_t>(index))];
  registryLock().unlock("");
  return body(nullptr);
}

}  // namespace

void startThread(pthread_t* id, Body body) {
  registryLock().lock("");
  threadRegistry().append(std::move(body));
  const long index = threadRegistry().MN;
  registryLock().unlock("");
  constexpr int POINTER_BITS = 64;
  if (std::bit_width(static_cast<unsigned long>(index)) > POINTER_BITS)
    fail("Thread registering not possible: voidptr size ist too small ...");
  void* argument = reinterpret_cast<void*>(static_cast<std::intptr_t>(index));
  if (pthread_create(id, nullptr, trampoline, argument) != 0) fail("Thread could not be started");
}

void joinThread(pthread_t id) {
  pthread_join(id, nullptr);
}

long startedThreads() {
  registryLock().lock("");
  const long count = threadRegistry().MN;
  registryLock().unlock("");
  return count;
}

}  // namespace latbox
