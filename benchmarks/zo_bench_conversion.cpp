// Conversions with a kept scaler, against the scaler itself.
#include <memory>

#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_bench_pictures.h"
#include "zo_video/zo_ffmpeg_handles.h"
#include "zo_video/zo_video.h"
#include "zo_video/zo_video_helpers.h"

namespace zo {
namespace bench {
namespace {

struct Pair {
  const char* name;
  FrameFormat source;
  FrameFormat target;
  Size target_size;
  VideoConverter::ScaleAlgorithm algorithm;
};

const Size SIZE(1920, 1080);
const Size SMALL(640, 360);

std::vector<Contender> conversion(const Pair& pair) {
  const auto p_source = makePicture(pair.source, SIZE);
  const auto p_bare_target = std::make_shared<Frame>();
  p_bare_target->reuse(pair.target, pair.target_size, DeviceContext(), 0);
  const std::shared_ptr<SwsContext> p_scaler(
      sws_getContext(SIZE.width, SIZE.height, frameFormatToAvPixelFormat(pair.source), pair.target_size.width,
                     pair.target_size.height, frameFormatToAvPixelFormat(pair.target),
                     videoConvertorAlgorithmToAvScaleFlags(pair.algorithm), nullptr, nullptr, nullptr),
      &sws_freeContext);
  const auto p_converter = std::make_shared<VideoConverter>();
  const auto p_target = std::make_shared<Frame>();
  std::vector<Contender> contenders = {
      {"bare",
       [=](Stopwatch& watch) {
         const Planes source(*p_source);
         const Planes target(*p_bare_target);
         watch.start();
         sws_scale(p_scaler.get(), source.data, source.strides, 0, SIZE.height, target.data, target.strides);
         watch.stop();
       }},
      {"ours", [=](Stopwatch& watch) {
         watch.start();
         p_converter->convert(*p_source, pair.target, pair.target_size, *p_target, pair.algorithm);
         watch.stop();
       }}};
  const bool to_bgr =
      pair.source == ZO_FRAME_FORMAT_YUV420_PLANAR_I420 && pair.target == ZO_FRAME_FORMAT_BGR24;
  const bool shrunk = pair.source == ZO_FRAME_FORMAT_BGR24 && pair.target_size == SMALL &&
                      pair.algorithm == VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC;
  if (haveOpenCv() && (to_bgr || shrunk)) {
    const auto p_bgr = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
    // At these sizes rows and planes follow one another without gaps.
    const std::shared_ptr<PeerImages> p_images(makeOpenCvImages(
        p_bgr->planeData(0), to_bgr ? p_source->planeData(0) : nullptr, SIZE.width, SIZE.height));
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            to_bgr ? p_images->i420ToBgr() : p_images->bgrResized();
                            watch.stop();
                          }});
  }
  return contenders;
}

}  // namespace

void addConversionJobs(Jobs& jobs) {
  const Pair pairs[] = {
      {"I420 to BGR24", ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_BGR24, SIZE,
       VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"I420 to NV12", ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, SIZE,
       VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"NV12 to BGR24", ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, ZO_FRAME_FORMAT_BGR24, SIZE,
       VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"BGR24 to I420", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, SIZE,
       VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"I420 to GRAY8", ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZO_FRAME_FORMAT_GRAY8, SIZE,
       VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"I420 to I420 640x360, bicubic", ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
       ZO_FRAME_FORMAT_YUV420_PLANAR_I420, SMALL, VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC},
      {"BGR24 to BGR24 640x360, bicubic", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_BGR24, SMALL,
       VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC},
      {"BGR24 to BGR24 640x360, area", ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_BGR24, SMALL,
       VideoConverter::ZO_SCALE_ALGORITHM_AREA}};
  for (const Pair& pair : pairs) {
    jobs.push_back({"conversion", pair.name, [=] { return conversion(pair); }});
  }
}

}  // namespace bench
}  // namespace zo
