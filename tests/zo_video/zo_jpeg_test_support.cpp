#include "zo_jpeg_test_support.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

// libjpeg's header needs the types of the two above.
#include <jpeglib.h>

#include "zo_video/zo_turbojpeg_handles.h"

namespace zo {
namespace test {
namespace {

constexpr unsigned char GUARD = 0xA5;

void check(int result, const char* p_what) {
  if (result != 0) {
    throw std::runtime_error(std::string(p_what) + ": " + tjGetErrorStr());
  }
}

Bytes takeOver(unsigned char* p_jpeg, unsigned long size) {
  const Bytes bytes(p_jpeg, p_jpeg + size);
  tjFree(p_jpeg);
  return bytes;
}

}  // namespace

Bytes bytesOf(const Buffer& buffer) {
  return Bytes(buffer.data(), buffer.data() + buffer.size());
}

JpegHeader jpegHeader(const Bytes& jpeg) {
  const TurboJpegDecompressorPtr p_decoder(tjInitDecompress());
  JpegHeader header;
  EXPECT_EQ(0, tjDecompressHeader3(p_decoder.get(), jpeg.data(), jpeg.size(), &header.size.width,
                                   &header.size.height, &header.subsampling, &header.colour_space));
  return header;
}

RawPicture bareDecodeYuv(const Bytes& jpeg) {
  const JpegHeader header = jpegHeader(jpeg);
  const TurboJpegDecompressorPtr p_decoder(tjInitDecompress());
  RawPicture picture;
  picture.size = header.size;
  picture.subsampling = header.subsampling;
  unsigned char* planes[3] = {};
  picture.planes.resize(header.subsampling == TJSAMP_GRAY ? 1 : 3);
  for (unsigned i = 0; i < picture.planes.size(); ++i) {
    RawPlane& plane = picture.planes[i];
    plane.width = tjPlaneWidth(static_cast<int>(i), header.size.width, header.subsampling);
    plane.height = tjPlaneHeight(static_cast<int>(i), header.size.height, header.subsampling);
    plane.bytes.resize(static_cast<std::size_t>(plane.width) * static_cast<std::size_t>(plane.height));
    planes[i] = plane.bytes.data();
  }
  check(tjDecompressToYUVPlanes(p_decoder.get(), jpeg.data(), jpeg.size(), planes, header.size.width, nullptr,
                                header.size.height, 0),
        "tjDecompressToYUVPlanes");
  return picture;
}

Bytes bareDecodePacked(const Bytes& jpeg, int pixel_format) {
  const JpegHeader header = jpegHeader(jpeg);
  const TurboJpegDecompressorPtr p_decoder(tjInitDecompress());
  Bytes pixels(static_cast<std::size_t>(header.size.width) * static_cast<std::size_t>(header.size.height) *
               static_cast<std::size_t>(tjPixelSize[pixel_format]));
  check(tjDecompress2(p_decoder.get(), jpeg.data(), jpeg.size(), pixels.data(), header.size.width, 0,
                      header.size.height, pixel_format, 0),
        "tjDecompress2");
  return pixels;
}

Bytes bareEncodeYuv(const RawPicture& picture, int quality) {
  const TurboJpegCompressorPtr p_encoder(tjInitCompress());
  const unsigned char* planes[3] = {};
  for (unsigned i = 0; i < picture.planes.size(); ++i) {
    planes[i] = picture.planes[i].bytes.data();
  }
  unsigned char* p_jpeg = nullptr;
  unsigned long size = 0;
  check(tjCompressFromYUVPlanes(p_encoder.get(), planes, picture.size.width, nullptr, picture.size.height,
                                picture.subsampling, &p_jpeg, &size, quality, 0),
        "tjCompressFromYUVPlanes");
  return takeOver(p_jpeg, size);
}

Bytes bareEncodePacked(const Bytes& pixels, Size size, int pixel_format, int subsampling, int quality) {
  const TurboJpegCompressorPtr p_encoder(tjInitCompress());
  unsigned char* p_jpeg = nullptr;
  unsigned long jpeg_size = 0;
  check(tjCompress2(p_encoder.get(), pixels.data(), size.width, 0, size.height, pixel_format, &p_jpeg,
                    &jpeg_size, subsampling, quality, 0),
        "tjCompress2");
  return takeOver(p_jpeg, jpeg_size);
}

RawPicture makeYuvPicture(Size size, int subsampling) {
  RawPicture picture;
  picture.size = size;
  picture.subsampling = subsampling;
  picture.planes.resize(subsampling == TJSAMP_GRAY ? 1 : 3);
  for (unsigned i = 0; i < picture.planes.size(); ++i) {
    RawPlane& plane = picture.planes[i];
    plane.width = tjPlaneWidth(static_cast<int>(i), size.width, subsampling);
    plane.height = tjPlaneHeight(static_cast<int>(i), size.height, subsampling);
    // Samples beyond the picture repeat its edge.
    const int last_x = (i == 0 ? size.width : plane.width) - 1;
    const int last_y = (i == 0 ? size.height : plane.height) - 1;
    for (int y = 0; y < plane.height; ++y) {
      for (int x = 0; x < plane.width; ++x) {
        const int slope = 40 * std::min(x, last_x) / plane.width + 30 * std::min(y, last_y) / plane.height;
        static const int BASE[3] = {90, 50, 160};
        plane.bytes.push_back(static_cast<unsigned char>(BASE[i] + (i == 0 ? slope : slope / 4)));
      }
    }
  }
  return picture;
}

Frame makeYuvFrame(FrameFormat format, Size size) {
  const bool halved_rows =
      format == ZO_FRAME_FORMAT_YUV420_PLANAR_I420 || format == ZO_FRAME_FORMAT_YUV420_PLANAR_YV12 ||
      format == ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12 || format == ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21;
  const bool full = format == ZO_FRAME_FORMAT_YUV444_PLANAR;
  const RawPicture picture =
      makeYuvPicture(size, full ? TJSAMP_444 : (halved_rows ? TJSAMP_420 : TJSAMP_422));
  const RawPlane& luma = picture.planes[0];
  const RawPlane& cb = picture.planes[1];
  const RawPlane& cr = picture.planes[2];
  const auto sample = [](const RawPlane& plane, unsigned x, unsigned y) {
    return plane.bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(plane.width) + x];
  };
  Frame frame;
  frame.reuse(format, size, DeviceContext(), 0);
  for (unsigned p = 0; p < frame.planeCount(); ++p) {
    for (unsigned y = 0; y < frame.planeRows(p); ++y) {
      unsigned char* p_row = frame.planeData(p) + static_cast<std::size_t>(y) * frame.planeStride(p);
      for (unsigned x = 0; x < frame.planeRowBytes(p); ++x) {
        switch (format) {
          case ZO_FRAME_FORMAT_YUV422_PACKED_YUY2:
            p_row[x] = x % 2 == 0 ? sample(luma, x / 2, y) : sample(x % 4 == 1 ? cb : cr, x / 4, y);
            break;
          case ZO_FRAME_FORMAT_YUV422_PACKED_UYVY:
            p_row[x] = x % 2 == 1 ? sample(luma, x / 2, y) : sample(x % 4 == 0 ? cb : cr, x / 4, y);
            break;
          case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
          case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21:
            p_row[x] =
                p == 0 ? sample(luma, x, y)
                       : sample((x % 2 == 0) == (format == ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12) ? cb : cr,
                                x / 2, y);
            break;
          case ZO_FRAME_FORMAT_YUV420_PLANAR_YV12:
            p_row[x] = sample(p == 0 ? luma : (p == 1 ? cr : cb), x, y);
            break;
          default:
            p_row[x] = sample(picture.planes[p], x, y);
            break;
        }
      }
    }
  }
  return frame;
}

Bytes libjpegEncode(Size size, const LibjpegOptions& options) {
  jpeg_compress_struct codec;
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);  // ends the process, which is all right in a test
  jpeg_create_compress(&codec);
  unsigned char* p_jpeg = nullptr;
  unsigned long jpeg_size = 0;
  jpeg_mem_dest(&codec, &p_jpeg, &jpeg_size);
  codec.image_width = static_cast<JDIMENSION>(size.width);
  codec.image_height = static_cast<JDIMENSION>(size.height);
  const J_COLOR_SPACE colour_space = static_cast<J_COLOR_SPACE>(options.colour_space);
  const bool four = colour_space == JCS_CMYK || colour_space == JCS_YCCK;
  codec.in_color_space = colour_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : (four ? JCS_CMYK : JCS_RGB);
  codec.input_components = colour_space == JCS_GRAYSCALE ? 1 : (four ? 4 : 3);
  jpeg_set_defaults(&codec);
  jpeg_set_colorspace(&codec, colour_space);
  if (colour_space == JCS_YCbCr || colour_space == JCS_YCCK) {
    codec.comp_info[0].h_samp_factor = options.horizontal;
    codec.comp_info[0].v_samp_factor = options.vertical;
    if (colour_space == JCS_YCCK) {
      codec.comp_info[3].h_samp_factor = options.horizontal;
      codec.comp_info[3].v_samp_factor = options.vertical;
    }
  }
  jpeg_set_quality(&codec, options.quality, TRUE);
  codec.arith_code = options.arithmetic ? TRUE : FALSE;
  codec.optimize_coding = options.optimised ? TRUE : FALSE;
  if (options.progressive) {
    jpeg_simple_progression(&codec);
  }
  jpeg_start_compress(&codec, TRUE);
  const std::size_t samples = static_cast<std::size_t>(codec.input_components);
  Bytes row(static_cast<std::size_t>(size.width) * samples);
  for (int y = 0; y < size.height; ++y) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(size.width); ++x) {
      for (std::size_t c = 0; c < samples; ++c) {
        const std::size_t slope = options.flat ? 0 : 3 * x % 50 + static_cast<unsigned>(y) % 30;
        row[x * samples + c] = static_cast<unsigned char>(40 + 50 * c + slope);
      }
    }
    unsigned char* rows[1] = {row.data()};
    jpeg_write_scanlines(&codec, rows, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  const Bytes bytes(p_jpeg, p_jpeg + jpeg_size);
  std::free(p_jpeg);
  return bytes;
}

