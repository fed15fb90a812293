// Jumps in files with lost, broken and untimed packets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "zo_jump_clips.h"
#include "zo_navigation_test.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace zo {
namespace test {
namespace {

struct DamageCase {
  std::string name;
  const char* file;
  const char* codec;
  std::function<void(ClipOptions&)> change;
  bool concealed;  ///< decoders make up pictures
};

void PrintTo(const DamageCase& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

class DamagedClips : public JumpClips<DamageCase> {
 protected:
  void SetUp() override {
    JumpClips::SetUp();
    if (!IsSkipped() && _options.dropped_packets.empty() && _options.skipped_packets == 0) {
      for (const int packet : _options.corrupted_packets) {
        _corrupted_times.insert(_clip.packets[static_cast<std::size_t>(packet)].pts);
      }
    }
  }

  // What the file gives when it is read from start to end. Decoders conceal damage with whatever they decoded
  // before, so how a picture of a damaged group looks depends on where decoding began. Its place and its time
  // do not, nor do the pictures of sound groups.
  std::vector<SeenFrame> readSequence(Reader& reader) const {
    std::vector<SeenFrame> sequence = readAll(reader);
    std::vector<ClipPacket> packets = _clip.packets;
    std::sort(packets.begin(), packets.end(),
              [](const ClipPacket& a, const ClipPacket& b) { return a.pts < b.pts; });
    EXPECT_EQ(packets.size(), sequence.size());
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      std::size_t end = i + 1;
      while (end < sequence.size() && !packets[end].key) {
        ++end;
      }
      bool sound = true;
      for (std::size_t j = i; j < end; ++j) {
        // Numbers follow times in the clips as they were encoded.
        sound = sound && _corrupted_times.count(packets[j].pts) == 0 &&
                sequence[j].number == av_rescale_q(packets[j].pts, _clip.time_base, {1, 25});
      }
      // B-frames in front of a key frame may refer to it.
      for (std::size_t j = i < 2 ? 0 : i - 2; !sound && j < end; ++j) {
        sequence[j].concealed = GetParam().concealed && !sequence[j].empty;
      }
      i = end - 1;
    }
    return sequence;
  }

  std::set<int64_t> _corrupted_times;
};

TEST_P(DamagedClips, GiveTheFramesOfTheSequence) {
  Reader reader;
  openIndexed(reader, _clip.path, true);
  const ReferenceStream reference = decodeReference(_clip.path, false);
  ASSERT_EQ(static_cast<long long>(reference.packets.size()), reader.frameCount());
  const std::vector<SeenFrame> sequence = readSequence(reader);
  ASSERT_EQ(reference.packets.size(), sequence.size());
  for (const JumpOrder& order : jumpOrders()) {
    // A picture made up of what came before may not come at all when that is missing, too.
    if (order.interruption != Interruption::BEHIND_THE_PACKET) {
      expectJumpsGiveTheSequence(reader, sequence, order);
    }
  }
  Reader fresh;
  openIndexed(fresh, _clip.path, true);
  expectJumpsGiveTheSequence(fresh, sequence, jumpOrders().front());
}

TEST_P(DamagedClips, GiveTheSameWithEveryPictureDecoded) {
  Reader reader;
  openIndexed(reader, _clip.path, true);
  const std::vector<SeenFrame> sequence = readSequence(reader);
  reader.decodeEveryPicture();
  expectJumpsGiveTheSequence(reader, sequence, jumpOrders().front());
}

std::function<void(ClipOptions&)> dropping(std::set<int> packets, int b_frames) {
  return [=](ClipOptions& options) {
    options.dropped_packets = packets;
    options.b_frames = b_frames;
  };
}

std::function<void(ClipOptions&)> corrupting(std::set<int> packets, int b_frames) {
  return [=](ClipOptions& options) {
    options.corrupted_packets = packets;
    options.b_frames = b_frames;
  };
}

std::function<void(ClipOptions&)> startingLate(int packets, int b_frames) {
  return [=](ClipOptions& options) {
    options.skipped_packets = packets;
    options.b_frames = b_frames;
  };
}

std::function<void(ClipOptions&)> untimed(int b_frames) {
  return [=](ClipOptions& options) {
    options.without_timestamps = true;
    options.b_frames = b_frames;
  };
}

// Two of three packets without times, as transport streams may have them.
std::function<void(ClipOptions&)> partly(int b_frames) {
  return [=](ClipOptions& options) {
    options.b_frames = b_frames;
    options.edit_packet = [](int i, AVPacket* p_packet) {
      if (i % 3 != 0) {
        p_packet->pts = p_packet->dts = AV_NOPTS_VALUE;
      }
      return true;
    };
  };
}

// The same damage in every kind of file, except those where it has effects of its own.
std::vector<DamageCase> everywhere(const std::string& title, const std::function<void(ClipOptions&)>& change,
                                   const std::set<std::string>& except = {}) {
  const struct {
    const char* name;
    const char* file;
    const char* codec;
  } kinds[] = {{"H264Mp4", "a.mp4", "libx264"},    {"H264Mkv", "a.mkv", "libx264"},
               {"H264Ts", "a.ts", "libx264"},      {"Mpeg4Mp4", "a.mp4", "mpeg4"},
               {"Mpeg4Mkv", "a.mkv", "mpeg4"},     {"Mpeg4Avi", "a.avi", "mpeg4"},
               {"HevcMp4", "a.mp4", "libx265"},    {"Mpeg2Ts", "a.ts", "mpeg2video"},
               {"Vp9Webm", "a.webm", "libvpx-vp9"}};
  std::vector<DamageCase> cases;
  for (const auto& kind : kinds) {
    if (except.count(kind.name) == 0) {
      cases.push_back({title + kind.name, kind.file, kind.codec, change, true});
    }
  }
  return cases;
}

#define INSTANTIATE_DAMAGE(title, ...)                                                              \
  INSTANTIATE_TEST_SUITE_P(title, DamagedClips, testing::ValuesIn(everywhere(#title, __VA_ARGS__)), \
                           CaseName())

// What happens in the excepted files is in zo_inexact_files_test.cpp.
INSTANTIATE_DAMAGE(Dropped, dropping({14, 27}, 0));
INSTANTIATE_DAMAGE(DroppedAmongBFrames, dropping({14, 27}, 2), {"Mpeg2Ts"});
INSTANTIATE_DAMAGE(KeyDropped, dropping({12, 13}, 0));
INSTANTIATE_DAMAGE(KeyDroppedAmongBFrames, dropping({12, 13}, 2), {"HevcMp4"});
INSTANTIATE_DAMAGE(ManyDropped, dropping({3, 4, 5, 6, 7, 30, 31, 32, 33, 34, 45}, 2), {"Mpeg2Ts"});
INSTANTIATE_DAMAGE(Corrupted, corrupting({14, 27}, 0));
INSTANTIATE_DAMAGE(CorruptedAmongBFrames, corrupting({14, 27}, 2));
// Without their first picture's head, transport streams are not recognised as early.
INSTANTIATE_DAMAGE(FirstCorrupted, corrupting({0}, 2), {"H264Ts", "Mpeg2Ts"});
INSTANTIATE_DAMAGE(LastCorrupted, corrupting({45}, 2));
INSTANTIATE_DAMAGE(KeyCorrupted, corrupting({12}, 0));
INSTANTIATE_DAMAGE(KeyCorruptedAmongBFrames, corrupting({12}, 2));
INSTANTIATE_DAMAGE(WithoutFirstKey, startingLate(1, 0), {"H264Mkv", "Mpeg4Mkv", "Vp9Webm"});
INSTANTIATE_DAMAGE(WithoutFirstPictures, startingLate(5, 2),
                   {"H264Mkv", "Mpeg4Mkv", "Vp9Webm", "Mpeg4Mp4", "Mpeg4Avi"});

INSTANTIATE_TEST_SUITE_P(Untimed, DamagedClips,
                         testing::Values(DamageCase{"Mpeg4Avi", "a.avi", "mpeg4", untimed(0), false},
                                         DamageCase{"Mpeg4BFramesAvi", "a.avi", "mpeg4", untimed(2), false},
                                         DamageCase{"H264BFramesAvi", "a.avi", "libx264", untimed(2), false},
                                         DamageCase{"H264Ts", "a.ts", "libx264", partly(0), false}),
                         CaseName());

// One packet lost, each one in turn. Decoders make up for pictures that others refer to, and what they take
// for that must not be another picture when some have been left out.
struct LossCase {
  const char* name;
  const char* file;
  const char* codec;
  std::function<void(ClipOptions&)> change;
};

void PrintTo(const LossCase& param, std::ostream* p_stream) {
  *p_stream << param.name;
}

class OneLostPacket : public testing::TestWithParam<LossCase> {
 protected:
  static constexpr int GOP = 14;

  Clip clipWithout(int packet) const {
    ClipOptions options;
    options.codec = GetParam().codec;
    options.width = 64;
    options.height = 64;
    options.frames = 3 * GOP;
    options.gop = GOP;
    options.b_frames = 3;
    options.dropped_packets = {packet};
    GetParam().change(options);
    return makeClip(_directory.file(GetParam().file), options);
  }

  // The frame and what is read behind it, in a reader that has met no damage yet.
  static std::vector<SeenFrame> jumpTo(const std::string& path, long long index, bool every_picture) {
    Reader reader;
    openIndexed(reader, path);
    if (every_picture) {
      reader.decodeEveryPicture();
    }
    reader.moveByIndex(index);
    std::vector<SeenFrame> frames;
    for (int i = 0; i < 4 && reader.frameIndex() + 1 < reader.frameCount(); ++i) {
      frames.push_back(nextFrame(reader));
    }
    return frames;
  }

  TempDir _directory;
};

TEST_P(OneLostPacket, GivesTheSameFramesWithEveryPictureDecoded) {
  if (!haveEncoder(GetParam().codec)) {
    GTEST_SKIP() << "this FFmpeg cannot encode " << GetParam().codec;
  }
  for (int lost = GOP - 3; lost < 2 * GOP + 2; ++lost) {
    const Clip clip = clipWithout(lost);
    for (long long index = lost - 4; index < lost + GOP && index < 3 * GOP - 1; ++index) {
      const std::vector<SeenFrame> whole = jumpTo(clip.path, index, true);
      const std::vector<SeenFrame> skipping = jumpTo(clip.path, index, false);
      ASSERT_EQ(whole.size(), skipping.size());
      for (std::size_t i = 0; i < whole.size(); ++i) {
        ASSERT_TRUE(sameFrame(whole[i], skipping[i]))
            << "packet " << lost << " lost, jump to " << index << ", frame " << i << " after it";
      }
    }
  }
}

void constantRate(ClipOptions&) {}

void variableRate(ClipOptions& options) {
  options.time_base = {1, 1000};
  options.pts = [](int i) { return int64_t{40} * i + i * 7919 % 31; };
}

void pyramid(ClipOptions& options) {
  variableRate(options);
  options.encoder_options = {{"x264-params", "bframes=5:b-pyramid=normal:b-adapt=0:ref=4"}};
}

void openGroups(ClipOptions& options) {
  variableRate(options);
  options.open_gop = true;
}

INSTANTIATE_TEST_SUITE_P(Files, OneLostPacket,
                         testing::Values(LossCase{"H264Mp4", "a.mp4", "libx264", constantRate},
                                         LossCase{"H264VariableRateMkv", "a.mkv", "libx264", variableRate},
                                         LossCase{"H264PyramidMkv", "a.mkv", "libx264", pyramid},
                                         LossCase{"H264OpenGroupsMkv", "a.mkv", "libx264", openGroups},
                                         LossCase{"Mpeg4Mp4", "a.mp4", "mpeg4", variableRate}),
                         CaseName());

}  // namespace
}  // namespace test
}  // namespace zo
