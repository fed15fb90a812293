#include <png.h>
#include <zlib.h>

#include "codecs.h"
#include "jump_guard.h"

namespace Simd {
namespace Detail {
namespace {

constexpr int CHANNEL_BITS = 8;

[[noreturn]] void jumpOut(png_structp p_png, png_const_charp) {
  longjmp(static_cast<JumpPoint*>(png_get_error_ptr(p_png))->buffer, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

void putBytes(png_structp p_png, png_bytep p_bytes, size_t size) {
  if (!static_cast<ByteSink*>(png_get_io_ptr(p_png))->append(p_bytes, size)) {
    png_error(p_png, "out of memory");
  }
}

void flushNothing(png_structp) {}

class PngWriter {
 public:
  PngWriter() {
    _p_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &_point, jumpOut, ignoreWarning);
    _p_info = _p_png ? png_create_info_struct(_p_png) : nullptr;
  }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;
  ~PngWriter() { png_destroy_write_struct(&_p_png, &_p_info); }

  bool write(const ImageView& image, int color_type, bool bgr, ByteSink& sink);

 private:
  JumpPoint _point;
  png_structp _p_png = nullptr;
  png_infop _p_info = nullptr;
};

bool PngWriter::write(const ImageView& image, int color_type, bool bgr, ByteSink& sink) {
  return _p_info != nullptr && runGuarded(_point, [&] {
           png_set_write_fn(_p_png, &sink, putBytes, flushNothing);
           png_set_user_limits(_p_png, Image::MAX_SIDE, Image::MAX_SIDE);
           png_set_IHDR(_p_png, _p_info, static_cast<png_uint_32>(image.width),
                        static_cast<png_uint_32>(image.height), CHANNEL_BITS, color_type, PNG_INTERLACE_NONE,
                        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
           // What this filter leaves of a picture is small numbers and runs of zeros. Looking for repetitions
           // beyond runs, as libpng does by itself, takes 4 to 7 times as long for files of the same size.
           png_set_filter(_p_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_PAETH);
           png_set_compression_level(_p_png, Z_BEST_SPEED);
           png_set_compression_strategy(_p_png, Z_RLE);
           png_write_info(_p_png, _p_info);
           if (bgr) {
             png_set_bgr(_p_png);
           }
           for (size_t y = 0; y < image.height; ++y) {
             png_write_row(_p_png, const_cast<png_bytep>(image.p_pixels + y * image.stride));  // only read
           }
           png_write_end(_p_png, _p_info);
         });
}

}  // namespace

bool encodePng(const ImageView& image, ByteSink& sink) noexcept {
  if (image.width > Image::MAX_SIDE || image.height > Image::MAX_SIDE) {
    return false;
  }
  int color_type = PNG_COLOR_TYPE_RGB;
  bool bgr = true;
  switch (image.format) {
    case SimdPixelFormatGray8:
      color_type = PNG_COLOR_TYPE_GRAY;
      bgr = false;
      break;
    case SimdPixelFormatBgr24:
      break;
    case SimdPixelFormatBgra32:
      color_type = PNG_COLOR_TYPE_RGB_ALPHA;
      break;
    case SimdPixelFormatRgb24:
      bgr = false;
      break;
    default:
      return false;
  }
  return PngWriter().write(image, color_type, bgr, sink);
}

}  // namespace Detail
}  // namespace Simd
