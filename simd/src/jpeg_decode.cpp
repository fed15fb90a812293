#include <algorithm>

#include "codecs.h"
#include "jpeg_errors.h"
#include "row_convert.h"

namespace Simd {
namespace Detail {
namespace {

// More scans than any encoder makes: a small file can otherwise keep the decoder busy for hours.
constexpr int MAX_SCANS = 200;

// A header can claim any size. Flat pictures pack thousands of pixels into a byte, no more, unless they are
// coded arithmetically: then any number, of which a large photograph's is let through.
constexpr uint64_t FREE_PIXELS = 1u << 22;
constexpr uint64_t FREE_ARITHMETIC_PIXELS = 1u << 25;
constexpr uint64_t PIXELS_PER_BYTE = 1u << 14;

constexpr JDIMENSION ROWS_AT_A_TIME = 16;

class Decompressor {
 public:
  Decompressor() { _info.err = _errors.install(); }
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor() { jpeg_destroy_decompress(&_info); }

  bool readHeader(const uint8_t* p_data, size_t size);
  bool readPixels(Image& image);
  bool readCmykPixels(Image& image, uint8_t* p_cmyk, uint8_t* p_bgr, RowConverter convert);

  jpeg_decompress_struct& info() { return _info; }

 private:
  jpeg_decompress_struct _info{};
  jpeg_progress_mgr _progress{};
  JpegErrors _errors;
};

void stopAtTooManyScans(j_common_ptr p_info) {
  if (static_cast<j_decompress_ptr>(static_cast<void*>(p_info))->input_scan_number > MAX_SCANS) {
    p_info->err->error_exit(p_info);
  }
}

bool Decompressor::readHeader(const uint8_t* p_data, size_t size) {
  return runGuarded(_errors.point, [&] {
    jpeg_create_decompress(&_info);
    _progress.progress_monitor = stopAtTooManyScans;
    _info.progress = &_progress;
    // Releases before 1.5 take a pointer to changeable data, which they do not change.
    jpeg_mem_src(&_info, const_cast<uint8_t*>(p_data), static_cast<unsigned long>(size));
    jpeg_read_header(&_info, TRUE);
  });
}

bool Decompressor::readPixels(Image& image) {
  return runGuarded(_errors.point, [&] {
    jpeg_start_decompress(&_info);
    while (_info.output_scanline < _info.output_height) {
      // As many rows as the library makes at a time; asking for one by one costs several per cent.
      JSAMPROW rows[ROWS_AT_A_TIME];
      const JDIMENSION count = std::min(ROWS_AT_A_TIME, _info.output_height - _info.output_scanline);
      for (JDIMENSION i = 0; i < count; ++i) {
        rows[i] = image.row(_info.output_scanline + i);
      }
      jpeg_read_scanlines(&_info, rows, count);
    }
    jpeg_finish_decompress(&_info);
  });
}

// Ink on paper: what one ink leaves of the light, the black one lets through.
void cmykToBgr(const uint8_t* p_cmyk, size_t width, bool inverted, uint8_t* p_bgr) {
  const unsigned flip = inverted ? 0 : 255;
  for (size_t x = 0; x < width; ++x, p_cmyk += 4, p_bgr += 3) {
    const unsigned light = p_cmyk[3] ^ flip;
    for (unsigned channel = 0; channel < 3; ++channel) {
      p_bgr[2 - channel] = static_cast<uint8_t>(((p_cmyk[channel] ^ flip) * light + 127) / 255);
    }
  }
}

bool Decompressor::readCmykPixels(Image& image, uint8_t* p_cmyk, uint8_t* p_bgr, RowConverter convert) {
  return runGuarded(_errors.point, [&] {
    jpeg_start_decompress(&_info);
    while (_info.output_scanline < _info.output_height) {
      const JDIMENSION y = _info.output_scanline;
      JSAMPROW p_row = p_cmyk;
      jpeg_read_scanlines(&_info, &p_row, 1);
      // Files with Adobe's marker hold the inks inverted.
      cmykToBgr(p_cmyk, image.width(), _info.saw_Adobe_marker != FALSE, p_bgr);
      convert(p_bgr, image.width(), image.row(y));
    }
    jpeg_finish_decompress(&_info);
  });
}

bool colorSpaceOf(SimdPixelFormatType format, J_COLOR_SPACE& space) {
  switch (format) {
    case SimdPixelFormatGray8:
      space = JCS_GRAYSCALE;
      return true;
    case SimdPixelFormatBgr24:
      space = JCS_EXT_BGR;
      return true;
    case SimdPixelFormatBgra32:
      space = JCS_EXT_BGRA;
      return true;
    case SimdPixelFormatRgb24:
      space = JCS_EXT_RGB;
      return true;
    default:
      return false;
  }
}

}  // namespace

bool isJpeg(const uint8_t* p_data, size_t size) noexcept {
  return size >= 3 && p_data[0] == 0xFF && p_data[1] == 0xD8 && p_data[2] == 0xFF;
}

bool decodeJpeg(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept {
  Decompressor decompressor;
  if (!decompressor.readHeader(p_data, size)) {
    return false;
  }
  jpeg_decompress_struct& info = decompressor.info();
  if (wanted == SimdPixelFormatNone) {
    wanted = info.jpeg_color_space == JCS_GRAYSCALE ? SimdPixelFormatGray8 : SimdPixelFormatRgb24;
  }
  const uint64_t pixels = static_cast<uint64_t>(info.image_width) * info.image_height;
  const uint64_t free_pixels = info.arith_code != FALSE ? FREE_ARITHMETIC_PIXELS : FREE_PIXELS;
  if (pixels > free_pixels + PIXELS_PER_BYTE * size || !colorSpaceOf(wanted, info.out_color_space) ||
      !image.create(wanted, info.image_width, info.image_height)) {
    return false;
  }
  if (info.jpeg_color_space != JCS_CMYK && info.jpeg_color_space != JCS_YCCK) {
    return decompressor.readPixels(image);
  }
  info.out_color_space = JCS_CMYK;
  const Memory rows = allocate(image.width() * 7);
  return rows && decompressor.readCmykPixels(image, rows.get(), rows.get() + image.width() * 4,
                                             rowConverter(SimdPixelFormatBgr24, wanted));
}

}  // namespace Detail
}  // namespace Simd
