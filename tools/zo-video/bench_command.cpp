#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <random>

#include "command.h"
#include "failure.h"
#include "progress.h"
#include "source.h"
#include "text.h"

namespace zo_tool {

namespace {

double nowSeconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// One line of the table: how often something was done, and how long that took.
class Measurement {
 public:
  explicit Measurement(double budget_seconds) : _start(nowSeconds()), _budget(budget_seconds) {}

  /// Counts one more; false once the time is used up.
  bool again() {
    checkStop();
    ++_count;
    return nowSeconds() - _start < _budget;
  }

  void print(const char* p_what, const zo::Size& size) const {
    const double seconds = std::max(nowSeconds() - _start, 1e-9);
    const double rate = static_cast<double>(_count) / seconds;
    std::printf("%-34s %9lld %9.2f %11.1f", p_what, _count, seconds, rate);
    if (size.width > 0) {
      std::printf(" %10.1f", rate * size.width * size.height / 1e6);
    }
    std::printf("\n");
    std::fflush(stdout);
  }

  long long count() const { return _count; }

 private:
  double _start;
  double _budget;
  long long _count = 0;
};

class BenchCommand : public Command {
 public:
  const char* name() const override { return "bench"; }
  const char* summary() const override {
    return "Measure decode, seek, convert and encode rates on this machine";
  }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_option("--seconds", _seconds, "Longest time for each line")
        ->type_name("S")
        ->capture_default_str()
        ->check(number(0.01, 3600));
    app.footer(
        "Everything runs on one thread, as in a program that uses the library.\n"
        "\n"
        "Examples:\n"
        "  zo-video bench clip.mp4\n"
        "  zo-video bench clip.mp4 --seconds 10");
  }

  int run() override {
    Source source(_source);
    std::printf("%-34s %9s %9s %11s %10s\n", "what", "count", "seconds", "per second", "Mpixel/s");
    Measurement open_time(0);
    source.open(Access::NUMBERED);
    open_time.again();
    open_time.print("open and index", zo::Size());
    zo::Frame picture;
    decode(source, picture);
    if (!picture.initialized()) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT, "'%s' gives no picture", _source.url.c_str());
    }
    if (source.isNumbered()) {
      seek(source);
    }
    convert(picture);
    encode(picture);
    return 0;
  }

 private:
  void decode(Source& source, zo::Frame& picture) const {
    zo::Frame frame;
    Measurement measurement(_seconds);
    while (source.read(frame)) {
      if (frame.initialized()) {
        std::swap(frame, picture);
      }
      if (!measurement.again()) {
        break;
      }
    }
    measurement.print("decode in order", picture.size());
  }

  void seek(Source& source) const {
    std::mt19937_64 random(1);
    zo::Frame frame;
    Measurement measurement(_seconds);
    do {
      source.goTo(static_cast<long long>(random() % static_cast<uint64_t>(source.frameCount())));
      source.read(frame);
    } while (measurement.again());
    measurement.print("jump to a pseudo-random frame", zo::Size());
  }

  void convertTo(const zo::Frame& picture, zo::FrameFormat format, const zo::Size& size,
                 const char* p_what) const {
    zo::VideoConverter converter;
    zo::Frame converted;
    Measurement measurement(_seconds);
    do {
      converter.convert(picture, format, size, converted, zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
    } while (measurement.again());
    measurement.print(p_what, picture.size());
  }

  void convert(const zo::Frame& picture) const {
    const zo::Size half((picture.size().width + 1) / 2, (picture.size().height + 1) / 2);
    convertTo(picture, zo::ZO_FRAME_FORMAT_BGR24, picture.size(), "convert to BGR24");
    convertTo(picture, zo::ZO_FRAME_FORMAT_GRAY8, picture.size(), "convert to grey");
    convertTo(picture, zo::ZO_FRAME_FORMAT_BGR24, half, "convert to BGR24 at half size");
  }

  void encode(const zo::Frame& picture) const {
    zo::JpegEncoder encoder;
    zo::Buffer jpeg;
    Measurement measurement(_seconds);
    do {
      encoder.encode(picture, 90, jpeg);
    } while (measurement.again());
    measurement.print("encode as JPEG, quality 90", picture.size());
  }

  SourceOptions _source;
  double _seconds = 1;
};

}  // namespace

std::unique_ptr<Command> makeBenchCommand() {
  return std::make_unique<BenchCommand>();
}

}  // namespace zo_tool
