// The input is a list of drawing calls into a small frame between guard bytes.
#include "zo_fuzz.h"
#include "zo_video/zo_drawing.h"

namespace {

using zo::fuzz::Arguments;

void draw(Arguments arguments, zo::Frame& frame) {
  while (!arguments.empty()) {
    const uint8_t operation = arguments.byte();
    unsigned char color[3] = {arguments.byte(), arguments.byte(), arguments.byte()};
    if (operation % 3 == 0) {
      const zo::Point from(arguments.coordinate(), arguments.coordinate());
      const zo::Point to(arguments.coordinate(), arguments.coordinate());
      zo::drawLine(frame, from, to, color, arguments.coordinate());
    } else if (operation % 3 == 1) {
      const int x = arguments.coordinate();
      const int y = arguments.coordinate();
      const int width = arguments.coordinate();
      const int height = arguments.coordinate();
      zo::drawRect(frame, zo::Rect(x, y, width, height), color, arguments.coordinate());
    } else {
      const zo::Point position(arguments.coordinate(), arguments.coordinate());
      const int height = arguments.coordinate();
      zo::drawText(frame, arguments.text(arguments.below(40)), position, color, height);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  using namespace zo::fuzz;
  if (size > 2048) {
    return 0;
  }
  Arguments arguments(p_data, size);
  const zo::FrameFormat format = arguments.flag() ? zo::ZO_FRAME_FORMAT_BGR24 : zo::ZO_FRAME_FORMAT_RGB24;
  const zo::Size frame_size(1 + static_cast<int>(arguments.below(80)),
                            1 + static_cast<int>(arguments.below(80)));
  const unsigned padding = arguments.below(5);
  uint64_t digests[2] = {};
  for (uint64_t& value : digests) {
    GuardedFrame guarded(format, frame_size, padding);
    const Outcome outcome = outcomeOf([&] { draw(arguments, guarded.frame()); });
    require(outcome.status == zo::ZO_STATUS_OK, "drawing into a colour frame succeeds");
    guarded.requireIntact();
    value = digest(guarded.frame());
  }
  require(digests[0] == digests[1], "the same calls paint the same pixels twice");
  return 0;
}
