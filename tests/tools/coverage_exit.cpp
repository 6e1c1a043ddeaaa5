// Linked into the solver in builds that count coverage: the counters are written before the process ends by
// _exit.
extern "C" {
void __gcov_dump();
[[noreturn]] void __real__exit(int status);

[[noreturn]] void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}
}
