#include <cstdio>

#include "codecs.h"
#include "row_convert.h"

namespace Simd {
namespace Detail {
namespace {

// Text lines stay below 70 characters, as old readers require.
constexpr size_t SAMPLES_PER_LINE = 17;
constexpr size_t CHARS_PER_SAMPLE = 4;

// Writes the digits of a sample and a separator, and returns where they end.
char* putSample(uint8_t sample, char separator, char* p_text) {
  if (sample >= 100) {
    *p_text++ = static_cast<char>('0' + sample / 100);
  }
  if (sample >= 10) {
    *p_text++ = static_cast<char>('0' + sample / 10 % 10);
  }
  *p_text++ = static_cast<char>('0' + sample % 10);
  *p_text++ = separator;
  return p_text;
}

bool appendText(const uint8_t* p_row, size_t samples, ByteSink& sink) {
  char line[SAMPLES_PER_LINE * CHARS_PER_SAMPLE];
  for (size_t i = 0; i < samples;) {
    char* p_end = line;
    const size_t line_end = samples - i < SAMPLES_PER_LINE ? samples : i + SAMPLES_PER_LINE;
    for (; i < line_end; ++i) {
      p_end = putSample(p_row[i], i + 1 == line_end ? '\n' : ' ', p_end);
    }
    if (!sink.append(line, static_cast<size_t>(p_end - line))) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool encodePnm(const ImageView& image, bool color, bool text, ByteSink& sink) noexcept {
  const RowConverter convert =
      rowConverter(image.format, color ? SimdPixelFormatRgb24 : SimdPixelFormatGray8);
  if (convert == nullptr || image.width > Image::MAX_SIDE || image.height > Image::MAX_SIDE) {
    return false;
  }
  const size_t row_samples = image.width * (color ? 3 : 1);
  const uint64_t pixel_bytes =
      static_cast<uint64_t>(row_samples) * image.height * (text ? CHARS_PER_SAMPLE : 1);
  char header[64];
  const int header_size = snprintf(header, sizeof header, "P%c\n%zu %zu\n255\n",
                                   (text ? '2' : '5') + (color ? 1 : 0), image.width, image.height);
  const Memory row = allocate(row_samples);
  if (!row || pixel_bytes > Image::MAX_BYTES ||
      !sink.reserve(static_cast<size_t>(pixel_bytes) + sizeof header) ||
      !sink.append(header, static_cast<size_t>(header_size))) {
    return false;
  }
  for (size_t y = 0; y < image.height; ++y) {
    convert(image.p_pixels + y * image.stride, image.width, row.get());
    if (text ? !appendText(row.get(), row_samples, sink) : !sink.append(row.get(), row_samples)) {
      return false;
    }
  }
  return true;
}

}  // namespace Detail
}  // namespace Simd
