#ifndef ZO_TESTS_SIMD_SIMD_TEST_IMAGES_H
#define ZO_TESTS_SIMD_SIMD_TEST_IMAGES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Simd/SimdLib.h"

namespace simd_test {

using Bytes = std::vector<uint8_t>;

inline Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

/// Packed pixels.
struct Picture {
  size_t width = 0;
  size_t height = 0;
  SimdPixelFormatType format = SimdPixelFormatNone;
  Bytes pixels;

  size_t pixelSize() const {
    return format == SimdPixelFormatGray8 ? 1 : format == SimdPixelFormatBgra32 ? 4 : 3;
  }
  size_t stride() const { return width * pixelSize(); }
  bool isNull() const { return width == 0; }
};
bool operator==(const Picture& a, const Picture& b);
std::ostream& operator<<(std::ostream& out, const Picture& picture);

/// A smooth picture with different channels.
Picture makePicture(size_t width, size_t height, SimdPixelFormatType format);

/// Largest difference of two bytes; 256 for pictures that are not alike in size and format.
int largestDifference(const Picture& a, const Picture& b);

/// What the loader gives, a null picture for null. The data is copied into memory of exactly its size first,
/// so that a sanitizer sees every read beyond it.
Picture load(const Bytes& data, SimdPixelFormatType wanted);
Picture loadFile(const std::string& path, SimdPixelFormatType wanted);

/// What the saver gives; empty for null.
Bytes save(const Picture& picture, SimdImageFileType type, int quality = 90);

/// A PNG of any kind. Samples are pseudo-random; `expected` becomes its picture as Gray8 or Rgb24.
struct PngKind {
  const char* name;
  int color_type;
  int bit_depth;
  bool interlaced;
  bool transparent;  ///< with a tRNS chunk
};
Bytes makePng(const PngKind& kind, size_t width, size_t height, Picture& expected);

/// Writes the right checksum behind every chunk of a PNG, as far as its lengths lead.
void repairPngChecksums(Bytes& file);

/// A JPEG that libjpeg writes from a smooth picture.
struct JpegKind {
  const char* name;
  int color_space;     ///< J_COLOR_SPACE of the file
  int horizontal = 1;  ///< sampling factors of the first component
  int vertical = 1;
  bool progressive = false;
  bool arithmetic = false;
  int restart_rows = 0;
  bool adobe_marker = true;
};
/// Empty when the installed library cannot write it. For 4 inks all samples are the same 4 bytes `inks`.
Bytes makeJpeg(const JpegKind& kind, size_t width, size_t height, std::array<uint8_t, 4> inks = {});

/// The frame header of a JPEG: components and the sampling factors of the first one.
struct JpegHeader {
  size_t width = 0;
  size_t height = 0;
  int components = 0;
  int horizontal = 0;
  int vertical = 0;
};
JpegHeader jpegHeader(const Bytes& jpeg);

}  // namespace simd_test

#endif
