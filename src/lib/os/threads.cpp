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

// The lock keeps a thread from reading its body while another start moves the table.
Array<Body>& threadRegistry() {
  static Immortal<Array<Body>> registry;
  return *registry;
}
Semaphore& registryLock() {
  static Immortal<Semaphore> lock;
  return *lock;
}

long registered(Body body) {
  const SemaphoreLock guard(registryLock());
  threadRegistry().append(std::move(body));
  return threadRegistry().MN;
}

Body bodyOf(long index) {
  const SemaphoreLock guard(registryLock());
  return threadRegistry()[index];
}

void* trampoline(void* index) {
  return bodyOf(static_cast<long>(reinterpret_cast<std::intptr_t>(index)))(nullptr);
}

}  // namespace

void startThread(pthread_t* id, Body body) {
  const long index = registered(std::move(body));
  constexpr int POINTER_BITS = 64;
  if (std::bit_width(static_cast<unsigned long>(index)) > POINTER_BITS)
    fail("Thread registering not possible: voidptr size ist too small ...");
  void* argument = reinterpret_cast<void*>(static_cast<std::intptr_t>(index));
  if (pthread_create(id, nullptr, trampoline, argument) != 0) fail("Thread could not be started");
}

void joinThread(pthread_t id) {
  pthread_join(id, nullptr);
}

}  // namespace latbox
