#include "zo_video/zo_jpeg_encoder.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "zo_core/zo_exception.h"
#include "zo_jpeg_encoder_impl.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_jpeg_encoder";

// Callers match on the plain text, so the reason is handed over but not part of the format.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-extra-args"
[[noreturn]] void refuse(Status status, int line, const char* p_reason) {
  throw Exception(nullptr, status, "encode", SOURCE_FILE, line, "Error in encode(...) function", p_reason);
}
#pragma GCC diagnostic pop

void checkEncoderError(int code) {
  if (code < 0) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, "checkEncoderError", SOURCE_FILE, __LINE__,
                    "Failed to encode frame. Error code %d", code);
  }
}

// Gives `out` the size that no compressed picture of this kind exceeds. TurboJPEG relies on it: told not to
// reallocate, it never looks at the size that it is handed.
unsigned long reserveWorstCase(Size size, int subsampling, Buffer& out) {
  const unsigned long bytes = tjBufSize(size.width, size.height, subsampling);
  if (bytes == static_cast<unsigned long>(-1)) {
    checkEncoderError(-1);
  }
  if (bytes > UINT_MAX) {
    throw std::bad_alloc();
  }
  out.resize(static_cast<unsigned>(bytes), false);
  return bytes;
}

}  // namespace

JpegEncoder::Impl::Impl() : _p_compressor(tjInitCompress()) {}

JpegEncoder::Impl::Impl(TurboJpegCompressorPtr p_compressor) : _p_compressor(std::move(p_compressor)) {}

void JpegEncoder::Impl::encode(const Frame& frame, int quality, Buffer& out) {
  if (frame.planeCount() == 0) {
    refuse(ZO_STATUS_NOT_INITIALIZED, __LINE__, "input frame is empty");
  }
  if (quality < 1 || quality > 100) {
    refuse(ZO_STATUS_INVALID_ARGUMENT, __LINE__, "'quality' must line in setting (0; 100]");
  }
  if (_p_compressor == nullptr) {
    refuse(ZO_STATUS_NULL_POINTER, __LINE__, "Turbo jpeg instance is not initialized");
  }
  encodeByFormat(frame, quality, out);
}

void JpegEncoder::Impl::encodeByFormat(const Frame& frame, int quality, Buffer& out) {
  static const char FUNCTION[] = "encode";
  switch (frame.format()) {
    case ZO_FRAME_FORMAT_UNDEFINED:
      throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, FUNCTION, SOURCE_FILE, __LINE__,
                      "Failure in imageWrite(...): not initialized frame data");
    case ZO_FRAME_FORMAT_GRAY8:
      return encodePacked(frame, TJPF_GRAY, TJSAMP_GRAY, quality, out);
    case ZO_FRAME_FORMAT_RGB24:
      return encodePacked(frame, TJPF_RGB, TJSAMP_444, quality, out);
    case ZO_FRAME_FORMAT_BGR24:
      return encodePacked(frame, TJPF_BGR, TJSAMP_444, quality, out);
    case ZO_FRAME_FORMAT_YUV420_PLANAR_I420:
      return encodePlanar(frame, TJSAMP_420, ChromaOrder::CB_CR, quality, out);
    case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
      return encodePlanar(frame, TJSAMP_420, ChromaOrder::CR_CB, quality, out);
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
      return encodeConverted(frame, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420, ChromaOrder::CB_CR,
                             quality, out);
    case ZO_FRAME_FORMAT_YUV422_PLANAR:
      return encodePlanar(frame, TJSAMP_422, ChromaOrder::CR_CB, quality, out);
    case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
    case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
    case ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16:
      // The converter fills plane 1 with U; the coder takes it for V, as in every 4:2:2 planar frame.
      return encodeConverted(frame, ZO_FRAME_FORMAT_YUV422_PLANAR, TJSAMP_422, ChromaOrder::CR_CB, quality,
                             out);
    case ZO_FRAME_FORMAT_YUV444_PACKED_IYU2:
      return encodeConverted(frame, ZO_FRAME_FORMAT_YUV444_PLANAR, TJSAMP_444, ChromaOrder::CB_CR, quality,
                             out);
    case ZO_FRAME_FORMAT_YUV444_PLANAR:
      return encodePlanar(frame, TJSAMP_444, ChromaOrder::CB_CR, quality, out);
    case ZO_FRAME_FORMAT_CUSTOM_1:
    case ZO_FRAME_FORMAT_RESERVED_17:
    case ZO_FRAME_FORMAT_RESERVED_18:
    case ZO_FRAME_FORMAT_CUSTOM_2:
    case ZO_FRAME_FORMAT_CUSTOM_3:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, FUNCTION, SOURCE_FILE, __LINE__,
                      "Failure in imageWrite(...): not suported format to save");
    default:
      throw Exception(nullptr, ZO_STATUS_OUT_OF_RANGE, FUNCTION, SOURCE_FILE, __LINE__,
                      "Failure in imageWrite(...): unknown format");
  }
}

