// What the JPEG functions cost beside bare TurboJPEG on the same picture: ratios of processor time, medians
// of rounds in which both take turns, so that a machine that is busy or slow disturbs both alike.
#include <turbojpeg.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zo_benchmark.h"
#include "zo_video/zo_video.h"

namespace {

using zo::benchmark::compare;

constexpr int QUALITY = 85;

void check(int result) {
  if (result != 0) {
    throw std::runtime_error(tjGetErrorStr());
  }
}

struct DestroyInstance {
  void operator()(void* p_instance) const { tjDestroy(p_instance); }
};
using Instance = std::unique_ptr<void, DestroyInstance>;

// A picture with slopes, edges and some noise, like a photograph to the coder.
zo::Frame makePicture(zo::FrameFormat format, zo::Size size) {
  zo::Frame frame;
  frame.reuse(format, size, zo::DeviceContext(), 0);
  unsigned state = 12345;
  for (unsigned p = 0; p < frame.planeCount(); ++p) {
    for (unsigned y = 0; y < frame.planeRows(p); ++y) {
      unsigned char* p_row = frame.planeData(p) + static_cast<std::size_t>(y) * frame.planeStride(p);
      for (unsigned x = 0; x < frame.planeRowBytes(p); ++x) {
        state = state * 1664525U + 1013904223U;
        const unsigned edge = ((x / 57 + y / 31) % 3) * 40;
        p_row[x] = static_cast<unsigned char>(40 + edge + (x + 2 * y) % 97 / 2 + (state >> 28));
      }
    }
  }
  return frame;
}

class Bench {
 public:
  explicit Bench(zo::Size size)
      : _size(size), _compressor(tjInitCompress()), _decompressor(tjInitDecompress()) {}

  void run() {
    std::printf("%dx%d, quality %d                      ours/ms  bare/ms   ratio\n", _size.width,
                _size.height, QUALITY);
    planar("I420", zo::ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, 1);
    planar("4:2:2 planar", zo::ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, 2);
    planar("4:4:4 planar", zo::ZO_FRAME_FORMAT_YUV444_PLANAR, TJSAMP_444, 1);
    packed("GRAY8", zo::ZO_FRAME_FORMAT_GRAY8, TJPF_GRAY, TJSAMP_GRAY);
    packed("BGR24", zo::ZO_FRAME_FORMAT_BGR24, TJPF_BGR, TJSAMP_444);
    imageLibrary();
  }

 private:
  std::string name(const char* p_function, const char* p_format) {
    return std::string(p_function) + " " + p_format;
  }

  std::vector<unsigned char> room(int subsampling) {
    return std::vector<unsigned char>(tjBufSize(_size.width, _size.height, subsampling));
  }

  void planar(const char* p_format, zo::FrameFormat format, int subsampling, unsigned cb) {
    const zo::Frame picture = makePicture(format, _size);
    const unsigned order[3] = {0, cb, 3 - cb};
    const unsigned char* planes[3];
    int strides[3];
    for (unsigned i = 0; i < 3; ++i) {
      planes[i] = picture.planeData(order[i]);
      strides[i] = static_cast<int>(picture.planeStride(order[i]));
    }
    std::vector<unsigned char> out = room(subsampling);
    unsigned long bytes = 0;
    compare(
        name("JpegEncoder", p_format).c_str(), [&] { _encoder.encode(picture, QUALITY, _buffer); },
        [&] {
          unsigned char* p_out = out.data();
          bytes = out.size();
          check(tjCompressFromYUVPlanes(_compressor.get(), planes, _size.width, strides, _size.height,
                                        subsampling, &p_out, &bytes, QUALITY, TJFLAG_NOREALLOC));
        });
    zo::Frame frame;
    zo::Frame bare;
    bare.reuse(format, _size, zo::DeviceContext(), 0);
    unsigned char* targets[3] = {bare.planeData(0), bare.planeData(cb), bare.planeData(3 - cb)};
    compare(
        name("JpegDecoder", p_format).c_str(),
        [&] { _decoder.decode(_buffer.data(), _buffer.size(), frame); },
        [&] {
          int width, height, found, colour_space;
          check(tjDecompressHeader3(_decompressor.get(), out.data(), bytes, &width, &height, &found,
                                    &colour_space));
          check(tjDecompressToYUVPlanes(_decompressor.get(), out.data(), bytes, targets, width, strides,
                                        height, 0));
        });
  }

