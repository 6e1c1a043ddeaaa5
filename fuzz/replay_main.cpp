// Runs every file of some folders through the target, so that what the fuzzers once found is tried again by
// every test run, with any compiler:  replay_<target> MEGABYTES FOLDER ...  A file that breaks the target
// ends the process.
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "refusal.h"

namespace {

namespace fs = std::filesystem;

// An input of a few bytes may not ask for more. 0: no limit, for a sanitizer reserves far more than it uses.
void limitMemory(rlim_t megabytes) {
  const rlimit limit{megabytes << 20, megabytes << 20};
  if (megabytes != 0) setrlimit(RLIMIT_AS, &limit);
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
  if (argc < 3) return 2;
  limitMemory(std::stoul(argv[1]));
  std::size_t count = 0;
  for (int i = 2; i < argc; ++i) {
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
