// What reading and jumping cost beside a bare FFmpeg loop that does the same work, in one small program that
// also runs in an emulator: reader_ratio FILE [ROUNDS]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
}

#include "zo_video/zo_ffmpeg_compat.h"
#include "zo_video/zo_ffmpeg_handles.h"
#include "zo_video/zo_video.h"

namespace {

// Reads, decodes and copies the picture out, as a caller who wants to keep it has to.
class BareReader {
 public:
  explicit BareReader(const char* path) : _p_packet(av_packet_alloc()), _p_frame(av_frame_alloc()) {
    AVFormatContext* p_format = nullptr;
    require(avformat_open_input(&p_format, path, nullptr, nullptr) == 0);
    _p_format.reset(p_format);
    require(avformat_find_stream_info(p_format, nullptr) >= 0);
    const AVCodec* p_decoder = nullptr;
    _stream = zo::findBestVideoStream(p_format, &p_decoder);
    require(_stream >= 0);
    _p_codec.reset(avcodec_alloc_context3(p_decoder));
    require(avcodec_parameters_to_context(_p_codec.get(), p_format->streams[_stream]->codecpar) >= 0);
    _p_codec->thread_count = 1;
    require(avcodec_open2(_p_codec.get(), p_decoder, nullptr) == 0);
  }

  bool next() {
    for (;;) {
      const int result = avcodec_receive_frame(_p_codec.get(), _p_frame.get());
      if (result == 0) {
        return true;
      }
      if (result == AVERROR_EOF) {
        return false;
      }
      if (av_read_frame(_p_format.get(), _p_packet.get()) < 0) {
        avcodec_send_packet(_p_codec.get(), nullptr);
        continue;
      }
      if (_p_packet->stream_index == _stream) {
        avcodec_send_packet(_p_codec.get(), _p_packet.get());
      }
      av_packet_unref(_p_packet.get());
    }
  }

  void copy() {
    const auto format = static_cast<AVPixelFormat>(_p_frame->format);
    const int bytes = av_image_get_buffer_size(format, _p_frame->width, _p_frame->height, 1);
    _pixels.resize(static_cast<std::size_t>(bytes));
    av_image_copy_to_buffer(_pixels.data(), bytes, _p_frame->data, _p_frame->linesize, format,
                            _p_frame->width, _p_frame->height, 1);
  }

  int64_t pts() const { return _p_frame->best_effort_timestamp; }

  // To the key frame before the target, and on from there.
  void jump(int64_t target) {
    require(av_seek_frame(_p_format.get(), _stream, target, AVSEEK_FLAG_BACKWARD) >= 0);
    avcodec_flush_buffers(_p_codec.get());
    do {
      require(next());
    } while (pts() < target);
  }

 private:
  static void require(bool condition) {
    if (!condition) {
      throw std::runtime_error("the bare loop cannot read this file");
    }
  }

  zo::FormatContextPtr _p_format;
  zo::CodecContextPtr _p_codec;
  zo::PacketPtr _p_packet;
  zo::AvFramePtr _p_frame;
  int _stream = -1;
  std::vector<uint8_t> _pixels;
};

double seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* what, std::vector<double> bare, std::vector<double> ours) {
  std::sort(bare.begin(), bare.end());
  std::sort(ours.begin(), ours.end());
  const double b = bare[bare.size() / 2];
  const double o = ours[ours.size() / 2];
  std::printf("%-28s bare %8.1f ms   zo_video %8.1f ms   ratio %.3f\n", what, b * 1e3, o * 1e3, o / b);
}

void measure(const char* path, int rounds) {
  std::vector<int64_t> times;
  {
    BareReader bare(path);
    while (bare.next()) {
      times.push_back(bare.pts());
    }
  }
  std::vector<long long> targets;
  unsigned state = 1;
  for (int i = 0; i < 20; ++i) {
    state = state * 1664525U + 1013904223U;
    targets.push_back(static_cast<long long>((state >> 8) % times.size()));
  }

  std::vector<double> bare_reading;
  std::vector<double> our_reading;
  std::vector<double> bare_jumps;
  std::vector<double> our_jumps;
  for (int round = 0; round < rounds; ++round) {
    BareReader bare(path);
    bare_reading.push_back(seconds([&] {
      while (bare.next()) {
        bare.copy();
      }
    }));
    zo::VideoReader reader;
    reader.open(path, -1, nullptr, true, false, false);
    zo::Frame frame;
    bool got_frame = true;
    our_reading.push_back(seconds([&] {
      while (got_frame) {
        reader.read(frame, got_frame, nullptr);
      }
    }));
    BareReader jumper(path);
    bare_jumps.push_back(seconds([&] {
      for (const long long target : targets) {
        jumper.jump(times[static_cast<std::size_t>(target)]);
        jumper.copy();
      }
    }));
    our_jumps.push_back(seconds([&] {
      for (const long long target : targets) {
        reader.moveByIndex(target);
        reader.read(frame, got_frame, nullptr);
      }
    }));
  }
  std::printf("%zu pictures, median of %d rounds\n", times.size(), rounds);
  report("reading all", bare_reading, our_reading);
  report("20 jumps", bare_jumps, our_jumps);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
  if (argc < 2 || rounds < 1) {
    std::fputs("usage: reader_ratio FILE [ROUNDS]\n", stderr);
    return 2;
  }
  try {
    zo::registerFormatsAndCodecs();
    av_log_set_level(AV_LOG_QUIET);
    measure(argv[1], rounds);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reader_ratio: %s\n", error.what());
    return 1;
  }
  return 0;
}
