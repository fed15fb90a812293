#ifndef SIMD_SRC_FONT_GLYPHS_H
#define SIMD_SRC_FONT_GLYPHS_H

#include <cstddef>
#include <cstdint>

namespace Simd {
namespace Detail {

constexpr unsigned FIRST_SYMBOL = 32;
constexpr unsigned LAST_SYMBOL = 126;
constexpr size_t SYMBOL_COUNT = LAST_SYMBOL - FIRST_SYMBOL + 1;

/// Size of the built-in glyphs, and of the space left of and above a text.
constexpr size_t SOURCE_WIDTH = 127;
constexpr size_t SOURCE_HEIGHT = 231;
constexpr size_t SOURCE_INDENT_X = 33;
constexpr size_t SOURCE_INDENT_Y = 12;

/// Unpacks a built-in glyph: SOURCE_HEIGHT rows of SOURCE_WIDTH bytes, each 0 or 255.
void unpackGlyph(size_t index, uint8_t* p_pixels);

// The packed glyphs, made by tools/font-generator.
//
// A glyph is a sequence of commands that give its rows from top to bottom. A row is known by its edges, the
// ascending columns where its colour changes; it begins with background. The row before the first one has no
// edges.
//   REPEAT_ROWS + n  n + 1 more rows like the one before
//   NEW_ROW + n      a row with n edges, one byte for each
//   MOVED_ROW        a row with as many edges as the one before, each moved by -8 to 7 columns: half a byte
//   for each,
//                    the low half first, plus 8
constexpr uint8_t REPEAT_ROWS = 0x00;
constexpr uint8_t NEW_ROW = 0x80;
constexpr uint8_t MOVED_ROW = 0xFF;
constexpr uint8_t MOST_REPEATS = 0x80;
constexpr int MOVE_BIAS = 8;
constexpr size_t MOST_EDGES = 32;

extern const uint8_t PACKED_GLYPHS[];
extern const uint16_t PACKED_GLYPH_STARTS[SYMBOL_COUNT];

}  // namespace Detail
}  // namespace Simd

#endif
