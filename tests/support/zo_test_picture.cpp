#include "zo_test_picture.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zo {
namespace test {
namespace {

constexpr int GRID = 4;
constexpr int DARK = 60;
constexpr int LIGHT = 190;

int cells(int length) {
  return std::min(length, GRID);
}

// A wave between -1 and 1 of period 32, as its integer numerator over 16.
int wave(int position) {
  const int phase = position & 31;
  return (phase < 16 ? phase : 31 - phase) * 2 - 15;
}

// Brightness at (x, y): the number's bit of that cell, with a pattern that moves to the left and upwards.
int brightness(int x, int y, int width, int height, int number) {
  const int column = static_cast<int>(static_cast<int64_t>(x) * cells(width) / width);
  const int row = static_cast<int>(static_cast<int64_t>(y) * cells(height) / height);
  const int bit = row * cells(width) + column;
  return (((number >> bit) & 1) != 0 ? LIGHT : DARK) + wave(x + y + 3 * number);
}

// Chroma at (x, y) of a chroma plane.
int chroma(int component, int x, int y, int number) {
  return 128 + 2 * (component == 1 ? wave(x + 2 * number) : wave(y - number));
}

// The brightness of one pixel of a frame.
int brightnessAt(const Frame& frame, int x, int y) {
  const unsigned char* p_row =
      frame.planeData(0) + static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(frame.planeStride(0));
  switch (frame.format()) {
    case ZO_FRAME_FORMAT_RGB24:
    case ZO_FRAME_FORMAT_BGR24:
      return (p_row[3 * x] + p_row[3 * x + 1] + p_row[3 * x + 2]) / 3;
    case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
      return p_row[3 * x + 1];
    case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
      return p_row[2 * x];
    case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
      return p_row[2 * x + 1];
    default:
      return p_row[x];
  }
}

// Stores a packed 4:2:2 row; a pair of pixels shares its chroma.
void storePacked422(unsigned char* p_row, int y, Size size, int number, bool chroma_first) {
  for (int x = 0; x < (size.width + 1) / 2 * 2; ++x) {
    const int light = brightness(std::min(x, size.width - 1), y, size.width, size.height, number);
    const int colour = chroma(x % 2 == 0 ? 1 : 2, x / 2, y, number);
    p_row[2 * x + (chroma_first ? 1 : 0)] = static_cast<unsigned char>(light);
    p_row[2 * x + (chroma_first ? 0 : 1)] = static_cast<unsigned char>(colour);
  }
}

void storeFirstPlaneRow(unsigned char* p_row, FrameFormat format, int y, Size size, int number) {
  if (format == ZO_FRAME_FORMAT_YUV422_PACKED_YUY2 || format == ZO_FRAME_FORMAT_YUV422_PACKED_UYVY) {
    storePacked422(p_row, y, size, number, format == ZO_FRAME_FORMAT_YUV422_PACKED_UYVY);
    return;
  }
  for (int x = 0; x < size.width; ++x) {
    const unsigned char light = static_cast<unsigned char>(brightness(x, y, size.width, size.height, number));
    switch (format) {
      case ZO_FRAME_FORMAT_RGB24:
      case ZO_FRAME_FORMAT_BGR24:
        p_row[3 * x] = p_row[3 * x + 1] = p_row[3 * x + 2] = light;
        break;
      case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
        p_row[3 * x] = static_cast<unsigned char>(chroma(1, x, y, number));
        p_row[3 * x + 1] = light;
        p_row[3 * x + 2] = static_cast<unsigned char>(chroma(2, x, y, number));
        break;
      default:
        p_row[x] = light;
        break;
    }
  }
}

void storeChromaRow(unsigned char* p_row, FrameFormat format, unsigned plane, int y, int row_bytes,
                    int number) {
  for (int i = 0; i < row_bytes; ++i) {
    int component = static_cast<int>(plane);
    int x = i;
    switch (format) {
      case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
        component = 3 - component;
        break;
      case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
      case ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16:
        component = 1 + i % 2;
        x = i / 2;
        break;
      case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
        component = 2 - i % 2;
        x = i / 2;
        break;
      default:
        break;
    }
    p_row[i] = static_cast<unsigned char>(chroma(component, x, y, number));
  }
}

// Mean brightness of the middle of one cell: the edges blur in lossy coding.
int cellBrightness(const Frame& frame, int column, int row) {
  const Size size = frame.size();
  const auto span = [](int index, int length) {
    int begin = (index * length + cells(length) - 1) / cells(length);
    int end = ((index + 1) * length + cells(length) - 1) / cells(length);
    const int margin = (end - begin) / 4;
    begin += margin;
    end -= margin;
    return std::make_pair(begin, end);
  };
  const auto columns = span(column, size.width);
  const auto rows = span(row, size.height);
  int64_t sum = 0;
  for (int y = rows.first; y < rows.second; ++y) {
    for (int x = columns.first; x < columns.second; ++x) {
      sum += brightnessAt(frame, x, y);
    }
  }
  const int64_t count = static_cast<int64_t>(columns.second - columns.first) * (rows.second - rows.first);
  return static_cast<int>(sum / count);
}

}  // namespace

void paintNumber(AVFrame* p_frame, int number) {
  const AVPixFmtDescriptor* p_format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(p_frame->format));
  if (p_format == nullptr) {
    throw std::invalid_argument("unknown pixel format");
  }
  // Lines are written by setting bits, so the picture has to be empty first.
  for (int plane = 0; plane < av_pix_fmt_count_planes(static_cast<AVPixelFormat>(p_frame->format)); ++plane) {
    const bool subsampled = plane == 1 || plane == 2;
    const int rows = subsampled ? -((-p_frame->height) >> p_format->log2_chroma_h) : p_frame->height;
    std::fill_n(p_frame->data[plane], static_cast<std::ptrdiff_t>(rows) * p_frame->linesize[plane],
                static_cast<uint8_t>(0));
  }
  const bool rgb = (p_format->flags & AV_PIX_FMT_FLAG_RGB) != 0;
  for (int component = 0; component < p_format->nb_components; ++component) {
    const bool subsampled = !rgb && (component == 1 || component == 2);
    const int width = subsampled ? -((-p_frame->width) >> p_format->log2_chroma_w) : p_frame->width;
    const int height = subsampled ? -((-p_frame->height) >> p_format->log2_chroma_h) : p_frame->height;
    const int shift = p_format->comp[component].depth - 8;
    std::vector<uint16_t> line(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const int value = component == 3 || (p_format->nb_components == 2 && component == 1) ? 255
                          : subsampled ? chroma(component, x, y, number)
                                       : brightness(x, y, width, height, number);
        line[static_cast<std::size_t>(x)] =
            static_cast<uint16_t>(shift >= 0 ? value << shift : value >> -shift);
      }
      av_write_image_line(line.data(), p_frame->data, p_frame->linesize, p_format, 0, y, component, width);
    }
  }
}

