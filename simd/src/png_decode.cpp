#include <algorithm>
#include <cstring>

#include <png.h>

#include "codecs.h"
#include "jump_guard.h"

namespace Simd {
namespace Detail {
namespace {

// The compression of PNG packs at most this many bytes into one; a header that claims more pixels is not
// true.
constexpr uint64_t MAX_BYTES_PER_BYTE = 1032;

constexpr size_t SIGNATURE_SIZE = 8;

// Memory that a damaged file may make the library take for text, profiles and the like.
constexpr png_alloc_size_t MAX_CHUNK_BYTES = 4u << 20;
constexpr png_uint_32 MAX_KEPT_CHUNKS = 100;

[[noreturn]] void jumpOut(png_structp p_png, png_const_charp) {
  longjmp(static_cast<JumpPoint*>(png_get_error_ptr(p_png))->buffer, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

class PngReader {
 public:
  PngReader(const uint8_t* p_data, size_t size) : _p_next(p_data), _left(size), _size(size) {
    _p_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &_point, jumpOut, ignoreWarning);
    _p_info = _p_png ? png_create_info_struct(_p_png) : nullptr;
  }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() { png_destroy_read_struct(&_p_png, &_p_info, nullptr); }

  bool readHeader();
  /// Grey or R, G, B of 8 bits (B, G, R on request), whatever the file holds.
  bool readPixels(bool bgr, Image& image);

  bool isColor() const { return _color; }
  uint32_t width() const { return _width; }
  uint32_t height() const { return _height; }

 private:
  static void takeBytes(png_structp p_png, png_bytep p_bytes, size_t size);
  void chooseTransforms(bool bgr);

  JumpPoint _point;
  png_structp _p_png = nullptr;
  png_infop _p_info = nullptr;
  const uint8_t* _p_next;
  size_t _left;
  size_t _size;
  uint32_t _width = 0;
  uint32_t _height = 0;
  bool _color = false;
};

void PngReader::takeBytes(png_structp p_png, png_bytep p_bytes, size_t size) {
  PngReader& reader = *static_cast<PngReader*>(png_get_io_ptr(p_png));
  if (size > reader._left) {
    png_error(p_png, "end of data");
  }
  memcpy(p_bytes, reader._p_next, size);
  reader._p_next += size;
  reader._left -= size;
}

bool PngReader::readHeader() {
  if (_p_info == nullptr) {
    return false;
  }
  uint64_t packed_bytes = 0;
  const bool sound = runGuarded(_point, [&] {
    png_set_read_fn(_p_png, this, takeBytes);
    png_set_user_limits(_p_png, Image::MAX_SIDE, Image::MAX_SIDE);
    png_set_chunk_malloc_max(_p_png, MAX_CHUNK_BYTES);
    png_set_chunk_cache_max(_p_png, MAX_KEPT_CHUNKS);
    png_read_info(_p_png, _p_info);
    _width = png_get_image_width(_p_png, _p_info);
    _height = png_get_image_height(_p_png, _p_info);
    _color = (png_get_color_type(_p_png, _p_info) & PNG_COLOR_MASK_COLOR) != 0;
    packed_bytes = static_cast<uint64_t>(png_get_rowbytes(_p_png, _p_info)) * _height;
  });
  return sound && packed_bytes / MAX_BYTES_PER_BYTE <= _size;
}

void PngReader::chooseTransforms(bool bgr) {
  const int type = png_get_color_type(_p_png, _p_info);
  if (type == PNG_COLOR_TYPE_PALETTE) {
    png_set_palette_to_rgb(_p_png);
  } else if (type == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(_p_png, _p_info) < 8) {
    png_set_expand_gray_1_2_4_to_8(_p_png);
  }
  png_set_scale_16(_p_png);
  png_set_strip_alpha(_p_png);
  if (bgr) {
    png_set_bgr(_p_png);
  }
}

bool PngReader::readPixels(bool bgr, Image& image) {
  return runGuarded(_point, [&] {
    chooseTransforms(bgr);
    const int passes = png_set_interlace_handling(_p_png);
    png_read_update_info(_p_png, _p_info);
    if (png_get_rowbytes(_p_png, _p_info) != image.width() * pixelSize(image.format())) {
      png_error(_p_png, "unexpected row size");
    }
    for (int pass = 0; pass < passes; ++pass) {
      for (size_t y = 0; y < image.height(); ++y) {
        png_read_row(_p_png, image.row(y), nullptr);
      }
    }
    png_read_end(_p_png, nullptr);
  });
}

}  // namespace

bool isPng(const uint8_t* p_data, size_t size) noexcept {
  return size >= SIGNATURE_SIZE && png_sig_cmp(const_cast<uint8_t*>(p_data), 0, SIGNATURE_SIZE) == 0;
}

bool decodePng(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept {
  PngReader reader(p_data, size);
  if (!reader.readHeader()) {
    return false;
  }
  SimdPixelFormatType read = SimdPixelFormatGray8;
  if (reader.isColor()) {
    read = wanted == SimdPixelFormatBgr24 ? SimdPixelFormatBgr24 : SimdPixelFormatRgb24;
  }
  const bool bgr = read == SimdPixelFormatBgr24;
  if (wanted == SimdPixelFormatNone || wanted == read) {
    return image.create(read, reader.width(), reader.height()) && reader.readPixels(bgr, image);
  }
  Image own;
  return own.create(read, reader.width(), reader.height()) && reader.readPixels(bgr, own) &&
         own.convertTo(wanted, image);
}

}  // namespace Detail
}  // namespace Simd
