// What drawing costs: lines and rectangles beside a plain loop over their pixels, text beside scaling all
// letters for every call.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "Simd/SimdFont.hpp"
#include "zo_benchmark.h"
#include "zo_video/zo_video.h"

namespace {

using zo::Point;
using zo::benchmark::compare;

constexpr unsigned char COLOR[3] = {40, 200, 250};
constexpr int REPEATS = 20;  // of short work, per measurement

zo::Frame makeFrame() {
  zo::Frame frame;
  frame.reuse(zo::ZO_FRAME_FORMAT_BGR24, zo::Size(1920, 1080), zo::DeviceContext(), 0);
  for (unsigned y = 0; y < frame.planeRows(0); ++y) {
    std::fill_n(frame.planeData(0) + static_cast<std::size_t>(y) * frame.planeStride(0),
                frame.planeRowBytes(0), 60);
  }
  return frame;
}

// The straight way, for points inside the frame: along the line, and across it pixel by pixel.
void drawPlainLine(zo::Frame& frame, Point p1, Point p2, int thickness) {
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
  double error = dx * 0.5;
  const int step = p2.y > p1.y ? 1 : -1;
  int start = p1.y - thickness / 2;
  const int limit = steep ? frame.size().width - 1 : frame.size().height - 1;
  unsigned char* p_pixels = frame.planeData(0);
  const std::size_t stride = frame.planeStride(0);
  for (int x = p1.x; x <= p2.x; ++x) {
    for (int i = 0; i < thickness; ++i) {
      const int y = start + i;
      if (y >= 0 && y <= limit) {
        unsigned char* p_pixel =
            steep ? p_pixels + static_cast<std::size_t>(x) * stride + static_cast<std::size_t>(y) * 3
                  : p_pixels + static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x) * 3;
        p_pixel[0] = COLOR[0];
        p_pixel[1] = COLOR[1];
        p_pixel[2] = COLOR[2];
      }
    }
    error -= dy;
    if (error < 0) {
      start += step;
      error += dx;
    }
  }
}

void compareLines(zo::Frame& frame) {
  const struct {
    const char* p_name;
    Point p1, p2;
  } lines[] = {{"horizontal", {10, 500}, {1900, 500}}, {"nearly horizontal", {10, 400}, {1900, 480}},
               {"shallow", {10, 20}, {1900, 900}},     {"diagonal", {20, 20}, {1060, 1060}},
               {"steep", {300, 10}, {700, 1070}},      {"vertical", {900, 10}, {900, 1070}}};
  for (const int thickness : {1, 2, 5, 20, 100}) {
    for (const auto& line : lines) {
      const std::string name = std::string(line.p_name) + " line, thickness " + std::to_string(thickness);
      compare(
          name.c_str(),
          [&] {
            for (int i = 0; i < REPEATS; ++i) zo::drawLine(frame, line.p1, line.p2, COLOR, thickness);
          },
          [&] {
            for (int i = 0; i < REPEATS; ++i) drawPlainLine(frame, line.p1, line.p2, thickness);
          });
    }
  }
}

void compareRectangles(zo::Frame& frame) {
  for (const int thickness : {1, 4, 16}) {
    const std::string name = "rectangle, thickness " + std::to_string(thickness);
    compare(
        name.c_str(),
        [&] {
          for (int i = 0; i < REPEATS; ++i) zo::drawRect(frame, {100, 100, 1600, 800}, COLOR, thickness);
        },
        [&] {
          for (int i = 0; i < REPEATS; ++i) {
            drawPlainLine(frame, {100, 100}, {1699, 100}, thickness);
            drawPlainLine(frame, {1699, 100}, {1699, 899}, thickness);
            drawPlainLine(frame, {1699, 899}, {100, 899}, thickness);
            drawPlainLine(frame, {100, 899}, {100, 100}, thickness);
          }
        });
  }
}

// Scales every letter, as a new font does when it draws a text with all of them.
void scaleAllLetters(zo::Frame& scratch, int height) {
  struct Color {
    unsigned char bytes[3];
  };
  std::string all;
  for (char symbol = 33; symbol < 127; ++symbol) {
    all += symbol;
  }
  Simd::Font::View canvas(static_cast<std::size_t>(scratch.size().width),
                          static_cast<std::size_t>(scratch.size().height), scratch.planeStride(0),
                          Simd::Font::View::Bgr24, scratch.planeData(0));
  Simd::Font(static_cast<std::size_t>(height)).Draw(canvas, all, Simd::Font::Point(0, 0), Color{{1, 2, 3}});
}

void compareText(zo::Frame& frame) {
  const std::string text = "Frame 001234  00:00:49.360  camera 1/7 ok";
  for (const int height : {8, 16, 24, 48, 96, 200}) {
    const std::string name = "40 characters, height " + std::to_string(height);
    compare(
        name.c_str(),
        [&] {
          zo::drawText(frame, text, {8, 8}, COLOR, height);
        },
        [&] { scaleAllLetters(frame, height); });
  }
}

}  // namespace

int main() {
  zo::Frame frame = makeFrame();
  std::printf("%-40s %8s %8s %7s\n", "1920x1080, 20 times", "ours/ms", "plain/ms", "ratio");
  compareLines(frame);
  compareRectangles(frame);
  std::printf("\n%-40s %8s %8s %7s\n", "once, beside scaling all letters", "ours/ms", "all/ms", "ratio");
  compareText(frame);
  return 0;
}