  void packed(const char* p_format, zo::FrameFormat format, int pixel_format, int subsampling) {
    const zo::Frame picture = makePicture(format, _size);
    std::vector<unsigned char> out = room(subsampling);
    unsigned long bytes = 0;
    compare(
        name("JpegEncoder", p_format).c_str(), [&] { _encoder.encode(picture, QUALITY, _buffer); },
        [&] {
          unsigned char* p_out = out.data();
          bytes = out.size();
          check(tjCompress2(_compressor.get(), picture.planeData(0), _size.width,
                            static_cast<int>(picture.planeStride(0)), _size.height, pixel_format, &p_out,
                            &bytes, subsampling, QUALITY, TJFLAG_NOREALLOC));
        });
    if (format != zo::ZO_FRAME_FORMAT_GRAY8) {
      return;  // colour comes back as YUV
    }
    zo::Frame frame;
    zo::Frame bare;
    bare.reuse(format, _size, zo::DeviceContext(), 0);
    compare(
        name("JpegDecoder", p_format).c_str(),
        [&] { _decoder.decode(_buffer.data(), _buffer.size(), frame); },
        [&] {
          int width, height, found, colour_space;
          check(tjDecompressHeader3(_decompressor.get(), out.data(), bytes, &width, &height, &found,
                                    &colour_space));
          check(tjDecompress2(_decompressor.get(), out.data(), bytes, bare.planeData(0), width,
                              static_cast<int>(bare.planeStride(0)), height, pixel_format, 0));
        });
  }

  // These make a new object with each call; so does the bare side.
  void imageLibrary() {
    const zo::Frame picture = makePicture(zo::ZO_FRAME_FORMAT_BGR24, _size);
    std::shared_ptr<zo::Buffer> p_jpeg;
    compare(
        "encodeJpeg BGR24", [&] { p_jpeg = zo::encodeJpeg(picture, QUALITY); },
        [&] {
          const Instance instance(tjInitCompress());
          unsigned char* p_out = nullptr;
          unsigned long bytes = 0;
          check(tjCompress2(instance.get(), picture.planeData(0), _size.width,
                            static_cast<int>(picture.planeStride(0)), _size.height, TJPF_BGR, &p_out, &bytes,
                            TJSAMP_420, QUALITY, 0));
          tjFree(p_out);
        });
    compare(
        "decodeJpeg to BGR24", [&] { zo::decodeJpeg(p_jpeg->data(), p_jpeg->size()); },
        [&] {
          const Instance instance(tjInitDecompress());
          int width, height, found, colour_space;
          check(tjDecompressHeader3(instance.get(), p_jpeg->data(), p_jpeg->size(), &width, &height, &found,
                                    &colour_space));
          const std::unique_ptr<void, decltype(&std::free)> p_pixels(
              std::malloc(static_cast<std::size_t>(width) * 3 * static_cast<std::size_t>(height)),
              &std::free);
          check(tjDecompress2(instance.get(), p_jpeg->data(), p_jpeg->size(),
                              static_cast<unsigned char*>(p_pixels.get()), width, 0, height, TJPF_BGR, 0));
        });
  }

  zo::Size _size;
  zo::JpegEncoder _encoder;
  zo::JpegDecoder _decoder;
  zo::Buffer _buffer;
  Instance _compressor;
  Instance _decompressor;
};

}  // namespace

int main() {
  try {
    for (zo::Size size : {zo::Size(1920, 1080), zo::Size(640, 480)}) {
      Bench(size).run();
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "jpeg_benchmark: %s\n", e.what());
    return 1;
  }
  return 0;
}
