// Reading a clip from its first picture to its last, and capturing at a lower rate.
#include <turbojpeg.h>

#include <memory>

#include "zo_bench_bare.h"
#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_video/zo_turbojpeg_handles.h"
#include "zo_video/zo_video.h"

namespace zo {
namespace bench {
namespace {

constexpr int SLICES = 10;

// Reads a clip in slices. Opening is not measured; `step` reads one picture and tells whether there was one.
template <class Open, class Step>
std::function<void(Stopwatch&)> slicedReading(long long pictures, const Open& open, const Step& step) {
  decltype(open()) p_reader = nullptr;
  return [=, slice = 0](Stopwatch& watch) mutable {
    if (slice == 0) {
      p_reader = nullptr;
      p_reader = open();
    }
    // The last slice ends with the clip.
    long long left = slice + 1 < SLICES ? pictures / SLICES : pictures + 1;
    slice = (slice + 1) % SLICES;
    watch.start();
    while (left > 0 && step(*p_reader)) {
      --left;
    }
    watch.stop();
  };
}

std::function<void(Stopwatch&)> readAllBare(const std::string& path, long long pictures) {
  return slicedReading(
      pictures, [=] { return std::make_shared<BareReader>(path); },
      [](BareReader& reader) {
        const bool more = reader.next();
        if (more) {
          reader.copy();
        }
        return more;
      });
}

struct OpenReader {
  VideoReader reader;
  Frame frame;
};

std::function<void(Stopwatch&)> readAll(const std::string& path, long long pictures, bool navigation) {
  return slicedReading(
      pictures,
      [=] {
        auto p_open = std::make_shared<OpenReader>();
        p_open->reader.open(path.c_str(), -1, nullptr, navigation, false, false);
        return p_open;
      },
      [](OpenReader& open) {
        bool got_frame = false;
        open.reader.read(open.frame, got_frame, nullptr);
        return got_frame;
      });
}

std::function<void(Stopwatch&)> readAllPeer(const std::string& path, long long pictures,
                                            std::unique_ptr<PeerReader> (*p_open)(const std::string&)) {
  return slicedReading(
      pictures, [=] { return std::shared_ptr<PeerReader>(p_open(path)); },
      [](PeerReader& reader) { return reader.next(); });
}

// Picture by picture against the bare loop.
long long countWrong(const std::string& path, bool navigation) {
  BareReader bare(path);
  VideoReader reader;
  reader.open(path.c_str(), -1, nullptr, navigation, false, false);
  Frame frame;
  long long wrong = 0;
  while (bare.next()) {
    bool got_frame = false;
    reader.read(frame, got_frame, nullptr);
    wrong += got_frame && hashFrame(frame) == bare.pictureHash() ? 0 : 1;
  }
  bool got_frame = false;
  reader.read(frame, got_frame, nullptr);
  return wrong + (got_frame ? 1 : 0);
}

std::vector<Contender> sequential(const std::string& path) {
  const long long pictures = BareReader(path).readPackets();
  std::vector<Contender> contenders = {
      {"bare", readAllBare(path, pictures)},
      {"ours", readAll(path, pictures, false), [=] { return countWrong(path, false); }},
      {"ours, indexed", readAll(path, pictures, true), [=] { return countWrong(path, true); }}};
  if (haveFfms()) {
    contenders.push_back({"FFMS2", readAllPeer(path, pictures, &openFfms)});
  }
  if (haveOpenCv()) {
    contenders.push_back({"OpenCV", readAllPeer(path, pictures, &openOpenCv)});
  }
  return contenders;
}

constexpr int CAPTURE_FPS = 5;
constexpr int CAPTURE_WIDTH = 640;
constexpr int CAPTURE_HEIGHT = 360;
constexpr int QUALITY = 90;

// What a capture comes to without the library: decode all, of every fifth of 25 a second shrink the picture
// for the caller and compress it as it was decoded.
void captureBare(const std::string& path, Stopwatch& watch) {
  BareReader reader(path);
  const ScalerPtr p_scaler(sws_getContext(reader.codec()->width, reader.codec()->height,
                                          reader.codec()->pix_fmt, CAPTURE_WIDTH, CAPTURE_HEIGHT,
                                          AV_PIX_FMT_YUV420P, SWS_BICUBIC, nullptr, nullptr, nullptr));
  const TurboJpegCompressorPtr p_compressor(tjInitCompress());
  Frame target;
  target.reuse(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(CAPTURE_WIDTH, CAPTURE_HEIGHT), DeviceContext(), 0);
  uint8_t* planes[4] = {target.planeData(0), target.planeData(1), target.planeData(2), nullptr};
  int strides[4] = {};
  for (unsigned i = 0; i < 3; ++i) {
    strides[i] = static_cast<int>(target.planeStride(i));
  }
  std::vector<unsigned char> jpeg(tjBufSize(reader.codec()->width, reader.codec()->height, TJSAMP_420));
  watch.start();
  for (int i = 0; reader.next(); ++i) {
    reader.copy();
    if (i % (25 / CAPTURE_FPS) == 0) {
      const AVFrame& picture = *reader.picture();
      sws_scale(p_scaler.get(), picture.data, picture.linesize, 0, picture.height, planes, strides);
      const unsigned char* sources[3] = {picture.data[0], picture.data[1], picture.data[2]};
      unsigned char* p_jpeg = jpeg.data();
      unsigned long size = jpeg.size();
      tjCompressFromYUVPlanes(p_compressor.get(), sources, picture.width, picture.linesize, picture.height,
                              TJSAMP_420, &p_jpeg, &size, QUALITY, TJFLAG_NOREALLOC);
    }
  }
  watch.stop();
}

void capture(const std::string& path, Stopwatch& watch) {
  VideoCapture source(false, true);
  source.setMaxFps(CAPTURE_FPS);
  source.setFrameSize(Size(CAPTURE_WIDTH, CAPTURE_HEIGHT));
  source.setJpegQuality(QUALITY);
  source.open(path, -1);
  Frame frame;
  Buffer jpeg;
  long long timestamp = 0;
  watch.start();
  while (source.read(frame)) {
    source.readJpeg(jpeg, timestamp);
  }
  watch.stop();
}

// The same from public parts: reader, converter and coder, each frame decoded, every fifth converted.
void captureByParts(const std::string& path, Stopwatch& watch) {
  VideoReader reader;
  VideoConverter converter;
  JpegEncoder encoder;
  reader.open(path.c_str(), -1, nullptr, false, false, false);
  Frame frame;
  Frame small;
  Buffer jpeg;
  watch.start();
  for (int i = 0;; ++i) {
    bool got_frame = false;
    reader.read(frame, got_frame, nullptr);
    if (!got_frame) {
      break;
    }
    if (i % (25 / CAPTURE_FPS) == 0) {
      converter.convert(frame, frame.format(), Size(CAPTURE_WIDTH, CAPTURE_HEIGHT), small,
                        VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
      encoder.encode(frame, QUALITY, jpeg);
    }
  }
  watch.stop();
}

}  // namespace

void addReadingJobs(Jobs& jobs, const std::string& clips) {
  for (const char* p_name : {"sequential_h264.mp4", "sequential_mpeg4.avi", "sequential_vp9.webm",
                             "sequential_hevc.mp4", "sequential_mjpeg.avi"}) {
    const std::string path = clips + "/" + p_name;
    jobs.push_back({"sequential decode", p_name, [=] { return sequential(path); }, Place::SHARED, SLICES});
  }
  const std::string path = clips + "/sequential_mpeg4.avi";
  jobs.push_back(
      {"capture", "5 of 25 pictures a second, to 640x360, and JPEG", [=]() -> std::vector<Contender> {
         return {{"bare", [=](Stopwatch& watch) { captureBare(path, watch); }},
                 {"ours", [=](Stopwatch& watch) { capture(path, watch); }},
                 {"ours, by parts", [=](Stopwatch& watch) { captureByParts(path, watch); }}};
       }});
}

}  // namespace bench
}  // namespace zo
