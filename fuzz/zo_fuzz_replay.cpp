// Stands in for the fuzzing engine: runs a target once over each file that is named, or that lies in a named
// directory. The sanitizers, the target's own rules and a bound on memory decide.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "zo_fuzz.h"

extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* p_argc, char*** p_argv);

namespace {

// The most that the process has held so far.
long memoryMb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

bool staysWithinMemory(const char* p_input) {
  constexpr long MOST_MB = ZO_FUZZ_MOST_MEMORY_MB;
  if (memoryMb() > MOST_MB) {
    std::fprintf(stderr, "finding: %s: %ld MB of memory, of which %ld are allowed\n", p_input, memoryMb(),
                 MOST_MB);
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  std::vector<std::string> paths;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      paths.push_back(argv[i]);
      continue;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) {
      if (entry.is_regular_file()) {
        paths.push_back(entry.path().string());
      }
    }
  }
  std::sort(paths.begin(), paths.end());
  if (LLVMFuzzerInitialize != nullptr) {
    LLVMFuzzerInitialize(&argc, &argv);
  }
  const uint8_t nothing = 0;
  LLVMFuzzerTestOneInput(&nothing, 0);
  if (!staysWithinMemory("no bytes")) {
    return 1;
  }
  for (const std::string& path : paths) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(stream)),
                                     std::istreambuf_iterator<char>());
    if (!stream) {
      std::fprintf(stderr, "cannot read %s\n", path.c_str());
      return 1;
    }
    std::fprintf(stderr, "%s\n", path.c_str());
    LLVMFuzzerTestOneInput(bytes.empty() ? &nothing : bytes.data(), bytes.size());
    if (!staysWithinMemory(path.c_str())) {
      return 1;
    }
  }
  std::printf("replayed %zu inputs in %ld MB\n", paths.size() + 1, memoryMb());
  return 0;
}
