#ifndef ZO_TESTS_ZO_VIDEO_ZO_GUARDED_CANVAS_H
#define ZO_TESTS_ZO_VIDEO_ZO_GUARDED_CANVAS_H

#include <array>
#include <cstddef>
#include <vector>

#include "zo_core/zo_frame.h"

namespace zo {
namespace test {

using Color = std::array<unsigned char, 3>;

/// A frame with 3 bytes per pixel over memory of the test's own: the bytes in front of, between and behind
/// the rows are known, so that a write outside the picture shows.
class GuardedCanvas {
 public:
  static constexpr unsigned char BACKGROUND = 0x40;
  static constexpr unsigned char GUARD = 0xA5;

  explicit GuardedCanvas(Size size, FrameFormat format = ZO_FRAME_FORMAT_BGR24, unsigned row_padding = 7)
      : _size(size),
        _stride(static_cast<unsigned>(size.width) * 3 + row_padding),
        _memory(MARGIN + static_cast<std::size_t>(_stride) * static_cast<unsigned>(size.height) + MARGIN,
                GUARD) {
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        setPixel(x, y, {BACKGROUND, BACKGROUND, BACKGROUND});
      }
    }
    frame = Frame(FrameLayout(format, size, {_stride, 0, 0, 0}), DeviceContext(),
                  DevicePtr(_memory.data() + MARGIN));
  }

  GuardedCanvas(const GuardedCanvas&) = delete;
  GuardedCanvas& operator=(const GuardedCanvas&) = delete;

  Size size() const { return _size; }
  Color pixel(int x, int y) const {
    const std::size_t at = offset(x, y);
    return {_memory[at], _memory[at + 1], _memory[at + 2]};
  }
  void setPixel(int x, int y, Color color) {
    for (std::size_t i = 0; i < color.size(); ++i) {
      _memory[offset(x, y) + i] = color[i];
    }
  }
  bool isBackground(int x, int y) const { return pixel(x, y) == Color{BACKGROUND, BACKGROUND, BACKGROUND}; }

  /// All bytes, guards included: two frames of the same size are equal exactly when these are.
  const std::vector<unsigned char>& memory() const { return _memory; }

  bool guardsAreIntact() const {
    std::vector<unsigned char> guards = _memory;
    for (int y = 0; y < _size.height; ++y) {
      const std::size_t at = offset(0, y);
      for (std::size_t i = 0; i < static_cast<std::size_t>(_size.width) * 3; ++i) {
        guards[at + i] = GUARD;
      }
    }
    return guards == std::vector<unsigned char>(guards.size(), GUARD);
  }

  Frame frame;

 private:
  static constexpr std::size_t MARGIN = 256;

  std::size_t offset(int x, int y) const {
    return MARGIN + static_cast<std::size_t>(y) * _stride + static_cast<std::size_t>(x) * 3;
  }

  Size _size;
  unsigned _stride;
  std::vector<unsigned char> _memory;
};

}  // namespace test
}  // namespace zo

#endif
