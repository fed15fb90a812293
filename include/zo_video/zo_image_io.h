#ifndef ZO_VIDEO_ZO_IMAGE_IO_H
#define ZO_VIDEO_ZO_IMAGE_IO_H

#include <memory>
#include <string>

#include "zo_core/zo_buffer.h"
#include "zo_core/zo_frame.h"
#include "zo_video/zo_video_export.h"

namespace zo {

// Single images in files and memory. Nothing is kept between calls: all functions may run on many threads at
// once, for different files and frames.

/// Frees a frame from imageLoad() or decodeJpeg() together with the pixels that it was made over.
class ZO_VIDEO_API FrameDeleter {
 public:
  /// Frees the pixels that the frame itself points to.
  FrameDeleter() noexcept;
  /// Frees this block, whatever the frame points to by then.
  explicit FrameDeleter(void* p_pixels) noexcept;

  /// Destroys the frame and frees the pixels. A null frame is fine.
  void operator()(Frame* p_frame) const noexcept;

 private:
  void* _p_pixels;
};

/// Reads a JPEG file into `frame`, as JpegDecoder::decode() delivers it. The file's name does not matter.
/// @throws zo::Exception  "Failure in imageRead function: failed to read file: '<path>' due to <reason>",
///                        with the status of the reason and the reason as previous(): ZO_STATUS_OPEN_ERROR,
///                        ZO_STATUS_READ_ERROR, or what the decoder reports. ZO_STATUS_OUT_OF_MEMORY. Where
///                        the decoder cannot be set up its own exception comes as it is.
ZO_VIDEO_API void imageRead(const std::string& path, Frame& frame);

/// Writes a frame of any format that JpegEncoder takes to a JPEG file; what encode() says of 4:2:2 frames
/// holds here as well. The file's name does not matter. A frame that the encoder refuses leaves an empty file
/// behind.
/// @param quality  1 to 100.
/// @throws zo::Exception  "Failure in imageWrite(...): failed to write image file '<path>' due to <reason>",
///                        with the status of the reason and the reason as previous():
///                        ZO_STATUS_NOT_INITIALIZED (no pixels) and ZO_STATUS_INVALID_ARGUMENT (quality),
///                        both before the file is touched; ZO_STATUS_OPEN_ERROR, ZO_STATUS_WRITE_ERROR, or
///                        what the encoder reports. ZO_STATUS_OUT_OF_MEMORY. std::bad_alloc as it is where
///                        the encoder cannot be made.
ZO_VIDEO_API void imageWrite(const std::string& path, const Frame& frame, int quality);

/// Saves a GRAY8, RGB24 or BGR24 frame; the extension says as what: .jpg, .jpeg, .png, .pgm or .ppm (binary),
/// in any case. Colour saved as PGM becomes grey, grey saved as PPM becomes three equal channels.
/// @param quality  Only for JPEG: 0 means 90, other values are clamped to 1 to 100 (an image library of the
///                 system, where the build uses one, may see both differently).
/// @throws zo::Exception  ZO_STATUS_INTERNAL_ERROR: the frame holds no pixels. ZO_STATUS_NOT_SUPPORTED: the
///                        extension, or (checked after it) the frame's format. ZO_STATUS_CODEC_ERROR: the
///                        image cannot be encoded or written. std::bad_alloc.
ZO_VIDEO_API void imageSave(const std::string& path, const Frame& frame, int quality);

/// Loads an image: as ZO_FRAME_FORMAT_GRAY8 from a .pgm file, as ZO_FRAME_FORMAT_BGR24 from .jpg, .jpeg, .png
/// and .ppm. What the file really holds is told by its content. Alpha is dropped.
/// @return A new frame, never null. Its pixels live exactly as long as it: use Frame::copyTo() for a copy
///         that has to outlive it.
/// @throws zo::Exception  ZO_STATUS_INTERNAL_ERROR: the path is empty. ZO_STATUS_NOT_SUPPORTED: another
///                        extension. ZO_STATUS_CODEC_ERROR "Failed to encode JPEG frame": no such file,
///                        not an image, or one too large for the memory there is. A JPEG that ends early
///                        or is damaged inside may load with the rest made up; imageRead() reports it.
///                        std::bad_alloc.
ZO_VIDEO_API std::shared_ptr<Frame> imageLoad(const std::string& path);

/// Compresses a GRAY8, RGB24, BGR24, I420 or NV12 frame to JPEG; colour is 4:2:0 up to quality 90 and, for
/// packed formats, 4:4:4 above.
/// @param quality  0 means 90, other values are clamped to 1 to 100. For this and the subsampling an image
///                 library of the system, where the build uses one, may have other rules.
/// @throws zo::Exception  ZO_STATUS_INTERNAL_ERROR: the frame holds no pixels. ZO_STATUS_NOT_SUPPORTED: the
///                        format. ZO_STATUS_CODEC_ERROR: compression failed. std::bad_alloc.
ZO_VIDEO_API std::shared_ptr<Buffer> encodeJpeg(const Frame& frame, int quality);

/// Decodes an image in memory (JPEG; PNG, PGM and PPM as well) to ZO_FRAME_FORMAT_BGR24.
/// @return A new frame, never null. Its pixels live exactly as long as it.
/// @throws zo::Exception  ZO_STATUS_INTERNAL_ERROR: p_buffer is null or buffer_size 0. ZO_STATUS_CODEC_ERROR:
///                        not an image, or one too large for the memory there is. A JPEG that ends early
///                        or is damaged inside may come out with the rest made up; JpegDecoder reports it.
///                        std::bad_alloc.
ZO_VIDEO_API std::shared_ptr<Frame> decodeJpeg(const unsigned char* p_buffer, unsigned buffer_size);

}  // namespace zo

#endif
