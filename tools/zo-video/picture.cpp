#include "picture.h"

#include <algorithm>
#include <cstring>

#include "text.h"

namespace zo_tool {

namespace {

constexpr unsigned PIXEL = 3;
constexpr Colour BAND = {{24, 24, 24}};
constexpr Colour WRITING = {{255, 255, 255}};

void reshape(zo::Frame& frame, const zo::Size& size) {
  frame.reuse(zo::ZO_FRAME_FORMAT_BGR24, size, zo::DeviceContext(), 0);
}

}  // namespace

zo::Size fitInto(const zo::Size& picture, const zo::Size& box) {
  const long long width = picture.width;
  const long long height = picture.height;
  long long w = box.width;
  long long h = (w * height + width / 2) / width;
  if (h > box.height) {
    h = box.height;
    w = (h * width + height / 2) / height;
  }
  return zo::Size(static_cast<int>(std::min<long long>(std::max(w, 1LL), box.width)),
                  static_cast<int>(std::max(h, 1LL)));
}

zo::Size uprightSize(const zo::Size& picture, zo::VideoRotation rotation) {
  if (rotation == zo::ZO_VIDEO_ROTATION_90 || rotation == zo::ZO_VIDEO_ROTATION_270) {
    return zo::Size(picture.height, picture.width);
  }
  return picture;
}

void turn(const zo::Frame& picture, zo::VideoRotation rotation, zo::Frame& out) {
  const zo::Size size = picture.size();
  // Where in `out` the first pixel goes, and how far the next pixel of a row and the next row lie from it.
  reshape(out, uprightSize(size, rotation));
  const std::ptrdiff_t row = out.planeStride(0);
  const std::ptrdiff_t pixel = PIXEL;
  const std::ptrdiff_t last_column = (out.size().width - 1) * pixel;
  const std::ptrdiff_t last_row = (out.size().height - 1) * row;
  std::ptrdiff_t start = 0;
  std::ptrdiff_t step_x = pixel;
  std::ptrdiff_t step_y = row;
  if (rotation == zo::ZO_VIDEO_ROTATION_90) {
    start = last_column;
    step_x = row;
    step_y = -pixel;
  } else if (rotation == zo::ZO_VIDEO_ROTATION_180) {
    start = last_row + last_column;
    step_x = -pixel;
    step_y = -row;
  } else if (rotation == zo::ZO_VIDEO_ROTATION_270) {
    start = last_row;
    step_x = -row;
    step_y = pixel;
  }
  for (int y = 0; y < size.height; ++y) {
    const unsigned char* p_from = picture.planeData(0) + static_cast<std::size_t>(y) * picture.planeStride(0);
    std::ptrdiff_t to = start + y * step_y;
    for (int x = 0; x < size.width; ++x, p_from += PIXEL, to += step_x) {
      std::memcpy(out.planeData(0) + to, p_from, PIXEL);
    }
  }
  out.setTimestamp(picture.timestamp());
}

void fill(zo::Frame& picture, zo::Rect area, const Colour& colour) {
  area.crop(picture.size());
  for (int y = area.y; y < area.y + area.height; ++y) {
    unsigned char* p_to = picture.planeData(0) + static_cast<std::size_t>(y) * picture.planeStride(0) +
                          static_cast<std::size_t>(area.x) * PIXEL;
    for (int x = 0; x < area.width; ++x, p_to += PIXEL) {
      std::memcpy(p_to, colour.bytes, PIXEL);
    }
  }
}

void paste(const zo::Frame& picture, const zo::Point& position, zo::Frame& canvas) {
  const std::size_t bytes = static_cast<std::size_t>(picture.size().width) * PIXEL;
  for (int y = 0; y < picture.size().height; ++y) {
    std::memcpy(canvas.planeData(0) + static_cast<std::size_t>(position.y + y) * canvas.planeStride(0) +
                    static_cast<std::size_t>(position.x) * PIXEL,
                picture.planeData(0) + static_cast<std::size_t>(y) * picture.planeStride(0), bytes);
  }
}

int textWidth(const std::string& text, int height) {
  return static_cast<int>(text.size()) * (127 * height / 231);
}

void write(zo::Frame& picture, const std::string& text, const zo::Point& position, const Colour& colour,
           int height) {
  const int gap = 33 * height / 231;
  zo::drawText(picture, text, zo::Point(position.x - gap, position.y), colour.bytes, height);
}

void stamp(zo::Frame& picture, long long index, long long timestamp) {
  const std::string text =
      "#" + std::to_string(index) + (isPlausibleTime(timestamp) ? "  " + formatTime(timestamp) : "");
  const zo::Size size = picture.size();
  int height = std::min(std::max(size.height / 20, 12), 64);
  while (height > 8 && textWidth(text, height) + height > size.width) {
    --height;
  }
  const int margin = height / 4;
  fill(picture, zo::Rect(0, 0, textWidth(text, height) + 4 * margin, height + 2 * margin), BAND);
  write(picture, text, zo::Point(2 * margin, margin), WRITING, height);
}

}  // namespace zo_tool
