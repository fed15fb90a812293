// Draws the glyphs of the built-in font from a font file and writes them as source code.
//
// usage: font-generator FONT WIDTH HEIGHT > simd/src/font_glyphs_data.cpp
//   FONT           a monospaced outline font
//   WIDTH, HEIGHT  size of its em square in pixels; they may differ, to make glyphs narrower or wider
//
// Every glyph is drawn without hinting and without grey into a cell; all glyphs together are centred in it
// from top to bottom. See simd/src/font_glyphs.h for what is written.

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "font_glyphs.h"

namespace {

using namespace Simd::Detail;

using Row = std::vector<int>;  // edges
using Glyph = std::vector<Row>;

struct Drawing {
  int left;  // of the bitmap, from the pen's position
  int top;   // of the bitmap, upwards from the base line
  std::vector<std::vector<bool>> rows;
};

void check(FT_Error error, const char* what) {
  if (error != 0) {
    throw std::runtime_error(std::string(what) + " failed, error " + std::to_string(error));
  }
}

Drawing drawGlyph(FT_Face p_face, unsigned symbol) {
  check(FT_Load_Char(p_face, symbol, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP), "FT_Load_Char");
  check(FT_Render_Glyph(p_face->glyph, FT_RENDER_MODE_MONO), "FT_Render_Glyph");
  const FT_Bitmap& bitmap = p_face->glyph->bitmap;
  Drawing drawing{p_face->glyph->bitmap_left, p_face->glyph->bitmap_top, {}};
  // Centre the advance in the cell.
  const auto advance = static_cast<int>((p_face->glyph->advance.x + 32) / 64);
  drawing.left += (static_cast<int>(SOURCE_WIDTH) - advance) / 2;
  for (unsigned y = 0; y < bitmap.rows; ++y) {
    const unsigned char* p_row = bitmap.buffer + static_cast<long>(y) * bitmap.pitch;
    std::vector<bool> row(bitmap.width);
    for (unsigned x = 0; x < bitmap.width; ++x) {
      row[x] = (p_row[x / 8] >> (7 - x % 8) & 1) != 0;
    }
    drawing.rows.push_back(row);
  }
  return drawing;
}

Row edgesOf(const std::vector<bool>& row, int left) {
  Row edges;
  bool ink = false;
  for (std::size_t i = 0; i <= row.size(); ++i) {
    const bool next = i < row.size() && row[i];
    if (next != ink) {
      edges.push_back(std::clamp(left + static_cast<int>(i), 0, static_cast<int>(SOURCE_WIDTH)));
      ink = next;
    }
  }
  return edges;
}

std::vector<Glyph> drawFont(const char* p_path, unsigned em_width, unsigned em_height) {
  FT_Library p_library = nullptr;
  FT_Face p_face = nullptr;
  check(FT_Init_FreeType(&p_library), "FT_Init_FreeType");
  check(FT_New_Face(p_library, p_path, 0, &p_face), "FT_New_Face");
  check(FT_Set_Pixel_Sizes(p_face, em_width, em_height), "FT_Set_Pixel_Sizes");
  std::vector<Drawing> drawings;
  int top = 0;
  int bottom = 0;
  for (unsigned symbol = FIRST_SYMBOL; symbol <= LAST_SYMBOL; ++symbol) {
    drawings.push_back(drawGlyph(p_face, symbol));
    top = std::max(top, drawings.back().top);
    bottom = std::min(bottom, drawings.back().top - static_cast<int>(drawings.back().rows.size()));
  }
  FT_Done_Face(p_face);
  FT_Done_FreeType(p_library);
  if (top - bottom > static_cast<int>(SOURCE_HEIGHT)) {
    throw std::runtime_error("the glyphs are " + std::to_string(top - bottom) + " pixels high");
  }
  const int base_line = (static_cast<int>(SOURCE_HEIGHT) - (top - bottom)) / 2 + top;
  std::fprintf(stderr, "ink is %d high, base line at %d\n", top - bottom, base_line);
  std::vector<Glyph> glyphs;
  for (const Drawing& drawing : drawings) {
    Glyph glyph(SOURCE_HEIGHT);
    for (std::size_t i = 0; i < drawing.rows.size(); ++i) {
      glyph[static_cast<std::size_t>(base_line - drawing.top) + i] = edgesOf(drawing.rows[i], drawing.left);
    }
    glyphs.push_back(glyph);
  }
  return glyphs;
}

bool isMoved(const Row& before, const Row& row) {
  if (row.empty() || before.size() != row.size()) {
    return false;
  }
  for (std::size_t i = 0; i < row.size(); ++i) {
    const int moved = row[i] - before[i] + MOVE_BIAS;
    if (moved < 0 || moved > 15) {
      return false;
    }
  }
  return true;
}

void packGlyph(const Glyph& glyph, std::vector<unsigned>& bytes) {
  Row before;
  for (std::size_t y = 0; y < glyph.size();) {
    std::size_t repeats = 0;
    while (y + repeats < glyph.size() && repeats < MOST_REPEATS && glyph[y + repeats] == before) {
      ++repeats;
    }
    if (repeats > 0) {
      bytes.push_back(REPEAT_ROWS + static_cast<unsigned>(repeats) - 1);
      y += repeats;
      continue;
    }
    const Row& row = glyph[y++];
    if (isMoved(before, row)) {
      bytes.push_back(MOVED_ROW);
      for (std::size_t i = 0; i < row.size(); i += 2) {
        const int low = row[i] - before[i] + MOVE_BIAS;
        const int high = i + 1 < row.size() ? row[i + 1] - before[i + 1] + MOVE_BIAS : 0;
        bytes.push_back(static_cast<unsigned>(low | high << 4));
      }
    } else {
      if (row.size() > MOST_EDGES) {
        throw std::runtime_error("a row has too many edges");
      }
      bytes.push_back(NEW_ROW + static_cast<unsigned>(row.size()));
      bytes.insert(bytes.end(), row.begin(), row.end());
    }
    before = row;
  }
}

void printNumbers(const std::vector<unsigned>& numbers) {
  std::string line;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::string number = std::to_string(numbers[i]) + (i + 1 < numbers.size() ? "," : "};");
    if (line.size() + number.size() + 1 > 108) {
      std::printf("   %s\n", line.c_str());
      line.clear();
    }
    line += " " + number;
  }
  std::printf("   %s\n", line.c_str());
}

