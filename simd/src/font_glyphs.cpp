#include "font_glyphs.h"

#include <cstring>

namespace Simd {
namespace Detail {
namespace {

constexpr uint8_t INK = 255;

void paintRow(const uint8_t* p_edges, size_t edges, uint8_t* p_row) {
  memset(p_row, 0, SOURCE_WIDTH);
  for (size_t i = 0; i + 1 < edges; i += 2) {
    memset(p_row + p_edges[i], INK, static_cast<size_t>(p_edges[i + 1] - p_edges[i]));
  }
}

}  // namespace

void unpackGlyph(size_t index, uint8_t* p_pixels) {
  const uint8_t* p_next = PACKED_GLYPHS + PACKED_GLYPH_STARTS[index];
  uint8_t row_edges[MOST_EDGES];
  size_t edges = 0;
  for (size_t y = 0; y < SOURCE_HEIGHT;) {
    const uint8_t command = *p_next++;
    size_t rows = 1;
    if (command == MOVED_ROW) {
      for (size_t i = 0; i < edges; ++i) {
        const int half = (i % 2 == 0 ? p_next[i / 2] : p_next[i / 2] >> 4) & 0x0F;
        row_edges[i] = static_cast<uint8_t>(row_edges[i] + half - MOVE_BIAS);
      }
      p_next += (edges + 1) / 2;
    } else if (command >= NEW_ROW) {
      edges = command - NEW_ROW;
      memcpy(row_edges, p_next, edges);
      p_next += edges;
    } else {
      rows = command - REPEAT_ROWS + 1u;
    }
    for (; rows > 0; --rows, ++y) {
      paintRow(row_edges, edges, p_pixels + y * SOURCE_WIDTH);
    }
  }
}

}  // namespace Detail
}  // namespace Simd
