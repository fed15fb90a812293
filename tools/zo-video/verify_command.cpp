#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <random>
#include <vector>

#include "command.h"
#include "failure.h"
#include "fingerprint.h"
#include "progress.h"
#include "source.h"
#include "text.h"

namespace zo_tool {

namespace {

constexpr long long DIFFERENCES_SHOWN = 10;
/// So many say enough about a file.
constexpr long long DIFFERENCES_AT_MOST = 100;

class VerifyCommand : public Command {
 public:
  const char* name() const override { return "verify"; }
  const char* summary() const override {
    return "Prove that jumping to a frame gives the same frame as reading in order";
  }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_option("--samples", _samples, "Number of jumps")
        ->type_name("N")
        ->capture_default_str()
        ->transform(wholeNumber(1, 100000000));
    app.add_option("--seed", _seed, "Start of the pseudo-random sequence of jumps")
        ->type_name("S")
        ->capture_default_str()
        ->transform(wholeNumber(0, LLONG_MAX));
    app.footer(
        "Reads every frame in order, then jumps to pseudo-random frames, and compares\n"
        "pixels and times of the frame arrived at and of the one after it. The same seed\n"
        "makes the same jumps. Exit status 1 on any difference; 100 differences end the\n"
        "work.\n"
        "\n"
        "Examples:\n"
        "  zo-video verify clip.mp4\n"
        "  zo-video verify clip.mp4 --samples 1000 --seed 7");
  }

  int run() override {
    Source source(_source);
    source.requireRestart();
    source.open(Access::NUMBERED);
    source.requireNumbers();
    const std::vector<Fingerprint> in_order = readInOrder(source);
    jump(source, in_order);
    report(static_cast<long long>(in_order.size()));
    if (_differences > 0) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT, "%lld of %lld frames after jumps differ from reading in order",
           _differences, _compared);
    }
    return 0;
  }

 private:
  std::vector<Fingerprint> readInOrder(Source& source) {
    Progress progress("frames", source.frameCount());
    std::vector<Fingerprint> in_order;
    zo::Frame frame;
    while (source.read(frame)) {
      in_order.emplace_back(frame);
      if (!frame.initialized()) {
        ++_without_picture;
      }
      progress.update(static_cast<long long>(in_order.size()));
    }
    if (static_cast<long long>(in_order.size()) != source.frameCount()) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT, "reading in order gave %lld frames, the index has %lld",
           static_cast<long long>(in_order.size()), source.frameCount());
    }
    return in_order;
  }

  void jump(Source& source, const std::vector<Fingerprint>& in_order) {
    Progress progress("jumps", _samples);
    std::mt19937_64 random(_seed);
    zo::Frame frame;
    while (_jumps < _samples && _differences < DIFFERENCES_AT_MOST) {
      const std::size_t index = static_cast<std::size_t>(random() % in_order.size());
      source.goTo(static_cast<long long>(index));
      ++_jumps;
      for (std::size_t i = index; i < in_order.size() && i < index + 2 && _differences < DIFFERENCES_AT_MOST;
           ++i) {
        ++_compared;
        if (!source.read(frame)) {
          different(index, i, "is missing");
        } else {
          compare(index, i, Fingerprint(frame), in_order[i]);
        }
      }
      progress.update(_jumps);
    }
  }

  void compare(std::size_t target, std::size_t index, const Fingerprint& got, const Fingerprint& expected) {
    if (!got.samePicture(expected)) {
      different(target, index, "shows another picture");
    } else if (!got.sameTime(expected)) {
      different(target, index, "has another time");
    }
  }

  void different(std::size_t target, std::size_t index, const char* p_how) {
    if (++_differences <= DIFFERENCES_SHOWN) {
      std::printf("after a jump to %zu, frame %zu %s\n", target, index, p_how);
    } else if (_differences == DIFFERENCES_SHOWN + 1) {
      std::printf("...\n");
    }
  }

  void report(long long frames) const {
    std::printf("In order:     %s", counted(frames, "frame").c_str());
    if (_without_picture > 0) {
      std::printf(", %lld of them without a picture", _without_picture);
    }
    std::printf("\nJumps:        %lld (seed %" PRIu64 ")\nCompared:     %s\nDifferences:  %lld\n", _jumps,
                _seed, counted(_compared, "frame").c_str(), _differences);
  }

  SourceOptions _source;
  long long _samples = 100;
  uint64_t _seed = 1;
  long long _without_picture = 0;
  long long _jumps = 0;
  long long _compared = 0;
  long long _differences = 0;
};

}  // namespace

std::unique_ptr<Command> makeVerifyCommand() {
  return std::make_unique<VerifyCommand>();
}

}  // namespace zo_tool