void printSource(const std::vector<Glyph>& glyphs) {
  std::vector<unsigned> bytes;
  std::vector<unsigned> starts;
  for (const Glyph& glyph : glyphs) {
    starts.push_back(static_cast<unsigned>(bytes.size()));
    packGlyph(glyph, bytes);
  }
  if (starts.back() > 0xFFFF) {
    throw std::runtime_error("the font takes too many bytes");
  }
  std::fprintf(stderr, "%zu bytes\n", bytes.size());
  std::printf(
      "// Made by tools/font-generator. The glyphs are those of a free font: see FONT_LICENSE.txt.\n\n");
  std::printf("#include \"font_glyphs.h\"\n\nnamespace Simd {\nnamespace Detail {\n\n// clang-format off\n");
  std::printf("const uint16_t PACKED_GLYPH_STARTS[SYMBOL_COUNT] = {\n");
  printNumbers(starts);
  std::printf("\nconst uint8_t PACKED_GLYPHS[] = {\n");
  printNumbers(bytes);
  std::printf("// clang-format on\n\n}  // namespace Detail\n}  // namespace Simd\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: font-generator FONT WIDTH HEIGHT > simd/src/font_glyphs_data.cpp\n");
    return 2;
  }
  try {
    printSource(drawFont(argv[1], static_cast<unsigned>(std::atoi(argv[2])),
                         static_cast<unsigned>(std::atoi(argv[3]))));
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "font-generator: %s\n", exception.what());
    return 1;
  }
  return 0;
}
