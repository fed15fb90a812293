#ifndef ZO_TESTS_SUPPORT_ZO_TEST_CLIP_STORE_H
#define ZO_TESTS_SUPPORT_ZO_TEST_CLIP_STORE_H

#include <map>
#include <string>

#include "zo_test_clip.h"
#include "zo_test_files.h"

namespace zo {
namespace test {

/// Clips that several tests of a suite only read. Each is made once, because encoding is what takes long.
class ClipStore {
 public:
  const Clip& clip(const std::string& name, const std::string& file, const ClipOptions& options) {
    const auto found = _clips.find(name);
    if (found != _clips.end()) {
      return found->second;
    }
    return _clips.emplace(name, makeClip(_directory.file(name + "_" + file), options)).first->second;
  }

 private:
  TempDir _directory;
  std::map<std::string, Clip> _clips;
};

}  // namespace test
}  // namespace zo

#endif
