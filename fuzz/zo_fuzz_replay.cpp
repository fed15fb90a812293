// Stands in for the fuzzing engine: runs a target once over each file that is named, or that lies in a named
// directory. The sanitizers and the target's own rules decide.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "zo_fuzz.h"

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
  const uint8_t nothing = 0;
  LLVMFuzzerTestOneInput(&nothing, 0);
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
  }
  std::printf("replayed %zu inputs\n", paths.size() + 1);
  return 0;
}