void JpegEncoder::Impl::encodeConverted(const Frame& frame, FrameFormat planar_format, int subsampling,
                                        ChromaOrder order, int quality, Buffer& out) {
  _converter.convert(frame, planar_format, frame.size(), _scratch,
                     VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  encodePlanar(_scratch, subsampling, order, quality, out);
}

void JpegEncoder::Impl::encodePacked(const Frame& frame, int pixel_format, int subsampling, int quality,
                                     Buffer& out) {
  const Size size = frame.size();
  unsigned long bytes = reserveWorstCase(size, subsampling, out);
  unsigned char* p_out = out.data();
  checkEncoderError(tjCompress2(_p_compressor.get(), frame.planeData(0), size.width,
                                static_cast<int>(frame.planeStride(0)), size.height, pixel_format, &p_out,
                                &bytes, subsampling, quality, TJFLAG_NOREALLOC));
  out.resize(static_cast<unsigned>(bytes), false);
}

void JpegEncoder::Impl::encodePlanar(const Frame& frame, int subsampling, ChromaOrder order, int quality,
                                     Buffer& out) {
  const Size size = frame.size();
  const unsigned cb = order == ChromaOrder::CB_CR ? 1 : 2;
  const unsigned cr = 3 - cb;
  const unsigned char* planes[3] = {frame.planeData(0), frame.planeData(cb), frame.planeData(cr)};
  int strides[3] = {static_cast<int>(frame.planeStride(0)), static_cast<int>(frame.planeStride(cb)),
                    static_cast<int>(frame.planeStride(cr))};
  unsigned long bytes = reserveWorstCase(size, subsampling, out);
  // For halved chroma TurboJPEG reads an even number of luma samples, and rows for 4:2:0. Beyond the picture
  // lie the next plane or bytes that nobody wrote; they must not colour the picture's edge.
  const int luma_width = tjPlaneWidth(0, size.width, subsampling);
  const int luma_height = tjPlaneHeight(0, size.height, subsampling);
  if (luma_width > size.width || luma_height > size.height) {
    extendLuma(frame, luma_width, luma_height);
    planes[0] = _luma.data();
    strides[0] = luma_width;
  }
  unsigned char* p_out = out.data();
  checkEncoderError(tjCompressFromYUVPlanes(_p_compressor.get(), planes, size.width, strides, size.height,
                                            subsampling, &p_out, &bytes, quality, TJFLAG_NOREALLOC));
  out.resize(static_cast<unsigned>(bytes), false);
}

// Copies the luma plane and repeats its last column and row up to the given size.
void JpegEncoder::Impl::extendLuma(const Frame& frame, int width, int height) {
  const uint64_t bytes = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  if (bytes > UINT_MAX) {
    throw std::bad_alloc();
  }
  _luma.resize(static_cast<unsigned>(bytes), false);
  const std::size_t stride = static_cast<std::size_t>(width);
  const std::size_t row_bytes = static_cast<std::size_t>(frame.size().width);
  const std::size_t rows = static_cast<std::size_t>(frame.size().height);
  for (std::size_t row = 0; row < static_cast<std::size_t>(height); ++row) {
    const unsigned char* p_source = frame.planeData(0) + (row < rows ? row : rows - 1) * frame.planeStride(0);
    unsigned char* p_row = _luma.data() + row * stride;
    std::memcpy(p_row, p_source, row_bytes);
    std::memset(p_row + row_bytes, p_source[row_bytes - 1], stride - row_bytes);
  }
}

JpegEncoder::JpegEncoder() : _p_impl(new Impl()) {}

JpegEncoder::~JpegEncoder() {
  delete _p_impl;
}

void JpegEncoder::encode(const Frame& frame, int quality, Buffer& out) {
  _p_impl->encode(frame, quality, out);
}

}  // namespace zo
