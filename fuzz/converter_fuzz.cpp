// The input is a list of conversions through one converter: formats, sizes, algorithms.
#include <vector>

#include "zo_fuzz.h"
#include "zo_video/zo_video_converter.h"

namespace {

using zo::fuzz::Arguments;

zo::FrameFormat someFormat(Arguments& arguments) {
  const uint8_t byte = arguments.byte();
  return static_cast<zo::FrameFormat>(byte < 250 ? byte % 21 : arguments.number<int32_t>());
}

zo::Size someSize(Arguments& arguments) {
  const int width = static_cast<int>(arguments.below(300)) - 2;
  const int height = static_cast<int>(arguments.below(300)) - 2;
  return zo::Size(width, height);
}

void paint(zo::Frame& frame, uint8_t value) {
  for (unsigned p = 0; p < frame.planeCount(); ++p) {
    const size_t bytes = static_cast<size_t>(frame.planeStride(p)) * frame.planeRows(p);
    for (size_t i = 0; i < bytes; ++i) {
      frame.planeData(p)[i] = static_cast<uint8_t>(value += 7);
    }
  }
}

std::vector<uint64_t> convertAll(Arguments arguments) {
  using namespace zo::fuzz;
  std::vector<uint64_t> answers;
  zo::VideoConverter converter;
  zo::Frame destination;
  for (int call = 0; call < 8 && !arguments.empty(); ++call) {
    zo::Frame source;
    source.reuse(someFormat(arguments), someSize(arguments), zo::DeviceContext(), 0);
    const uint8_t value = arguments.byte();
    paint(source, value);
    source.setTimestamp(arguments.number<int64_t>());
    const zo::FrameFormat format = someFormat(arguments);
    const zo::Size size = arguments.flag() ? source.size() : someSize(arguments);
    const int algorithm = arguments.byte() % 8 - 1;
    // The scaler leaves some bytes as they were: the last chroma row of an odd-sized 4:2:0 picture from
    // packed 4:2:2 of the same size.
    destination.reuse(format, size, zo::DeviceContext(), 0);
    paint(destination, 1);
    const Outcome outcome = outcomeOf([&] {
      converter.convert(source, format, size, destination,
                        static_cast<zo::VideoConverter::ScaleAlgorithm>(algorithm));
    });
    require(destination.format() == format && destination.size() == size,
            "the destination has been reshaped, whatever the outcome");
    answers.push_back(static_cast<uint64_t>(outcome.status));
    if (outcome.status == zo::ZO_STATUS_OK) {
      require(destination.timestamp() == source.timestamp(), "the time is copied");
      answers.push_back(digest(destination));
    }
  }
  return answers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  const Arguments arguments(p_data, size);
  const std::vector<uint64_t> answers = convertAll(arguments);
  zo::fuzz::require(convertAll(arguments) == answers, "the same conversions give the same answers twice");
  return 0;
}
