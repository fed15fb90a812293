#include <algorithm>
#include <cstring>

#include "codecs.h"
#include "jpeg_errors.h"

namespace Simd {
namespace Detail {
namespace {

constexpr int DEFAULT_QUALITY = 90;
// Up to here colour is stored at half the resolution in both directions.
constexpr int MAX_SUBSAMPLED_QUALITY = 90;
constexpr size_t LEAST_GROWTH = 4096;

constexpr size_t LUMA_ROWS = 16;  // of an MCU row in 4:2:0
constexpr size_t CHROMA_ROWS = 8;

int effectiveQuality(int quality) {
  return quality == 0 ? DEFAULT_QUALITY : std::clamp(quality, 1, 100);
}

class Compressor {
 public:
  explicit Compressor(ByteSink& sink) {
    _target.p_sink = &sink;
    _info.err = _errors.install();
  }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor() { jpeg_destroy_compress(&_info); }

  bool writePacked(const ImageView& image, J_COLOR_SPACE space, int quality);
  bool writeYuv420(const Yuv420View& image, int quality, uint8_t* p_staging);

 private:
  // The library's output, straight into the sink.
  struct Target {
    jpeg_destination_mgr manager;  // first, the library only knows this part
    ByteSink* p_sink;
  };

  static Target& target(j_compress_ptr p_info) {
    return *static_cast<Target*>(static_cast<void*>(p_info->dest));
  }
  static void offerRoom(j_compress_ptr p_info);
  static boolean takeFullRoom(j_compress_ptr p_info);
  static void takeRest(j_compress_ptr p_info);

  void start(size_t width, size_t height, int components, J_COLOR_SPACE space);

