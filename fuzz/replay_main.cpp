// Runs every file of the folders named on the command line through the target, so that what the fuzzers once
// found is tried again by every test run, with any compiler. A file that breaks the target ends the process.
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "refusal.h"

namespace {

namespace fs = std::filesystem;

// An input of a few bytes may not ask for more. Address sanitizers reserve far more than they use.
void limitMemory() {
#ifndef __SANITIZE_ADDRESS__
  const rlimit limit{2UL << 30, 2UL << 30};
  setrlimit(RLIMIT_AS, &limit);
#endif
}

std::vector<fs::path> filesOf(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::string contentOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

int main(int argc, char** argv) {
  limitMemory();
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : filesOf(argv[i])) {
      // Named before it runs: the last name on the screen is the one that broke.
      std::cerr << file.filename().string() << std::endl;
      const std::string text = contentOf(file);
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
      ++count;
    }
  }
  std::cerr << count << " inputs replayed\n";
  return count == 0 ? 1 : 0;
}
