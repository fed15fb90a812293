/// Saves a picture that shows zo::drawText() at several heights: text-sample OUT.png
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "zo_video/zo_video.h"

namespace {

constexpr int HEIGHTS[] = {8, 10, 12, 14, 16, 20, 24, 32, 48};
constexpr unsigned char PAPER[3] = {30, 27, 26};
constexpr unsigned char INK[3] = {240, 238, 236};
constexpr unsigned char NUMBER[3] = {110, 190, 245};
constexpr int MARGIN = 12;
constexpr int NUMBER_COLUMN = 60;

void paintPaper(zo::Frame& picture) {
  for (int y = 0; y < picture.size().height; ++y) {
    for (int x = 0; x < picture.size().width; ++x) {
      std::memcpy(picture.planeData(0) + static_cast<unsigned>(y) * picture.planeStride(0) +
                      3 * static_cast<unsigned>(x),
                  PAPER, sizeof PAPER);
    }
  }
}

void makeSample(const std::string& path) {
  std::string letters;
  for (char c = ' '; c < 127; ++c) {
    letters += c;
  }
  zo::Frame picture;
  picture.reuse(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(900, 360), zo::DeviceContext(), 0);
  paintPaper(picture);
  int y = MARGIN;
  for (const int height : HEIGHTS) {
    zo::drawText(picture, std::to_string(height), zo::Point(MARGIN, y), NUMBER, height < 24 ? height : 24);
    zo::drawText(
        picture,
        height < 32 ? "The quick brown fox jumps over 0123456789 lazy dogs" : "Quick brown fox 0123456789",
        zo::Point(NUMBER_COLUMN, y), INK, height);
    y += height + height / 3 + 2;
  }
  const std::size_t half = letters.size() / 2;
  zo::drawText(picture, letters.substr(0, half) + "\n" + letters.substr(half),
               zo::Point(NUMBER_COLUMN, y + MARGIN), INK, 28);
  zo::drawText(picture, "all", zo::Point(MARGIN, y + MARGIN), NUMBER, 24);
  zo::imageSave(path, picture, 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: text-sample OUT.png\n", stderr);
    return 2;
  }
  try {
    makeSample(argv[1]);
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "text-sample: %s\n", e.what());
    return 1;
  }
}
