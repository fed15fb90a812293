/// Makes the clips that the guides speak of: zo_doc_media FOLDER
#include <cstdio>
#include <exception>
#include <string>

#include "zo_test_support.h"
#include "zo_video/zo_video.h"

namespace {

/// Without B-frames, with which FFmpeg before 3.4 lets MP4 files begin later by the delay.
zo::test::ClipOptions clipOptions() {
  zo::test::ClipOptions options;
  options.width = 320;
  options.height = 180;
  options.frames = 300;
  options.gop = 25;
  options.b_frames = 0;
  return options;
}

/// Pictures that are shown for unequal times, as screen recorders and phones write them.
zo::test::ClipOptions variableRateOptions() {
  zo::test::ClipOptions options = clipOptions();
  options.frames = 6;
  options.time_base = AVRational{1, 1000};
  options.pts = [](int i) { return static_cast<int64_t>(i) * i * 40; };
  return options;
}

void makeMedia(const std::string& folder) {
  zo::test::ClipOptions options = clipOptions();
  options.audio = true;
  zo::test::makeClip(folder + "/clip.mp4", options);
  zo::test::makeClip(folder + "/holiday.mp4", options);
  options.frames = 25;
  options.rotation = 90;
  options.metadata["title"] = "On the road";
  zo::test::makeClip(folder + "/phone.mp4", options);
  zo::test::makeClip(folder + "/screen.mkv", variableRateOptions());
  const zo::Frame photo = zo::test::makeNumberedFrame(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(640, 480), 1);
  zo::imageSave(folder + "/photo.png", photo, 0);
  zo::imageWrite(folder + "/photo.jpg", photo, 90);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    makeMedia(argv[1]);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zo_doc_media: %s\n", e.what());
    return 1;
  }
}
