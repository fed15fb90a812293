#include "zo_video/zo_jpeg_decoder.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "zo_core/zo_exception.h"
#include "zo_jpeg_decoder_impl.h"
#include "zo_jpeg_plausibility.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_jpeg_decoder";

// What TurboJPEG writes of the luma plane: with halved chroma an even number of samples and rows, one more
// of each than an odd-sized picture has.
struct LumaExtent {
  int width;
  int height;
};

// Whether TurboJPEG may write that much into plane 0. Memory of our own has a row to spare behind each plane.
// In a caller's block the next plane follows at once, and what lies between the rows may be the rest of a
// larger picture.
bool lumaFits(const Frame& frame, LumaExtent luma) {
  const Size size = frame.size();
  if (luma.width == size.width && luma.height == size.height) {
    return true;
  }
  const uint64_t stride = frame.planeStride(0);
  const uint64_t width = static_cast<uint64_t>(luma.width);
  const uint64_t room =
      reinterpret_cast<uintptr_t>(frame.planeData(1)) - reinterpret_cast<uintptr_t>(frame.planeData(0));
  return width <= stride && room >= stride * (static_cast<uint64_t>(size.height) + 1);
}

}  // namespace

JpegDecoder::Impl::Impl() : Impl(TurboJpegDecompressorPtr(tjInitDecompress())) {}

JpegDecoder::Impl::Impl(TurboJpegDecompressorPtr p_decompressor)
    : _p_decompressor(std::move(p_decompressor)) {
  checkInstance("Impl");
}

void JpegDecoder::Impl::checkInstance(const char* function) const {
  if (_p_decompressor == nullptr) {
    throw Exception(nullptr, ZO_STATUS_OUT_OF_MEMORY, function, SOURCE_FILE, __LINE__,
                    "Not enough memory to initialize JPEG decoder.");
  }
}

// An instance keeps the tables of its last picture and would use them for data that lacks its own: damaged
// data would come out as a picture, and pictures without code tables, as many cameras send them, with the
// wrong ones. One that has failed in the middle of a header may even refuse sound data from then on. So each
// picture has a new one; that takes a few microseconds.
void JpegDecoder::Impl::renewInstance() {
  if (_used) {
    _p_decompressor.reset(tjInitDecompress());
    checkInstance("decode");
  }
  _used = true;
}

void JpegDecoder::Impl::checkDecoderError(int code) {
  if (code < 0) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, "checkDecoderError", SOURCE_FILE, __LINE__,
                    "Failed to decode frame. Error code %d", code);
  }
}

void JpegDecoder::Impl::decode(const unsigned char* p_buffer, unsigned size, Frame& frame) {
  static const char FUNCTION[] = "decode";
  if (p_buffer == nullptr) {
    throw Exception(nullptr, ZO_STATUS_NULL_POINTER, FUNCTION, SOURCE_FILE, __LINE__,
                    "Parameter 'p_buffer' is null.");
  }
  renewInstance();
  int width = -1;
  int height = -1;
  int subsampling = -1;
  int colour_space = -1;
  checkDecoderError(tjDecompressHeader3(_p_decompressor.get(), p_buffer, size, &width, &height, &subsampling,
                                        &colour_space));
  // Data that ends before the picture's header counts as read without an error, with nothing filled in.
  const Size image_size(width, height);
  if (width < 1 || height < 1) {
    checkDecoderError(-1);
  }
  switch (colour_space) {
    case TJCS_GRAY:
      return decodePacked(p_buffer, size, image_size, ZO_FRAME_FORMAT_GRAY8, TJPF_GRAY, frame);
    case TJCS_RGB:
    case TJCS_CMYK:
    case TJCS_YCCK:
      return decodePacked(p_buffer, size, image_size, ZO_FRAME_FORMAT_BGR24, TJPF_BGR, frame);
    case TJCS_YCbCr:
      return decodeYuv(p_buffer, size, image_size, subsampling, frame);
    default:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, FUNCTION, SOURCE_FILE, __LINE__,
                      "Unsupported JPEG color space");
  }
}

void JpegDecoder::Impl::makeRoom(const unsigned char* p_buffer, unsigned size, Size image_size,
                                 FrameFormat format, Frame& frame) {
  if (!jpegDataCanHold(p_buffer, size, image_size)) {
    checkDecoderError(-1);
  }
  frame.reuse(format, image_size, DeviceContext(), 0);
}

void JpegDecoder::Impl::decodePacked(const unsigned char* p_buffer, unsigned size, Size image_size,
                                     FrameFormat format, int pixel_format, Frame& frame) {
  makeRoom(p_buffer, size, image_size, format, frame);
  checkDecoderError(tjDecompress2(_p_decompressor.get(), p_buffer, size, frame.planeData(0), image_size.width,
                                  static_cast<int>(frame.planeStride(0)), image_size.height, pixel_format,
                                  TJFLAG_NOREALLOC));
}

void JpegDecoder::Impl::decodeYuv(const unsigned char* p_buffer, unsigned size, Size image_size,
                                  int subsampling, Frame& frame) {
  FrameFormat format;
  unsigned cb = 1;
  switch (subsampling) {
    case TJSAMP_444:
      format = ZO_FRAME_FORMAT_YUV444_PLANAR;
      break;
    case TJSAMP_422:
      format = ZO_FRAME_FORMAT_YUV422_PLANAR;
      cb = 2;
      break;
    case TJSAMP_420:
      format = ZO_FRAME_FORMAT_YUV420_PLANAR_I420;
      break;
    default:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, "decode_yuv", SOURCE_FILE, __LINE__,
                      "Unsupported JPEG frame YUV sub-sampling");
  }
  const unsigned cr = 3 - cb;
  makeRoom(p_buffer, size, image_size, format, frame);
  unsigned char* planes[3] = {frame.planeData(0), frame.planeData(cb), frame.planeData(cr)};
  int strides[3] = {static_cast<int>(frame.planeStride(0)), static_cast<int>(frame.planeStride(cb)),
                    static_cast<int>(frame.planeStride(cr))};
  const LumaExtent luma = {tjPlaneWidth(0, image_size.width, subsampling),
                           tjPlaneHeight(0, image_size.height, subsampling)};
  const bool fits = lumaFits(frame, luma);
  if (!fits) {
    const uint64_t bytes = static_cast<uint64_t>(luma.width) * static_cast<uint64_t>(luma.height);
    if (bytes > UINT_MAX) {
      throw std::bad_alloc();
    }
    _luma.resize(static_cast<unsigned>(bytes), false);
    planes[0] = _luma.data();
    strides[0] = luma.width;
  }
  checkDecoderError(tjDecompressToYUVPlanes(_p_decompressor.get(), p_buffer, size, planes, image_size.width,
                                            strides, image_size.height, TJFLAG_NOREALLOC));
  if (!fits) {
    const std::size_t row_bytes = static_cast<std::size_t>(image_size.width);
    for (std::size_t row = 0; row < static_cast<std::size_t>(image_size.height); ++row) {
      std::memcpy(frame.planeData(0) + row * frame.planeStride(0),
                  _luma.data() + row * static_cast<std::size_t>(luma.width), row_bytes);
    }
  }
}

JpegDecoder::JpegDecoder() : _p_impl(new Impl()) {}

JpegDecoder::~JpegDecoder() {
  delete _p_impl;
}

void JpegDecoder::decode(const unsigned char* p_buffer, unsigned size, Frame& frame) {
  _p_impl->decode(p_buffer, size, frame);
}

}  // namespace zo