  jpeg_compress_struct _info{};
  JpegErrors _errors;
  Target _target{};
};

void Compressor::offerRoom(j_compress_ptr p_info) {
  Target& to = target(p_info);
  if (to.p_sink->room() == 0 && !to.p_sink->grow(LEAST_GROWTH)) {
    p_info->err->error_exit(reinterpret_cast<j_common_ptr>(p_info));
  }
  to.manager.next_output_byte = to.p_sink->end();
  to.manager.free_in_buffer = to.p_sink->room();
}

boolean Compressor::takeFullRoom(j_compress_ptr p_info) {
  // The contract of the library: all of the room counts as used, whatever free_in_buffer says.
  target(p_info).p_sink->advance(target(p_info).p_sink->room());
  offerRoom(p_info);
  return TRUE;
}

void Compressor::takeRest(j_compress_ptr p_info) {
  Target& to = target(p_info);
  to.p_sink->advance(to.p_sink->room() - to.manager.free_in_buffer);
}

void Compressor::start(size_t width, size_t height, int components, J_COLOR_SPACE space) {
  jpeg_create_compress(&_info);
  _target.manager.init_destination = offerRoom;
  _target.manager.empty_output_buffer = takeFullRoom;
  _target.manager.term_destination = takeRest;
  _info.dest = &_target.manager;
  _info.image_width = static_cast<JDIMENSION>(width);
  _info.image_height = static_cast<JDIMENSION>(height);
  _info.input_components = components;
  _info.in_color_space = space;
  jpeg_set_defaults(&_info);
}

bool Compressor::writePacked(const ImageView& image, J_COLOR_SPACE space, int quality) {
  return runGuarded(_errors.point, [&] {
    start(image.width, image.height, static_cast<int>(pixelSize(image.format)), space);
    jpeg_set_quality(&_info, quality, TRUE);
    if (_info.num_components == 3) {
      const int luma_per_chroma = quality <= MAX_SUBSAMPLED_QUALITY ? 2 : 1;
      _info.comp_info[0].h_samp_factor = luma_per_chroma;
      _info.comp_info[0].v_samp_factor = luma_per_chroma;
    }
    jpeg_start_compress(&_info, TRUE);
    while (_info.next_scanline < _info.image_height) {
      const uint8_t* p_row = image.p_pixels + _info.next_scanline * image.stride;
      JSAMPROW p_input = const_cast<JSAMPROW>(p_row);  // only read
      jpeg_write_scanlines(&_info, &p_input, 1);
    }
    jpeg_finish_compress(&_info);
  });
}

// Copies every step-th byte and repeats the last one up to the padded width.
void stageRow(const uint8_t* p_source, size_t step, size_t width, size_t padded_width,
              uint8_t* p_destination) {
  if (step == 1) {
    memcpy(p_destination, p_source, width);
  } else {
    for (size_t x = 0; x < width; ++x) {
      p_destination[x] = p_source[x * step];
    }
  }
  memset(p_destination + width, p_destination[width - 1], padded_width - width);
}

// Points an MCU row's pointers at rows of a plane; the last row stands in for those below the picture. The
// library reads whole blocks, so rows that are not as long, or not contiguous, go through the staging memory.
void pointRows(const uint8_t* p_plane, size_t stride, size_t step, size_t width, size_t padded_width,
               size_t first_row, size_t plane_rows, size_t rows, uint8_t* p_staging, JSAMPROW* pp_rows) {
  for (size_t i = 0; i < rows; ++i) {
    if (first_row + i >= plane_rows) {
      pp_rows[i] = pp_rows[i - 1];
      continue;
    }
    const uint8_t* p_row = p_plane + (first_row + i) * stride;
    if (step == 1 && width == padded_width) {
      pp_rows[i] = const_cast<JSAMPROW>(p_row);  // only read
    } else {
      pp_rows[i] = p_staging + i * padded_width;
      stageRow(p_row, step, width, padded_width, pp_rows[i]);
    }
  }
}

size_t paddedWidth(size_t width) {
  return (width + LUMA_ROWS - 1) / LUMA_ROWS * LUMA_ROWS;
}

bool Compressor::writeYuv420(const Yuv420View& image, int quality, uint8_t* p_staging) {
  const size_t padded_width = paddedWidth(image.width);
  const size_t chroma_width = (image.width + 1) / 2;
  const size_t chroma_height = (image.height + 1) / 2;
  uint8_t* p_u_staging = p_staging + LUMA_ROWS * padded_width;
  uint8_t* p_v_staging = p_u_staging + CHROMA_ROWS * (padded_width / 2);
  return runGuarded(_errors.point, [&] {
    start(image.width, image.height, 3, JCS_YCbCr);
    jpeg_set_quality(&_info, quality, TRUE);
    _info.raw_data_in = TRUE;
    _info.comp_info[0].h_samp_factor = 2;
    _info.comp_info[0].v_samp_factor = 2;
    jpeg_start_compress(&_info, TRUE);
    JSAMPROW y_rows[LUMA_ROWS];
    JSAMPROW u_rows[CHROMA_ROWS];
    JSAMPROW v_rows[CHROMA_ROWS];
    JSAMPARRAY planes[3] = {y_rows, u_rows, v_rows};
    while (_info.next_scanline < _info.image_height) {
      const size_t row = _info.next_scanline;
      pointRows(image.p_y, image.y_stride, 1, image.width, padded_width, row, image.height, LUMA_ROWS,
                p_staging, y_rows);
      pointRows(image.p_u, image.u_stride, image.chroma_step, chroma_width, padded_width / 2, row / 2,
                chroma_height, CHROMA_ROWS, p_u_staging, u_rows);
      pointRows(image.p_v, image.v_stride, image.chroma_step, chroma_width, padded_width / 2, row / 2,
                chroma_height, CHROMA_ROWS, p_v_staging, v_rows);
      jpeg_write_raw_data(&_info, planes, LUMA_ROWS);
    }
    jpeg_finish_compress(&_info);
  });
}

// A size that most files stay below, so that the output is rarely moved. False for what JPEG cannot store.
bool reserveTypical(size_t width, size_t height, ByteSink& sink) {
  if (width > JPEG_MAX_DIMENSION || height > JPEG_MAX_DIMENSION) {
    return false;
  }
  return sink.reserve(static_cast<size_t>(static_cast<uint64_t>(width) * height / 4) + LEAST_GROWTH);
}

}  // namespace

bool encodeJpeg(const ImageView& image, int quality, ByteSink& sink) noexcept {
  J_COLOR_SPACE space = JCS_GRAYSCALE;
  switch (image.format) {
    case SimdPixelFormatGray8:
      break;
    case SimdPixelFormatBgr24:
      space = JCS_EXT_BGR;
      break;
    case SimdPixelFormatBgra32:
      space = JCS_EXT_BGRX;
      break;
    case SimdPixelFormatRgb24:
      space = JCS_EXT_RGB;
      break;
    default:
      return false;
  }
  return reserveTypical(image.width, image.height, sink) &&
         Compressor(sink).writePacked(image, space, effectiveQuality(quality));
}

bool encodeJpegYuv420(const Yuv420View& image, int quality, ByteSink& sink) noexcept {
  if (!reserveTypical(image.width, image.height, sink)) {
    return false;
  }
  const Memory staging = allocate(paddedWidth(image.width) * (LUMA_ROWS + CHROMA_ROWS));
  return staging && Compressor(sink).writeYuv420(image, effectiveQuality(quality), staging.get());
}

}  // namespace Detail
}  // namespace Simd
