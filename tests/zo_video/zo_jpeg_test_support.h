#ifndef ZO_TESTS_ZO_VIDEO_ZO_JPEG_TEST_SUPPORT_H
#define ZO_TESTS_ZO_VIDEO_ZO_JPEG_TEST_SUPPORT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "zo_core/zo_buffer.h"
#include "zo_core/zo_frame.h"

namespace zo {
namespace test {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const Buffer& buffer);

/// What the header of a JPEG says, in TurboJPEG's numbers. Fails the test when there is no header.
struct JpegHeader {
  Size size;
  int subsampling = -1;
  int colour_space = -1;
};
JpegHeader jpegHeader(const Bytes& jpeg);

/// One colour plane of a picture for the bare coder: tightly packed rows.
struct RawPlane {
  int width = 0;
  int height = 0;
  Bytes bytes;
};

/// A picture as bare TurboJPEG wants or gives it: 1 plane (grey) or 3 (Y, Cb, Cr), padded to whole chroma
/// samples as TurboJPEG's plane sizes say.
struct RawPicture {
  Size size;
  int subsampling = -1;
  std::vector<RawPlane> planes;
};

/// The planes that TurboJPEG gives for a YCbCr or grey JPEG; padding included.
RawPicture bareDecodeYuv(const Bytes& jpeg);
/// Packed pixels in a TurboJPEG pixel format, without row padding.
Bytes bareDecodePacked(const Bytes& jpeg, int pixel_format);
Bytes bareEncodeYuv(const RawPicture& picture, int quality);
Bytes bareEncodePacked(const Bytes& pixels, Size size, int pixel_format, int subsampling, int quality);

/// A smooth YCbCr picture whose two chroma planes cannot be taken for one another: Cb is dark, Cr is bright.
RawPicture makeYuvPicture(Size size, int subsampling);

/// What a frame of a YUV format (I420, YV12, NV12, NV21, 4:2:2 or 4:4:4 planar, YUY2, UYVY) holds when plane
/// order is what the format's name says and 4:2:2 planar has U first.
Frame makeYuvFrame(FrameFormat format, Size size);

/// JPEGs that TurboJPEG itself does not write, through libjpeg.
struct LibjpegOptions {
  int colour_space = 3;  ///< J_COLOR_SPACE of the file: 1 grey, 2 RGB, 3 YCbCr, 4 CMYK, 5 YCCK
  int horizontal = 2;    ///< luma sampling factors
  int vertical = 2;
  bool progressive = false;
  bool arithmetic = false;
  bool optimised = false;  ///< codes made for the picture
  bool flat = false;       ///< one colour all over
  int quality = 90;
};
Bytes libjpegEncode(Size size, const LibjpegOptions& options);

/// A frame over memory of the caller with exactly the bytes that the planes need, between two guard areas.
class GuardedFrame {
 public:
  /// `padding` is added to the length of each row.
  GuardedFrame(FrameFormat format, Size size, unsigned padding = 0);
  GuardedFrame(const GuardedFrame&) = delete;
  GuardedFrame& operator=(const GuardedFrame&) = delete;

  Frame& frame() { return _frame; }
  const unsigned char* pixels() const { return _block.data() + GUARD_BYTES; }
  /// Nothing was written before, behind or (with padding) between the rows.
  bool intact() const;

 private:
  static constexpr std::size_t GUARD_BYTES = 4096;

  Bytes _block;
  Frame _frame;
};

/// The mean of a plane's samples.
double planeMean(const Frame& frame, unsigned plane);

}  // namespace test
}  // namespace zo

#endif
