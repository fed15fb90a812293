// Clips to jump about in, one for each case of a test.
#ifndef ZO_TESTS_ZO_JUMP_CLIPS_H
#define ZO_TESTS_ZO_JUMP_CLIPS_H

#include <gtest/gtest.h>

#include "zo_ffmpeg_calls.h"
#include "zo_test_clip_store.h"
#include "zo_test_support.h"

namespace zo {
namespace test {

/// Makes the clip of a case: 46 small pictures, a key frame every 12, unless the case changes that. Tests
/// only read it.
/// @tparam Case  Has `name`, `file`, `codec` and a function `change` that takes ClipOptions and may be empty.
template <class Case>
class JumpClips : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    const Case& param = this->GetParam();
    if (!haveEncoder(param.codec)) {
      GTEST_SKIP() << "this FFmpeg cannot encode " << param.codec;
    }
    _options.codec = param.codec;
    _options.width = 64;
    _options.height = 64;
    _options.frames = 46;
    _options.gop = 12;
    if (param.change) {
      param.change(_options);
    }
    _clip = _p_clips->clip(param.name, param.file, _options);
    ffmpegCalls().reset();
  }
  static void SetUpTestSuite() { _p_clips = new ClipStore(); }
  static void TearDownTestSuite() { delete _p_clips; }

  static inline ClipStore* _p_clips = nullptr;
  ClipOptions _options;
  Clip _clip;
};

}  // namespace test
}  // namespace zo

#endif
