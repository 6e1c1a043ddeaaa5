// The failure path inside a fuzz target: `fail` ends the process elsewhere, and here it throws, so that one
// process tries input after input. failure.cpp is left out of these programs by the linker.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "lib/exceptions.h"
#include "lib/progress.h"
#include "support/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace latbox::fuzzing {

// What `fail` throws. Of no standard type, so that no handler of the solver takes it for its own.
struct Refusal {
  std::string message;
};

// Ends the process with a core for the fuzzer: the input broke a property that the target holds.
[[noreturn]] void broken(const std::string& property);

inline void require(bool holds, const char* property) {
  if (!holds) broken(property);
}

// Runs `work`; true if it came to its end, false if the input was refused: by the failure path, or by an
// exception that the driver ends the run with or recovers from. All others pass.
template <class Work>
bool accepted(Work&& work) {
  bool done = false;
  try {
    work();
    done = true;
  } catch (const Refusal&) {
  } catch (const GeneralException&) {
  }
  progressReset();
  return done;
}

// Takes standard output away for the life of the object and keeps what was printed.
class Output {
 public:
  Output();
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  std::string take();
  std::string takeErrors();
};

// The readers take their input by path.
using testing::MemoryFile;

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(bytes), size);
}

}  // namespace latbox::fuzzing