int paintedNumber(const Frame& frame) {
  if (!frame.initialized()) {
    throw std::invalid_argument("a frame without pixels carries no number");
  }
  const int columns = cells(frame.size().width);
  const int rows = cells(frame.size().height);
  int number = 0;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      if (cellBrightness(frame, column, row) > (DARK + LIGHT) / 2) {
        number |= 1 << (row * columns + column);
      }
    }
  }
  return number;
}

Frame makeNumberedFrame(FrameFormat format, Size size, int number) {
  Frame frame;
  frame.reuse(format, size, DeviceContext(), 0);
  fillFrame(frame, 0);
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    unsigned char* p_row = frame.planeData(plane);
    for (unsigned y = 0; y < frame.planeRows(plane); ++y, p_row += frame.planeStride(plane)) {
      if (plane == 0) {
        storeFirstPlaneRow(p_row, format, static_cast<int>(y), size, number);
      } else {
        storeChromaRow(p_row, format, plane, static_cast<int>(y),
                       static_cast<int>(frame.planeRowBytes(plane)), number);
      }
    }
  }
  return frame;
}

Frame makeNoiseFrame(FrameFormat format, Size size, unsigned seed) {
  Frame frame;
  frame.reuse(format, size, DeviceContext(), 0);
  uint32_t state = seed * 2654435761U + 1;
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    const uint64_t bytes = static_cast<uint64_t>(frame.planeStride(plane)) * frame.planeRows(plane);
    for (uint64_t i = 0; i < bytes; ++i) {
      state = state * 1664525U + 1013904223U;
      frame.planeData(plane)[i] = static_cast<unsigned char>(state >> 24);
    }
  }
  return frame;
}

void fillFrame(Frame& frame, unsigned char value) {
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    const uint64_t bytes = static_cast<uint64_t>(frame.planeStride(plane)) * frame.planeRows(plane);
    std::fill_n(frame.planeData(plane), bytes, value);
  }
}

}  // namespace test
}  // namespace zo
