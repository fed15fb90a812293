// Makes the seeds: zo_fuzz_seeds DIRECTORY fills DIRECTORY/<target> with inputs that reach deep into each
// target from the first run on. They are made by the library and the test support, and are the same each
// time.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "zo_test_clip.h"
#include "zo_test_encoder.h"
#include "zo_test_files.h"
#include "zo_test_picture.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_video_reader.h"

namespace zo {
namespace test {
namespace {

namespace fs = std::filesystem;

std::string bytesOf(const Buffer& buffer) {
  return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size());
}

class Seeds {
 public:
  explicit Seeds(const std::string& directory) : _directory(directory) {}

  void add(const std::string& target, const std::string& name, const std::string& bytes) {
    fs::create_directories(_directory + "/" + target);
    writeFile(_directory + "/" + target + "/" + name, bytes);
  }

 private:
  std::string _directory;
};

// The same few bytes of data under headers of pictures that they cannot hold.
void addHugeClaims(Seeds& seeds, const std::string& jpeg) {
  const size_t header = jpeg.find("\xFF\xC0");
  for (const char* p_size : {"\x10\x01\x10\x01", "\xFF\xDC\xFF\xDC", "\x40\x01\xFF\xDC"}) {
    for (const char marker : {'\xC0', '\xC2'}) {
      std::string bytes = jpeg;
      bytes[header + 1] = marker;
      bytes.replace(header + 5, 4, p_size, 4);
      const std::string name =
          "claim" + std::to_string(static_cast<uint8_t>(p_size[0])) + (marker == '\xC2' ? "progressive" : "");
      seeds.add("jpeg_decoder", name, bytes);
      if (p_size[0] != '\x10') {  // imageLoad() decodes what is there of smaller ones
        seeds.add("image_load", name, "\3" + bytes);
      }
    }
  }
}

void addImages(Seeds& seeds) {
  const TempDir scratch;
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24}) {
    const Frame frame = makeNumberedFrame(format, Size(19, 13), 5);
    int kind = 0;
    for (const char* p_name : {"a.pgm", "a.ppm", "a.png", "a.jpg"}) {
      imageSave(scratch.file(p_name), frame, 60);
      const std::string bytes = readFile(scratch.file(p_name));
      const std::string name = std::string(toString(format)) + "." + p_name;
      seeds.add("image_load", name, static_cast<char>(kind++) + bytes);
      seeds.add("decode_jpeg", name, bytes);
    }
  }
  seeds.add("image_load", "text.pgm", std::string(1, '\0') + "P2\n# grey\n3 2\n99\n1 2 3\n40 50 99\n");
  seeds.add("image_load", "text.ppm", "\1P3 2 1 1000 1 2 3 400 500 1000\n");
  seeds.add("image_load", "deep.pgm", std::string(1, '\0') + "P5 2 2 65535\n" + std::string(8, 'd'));
  for (FrameFormat format : {ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
                             ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV444_PLANAR}) {
    for (Size size : {Size(1, 1), Size(17, 5), Size(33, 33)}) {
      const std::string path = scratch.file("b.jpg");
      imageWrite(path, makeNumberedFrame(format, size, 9), 70);
      const std::string name = std::string(toString(format)) + std::to_string(size.width);
      seeds.add("jpeg_decoder", name, readFile(path));
      seeds.add("decode_jpeg", name, readFile(path));
    }
  }
  addHugeClaims(seeds, readFile(scratch.file("b.jpg")));
  const Frame nv12 = makeNumberedFrame(ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, Size(20, 20), 3);
  seeds.add("jpeg_decoder", "image-library", bytesOf(*encodeJpeg(nv12, 95)));
}

// What follows the file in an input of video_reader.
std::string readerOptions(uint8_t switches, uint8_t first, uint8_t not_read, uint8_t second) {
  const char bytes[] = {static_cast<char>(switches), static_cast<char>(first), static_cast<char>(not_read),
                        static_cast<char>(second)};
  return std::string(bytes, sizeof(bytes));
}

