// Lines, rectangles and text onto a picture.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include "Simd/SimdFont.hpp"
#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_bench_pictures.h"
#include "zo_video/zo_drawing.h"

namespace zo {
namespace bench {
namespace {

const Size SIZE(1920, 1080);
const unsigned char COLOR[3] = {10, 200, 30};

// The rule of lines as one would write it down first: from place to place along the line, across it one pixel
// after the other, each one checked. For lines that lie in the picture.
void plainLine(Frame& frame, Point p1, Point p2, int thickness) {
  const int width = frame.size().width;
  const int height = frame.size().height;
  const bool steep = std::abs(p2.y - p1.y) > std::abs(p2.x - p1.x);
  if (steep) {
    std::swap(p1.x, p1.y);
    std::swap(p2.x, p2.y);
  }
  if (p1.x > p2.x) {
    std::swap(p1, p2);
  }
  const double dx = p2.x - p1.x;
  const double dy = std::abs(p2.y - p1.y);
  double error = dx / 2;
  int start = p1.y - thickness / 2;
  for (int along = p1.x; along <= p2.x; ++along) {
    for (int i = 0; i < thickness; ++i) {
      const int x = steep ? start + i : along;
      const int y = steep ? along : start + i;
      if (x >= 0 && x < width && y >= 0 && y < height) {
        unsigned char* const p_pixel = frame.planeData(0) +
                                       static_cast<std::size_t>(y) * frame.planeStride(0) +
                                       static_cast<std::size_t>(x) * 3;
        p_pixel[0] = COLOR[0];
        p_pixel[1] = COLOR[1];
        p_pixel[2] = COLOR[2];
      }
    }
    error -= dy;
    if (error < 0) {
      start += p2.y > p1.y ? 1 : -1;
      error += dx;
    }
  }
}

struct Line {
  const char* name;
  Point p1;
  Point p2;
  int thickness;
};

std::vector<Contender> lineDrawing(const Line& line) {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  std::vector<Contender> contenders = {{"plain loop",
                                        [=](Stopwatch& watch) {
                                          watch.start();
                                          plainLine(*p_frame, line.p1, line.p2, line.thickness);
                                          watch.stop();
                                        }},
                                       {"ours", [=](Stopwatch& watch) {
                                          watch.start();
                                          drawLine(*p_frame, line.p1, line.p2, COLOR, line.thickness);
                                          watch.stop();
                                        }}};
  if (haveOpenCv()) {
    const std::shared_ptr<PeerImages> p_images(
        makeOpenCvImages(p_frame->planeData(0), nullptr, SIZE.width, SIZE.height));
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            p_images->line(line.p1.x, line.p1.y, line.p2.x, line.p2.y, line.thickness);
                            watch.stop();
                          }});
  }
  return contenders;
}

std::vector<Contender> rectangleDrawing(Rect rect, int thickness) {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  std::vector<Contender> contenders = {
      {"plain loop",
       [=](Stopwatch& watch) {
         const int right = rect.x + rect.width - 1;
         const int bottom = rect.y + rect.height - 1;
         watch.start();
         plainLine(*p_frame, Point(rect.x, rect.y), Point(right, rect.y), thickness);
         plainLine(*p_frame, Point(right, rect.y), Point(right, bottom), thickness);
         plainLine(*p_frame, Point(right, bottom), Point(rect.x, bottom), thickness);
         plainLine(*p_frame, Point(rect.x, bottom), Point(rect.x, rect.y), thickness);
         watch.stop();
       }},
      {"ours", [=](Stopwatch& watch) {
         watch.start();
         drawRect(*p_frame, rect, COLOR, thickness);
         watch.stop();
       }}};
  if (haveOpenCv()) {
    const std::shared_ptr<PeerImages> p_images(
        makeOpenCvImages(p_frame->planeData(0), nullptr, SIZE.width, SIZE.height));
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            p_images->rectangle(rect.x, rect.y, rect.width, rect.height, thickness);
                            watch.stop();
                          }});
  }
  return contenders;
}

std::string allLetters() {
  std::string letters;
  for (char c = 32; c < 127; ++c) {
    letters += c;
  }
  return letters;
}

std::vector<Contender> textDrawing() {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  const std::string text = "Frame 012345, 00:08:13.840, camera 3/left";
  const std::string forty = text.substr(0, 40);
  constexpr int HEIGHT = 24;
  struct Color {
    unsigned char bytes[3];
  };
  std::vector<Contender> contenders = {
      {"scaling 95 letters each time",
       [=](Stopwatch& watch) {
         static const std::string LETTERS = allLetters();
         Simd::Font::View canvas(static_cast<std::size_t>(SIZE.width), static_cast<std::size_t>(SIZE.height),
                                 static_cast<std::ptrdiff_t>(p_frame->planeStride(0)),
                                 Simd::Font::View::Bgr24, p_frame->planeData(0));
         const Color color = {{COLOR[0], COLOR[1], COLOR[2]}};
         watch.start();
         const Simd::Font font(HEIGHT);
         font.Draw(canvas, LETTERS, Simd::Font::Point(100, 100), color);
         font.Draw(canvas, forty, Simd::Font::Point(100, 200), color);
         watch.stop();
       }},
      {"ours", [=](Stopwatch& watch) {
         watch.start();
         drawText(*p_frame, forty, Point(100, 200), COLOR, HEIGHT);
         watch.stop();
       }}};
  if (haveOpenCv()) {
    const std::shared_ptr<PeerImages> p_images(
        makeOpenCvImages(p_frame->planeData(0), nullptr, SIZE.width, SIZE.height));
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            p_images->text(forty, 100, 200, HEIGHT);
                            watch.stop();
                          }});
  }
  return contenders;
}

}  // namespace

void addDrawingJobs(Jobs& jobs) {
  const Line lines[] = {{"diagonal, thickness 1", Point(100, 100), Point(1700, 900), 1},
                        {"diagonal, thickness 9", Point(100, 100), Point(1700, 900), 9},
                        {"level, thickness 9", Point(100, 500), Point(1700, 500), 9},
                        {"upright, thickness 9", Point(900, 100), Point(900, 900), 9}};
  for (const Line& line : lines) {
    jobs.push_back({"line", line.name, [=] { return lineDrawing(line); }});
  }
  for (const int thickness : {1, 5}) {
    jobs.push_back({"rectangle", "800x600, thickness " + std::to_string(thickness),
                    [=] { return rectangleDrawing(Rect(300, 200, 800, 600), thickness); }});
  }
  jobs.push_back({"text", "40 letters, height 24", [] { return textDrawing(); }});
}

}  // namespace bench
}  // namespace zo