GuardedFrame::GuardedFrame(FrameFormat format, Size size, unsigned padding) {
  Frame shape;
  shape.reuse(format, size, DeviceContext(), 1);
  std::array<unsigned, 4> strides{};
  std::size_t bytes = 0;
  for (unsigned i = 0; i < shape.planeCount(); ++i) {
    strides[i] = shape.planeRowBytes(i) + padding;
    bytes += static_cast<std::size_t>(strides[i]) * shape.planeRows(i);
  }
  _block.assign(GUARD_BYTES + bytes + GUARD_BYTES, GUARD);
  _frame = Frame(FrameLayout(format, size, strides), DeviceContext(), DevicePtr(_block.data() + GUARD_BYTES));
}

bool GuardedFrame::intact() const {
  const auto guarded = [](unsigned char byte) { return byte == GUARD; };
  const unsigned char* p_at = _block.data() + GUARD_BYTES;
  for (unsigned i = 0; i < _frame.planeCount(); ++i) {
    for (unsigned row = 0; row < _frame.planeRows(i); ++row) {
      if (!std::all_of(p_at + _frame.planeRowBytes(i), p_at + _frame.planeStride(i), guarded)) {
        return false;
      }
      p_at += _frame.planeStride(i);
    }
  }
  return std::all_of(_block.begin(), _block.begin() + GUARD_BYTES, guarded) &&
         std::all_of(_block.end() - GUARD_BYTES, _block.end(), guarded);
}

double planeMean(const Frame& frame, unsigned plane) {
  double sum = 0;
  for (unsigned row = 0; row < frame.planeRows(plane); ++row) {
    const unsigned char* p_row =
        frame.planeData(plane) + static_cast<std::size_t>(row) * frame.planeStride(plane);
    for (unsigned x = 0; x < frame.planeRowBytes(plane); ++x) {
      sum += p_row[x];
    }
  }
  return sum / frame.planeRows(plane) / frame.planeRowBytes(plane);
}

}  // namespace test
}  // namespace zo