void addClips(Seeds& seeds) {
  const TempDir scratch;
  struct Kind {
    const char* name;
    const char* codec;
    int b_frames;
    AVPixelFormat pixel_format = AV_PIX_FMT_YUV420P;
    std::optional<double> rotation = std::nullopt;
  };
  for (const Kind& kind :
       {Kind{"a.mp4", "mpeg4", 2}, Kind{"a.mkv", "mpeg4", 0}, Kind{"a.avi", "mjpeg", 0},
        Kind{"a.ts", "mpeg2video", 1}, Kind{"a.nut", "ffv1", 0}, Kind{"b.mp4", "libx264", 2},
        Kind{"c.mp4", "libx265", 2}, Kind{"b.mkv", "libvpx-vp9", 0},
        Kind{"turned.mov", "mpeg4", 1, AV_PIX_FMT_YUV420P, 90},
        Kind{"ten-bits.nut", "ffv1", 0, AV_PIX_FMT_YUV444P10LE},
        Kind{"grey.nut", "ffv1", 0, AV_PIX_FMT_GRAY16LE}}) {
    if (!haveEncoder(kind.codec)) {
      continue;
    }
    ClipOptions options;
    options.codec = kind.codec;
    options.width = 32;
    options.height = 24;
    options.frames = 10;
    options.gop = 4;
    options.b_frames = kind.b_frames;
    options.pixel_format = kind.pixel_format;
    options.rotation = kind.rotation;
    const std::string path = scratch.file(kind.name);
    makeClip(path, options);
    const std::string bytes = readFile(path);
    const auto add = [&](const char* p_way, const std::string& reader_options) {
      seeds.add("video_reader", std::string(kind.codec) + p_way + kind.name, bytes + reader_options);
    };
    add(".", readerOptions(0, 0x80, 0, 0));
    add(".skip.", readerOptions(2, 0xF0, 0, 0));
    // One picture is read, then the reader moves to the next one, which it delivers, and on without a seek.
    add(".next.", readerOptions(12, 1, 0xEE, 3));
    // Three are read; it moves to the held one, delivers it and the next, and goes back to that one.
    add(".held.", readerOptions(12, 2, 0xDC, 3));
    // Nothing is read between a jump to the end and one back.
    add(".back.", readerOptions(12, 9, 0xFF, 5));
  }
}

void addNavigationFiles(Seeds& seeds) {
  const TempDir scratch;
  ClipOptions options;
  options.width = 32;
  options.height = 32;
  options.frames = 20;
  options.gop = 6;
  options.b_frames = 2;
  const std::string path = scratch.file("clip.mp4");
  makeClip(path, options);
  VideoReader().open(path.c_str(), -1, nullptr, true, false, true);
  seeds.add("navigation_cache", "own", readFile(path + VideoReader::NAVIGATION_FILE_EXTENSION));
  seeds.add("navigation_cache", "words", "12\n34\nabc\n56\n");
  seeds.add("navigation_cache", "edges", "0\n2147483648\n4294967295\n4294967296\n");
  seeds.add("navigation_cache", "signs", "-1 +5 -4294967295\t0x10 007");
  seeds.add("navigation_cache", "empty", "");
}

// Arguments for calls: the targets give every byte a meaning.
void addNumbers(Seeds& seeds) {
  std::mt19937 random(4711);
  for (const char* p_target : {"drawing", "converter", "plain_functions"}) {
    for (int i = 0; i < 40; ++i) {
      std::string bytes(20 + 10 * static_cast<size_t>(i), '\0');
      for (char& byte : bytes) {
        byte = static_cast<char>(random());
      }
      seeds.add(p_target, "numbers" + std::to_string(i), bytes);
    }
  }
}

void makeSeeds(const std::string& directory) {
  const QuietLog quiet;
  Seeds seeds(directory);
  addImages(seeds);
  addClips(seeds);
  addNavigationFiles(seeds);
  addNumbers(seeds);
}

}  // namespace
}  // namespace test
}  // namespace zo

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: zo_fuzz_seeds DIRECTORY\n");
    return 2;
  }
  try {
    zo::test::makeSeeds(argv[1]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "zo_fuzz_seeds: %s\n", e.what());
    return 1;
  }
  return 0;
}
