#include "zo_video/zo_image_io.h"

#include <sys/types.h>

#include <climits>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "zo_core/zo_exception.h"
#include "zo_image_file_type.h"
#include "zo_simd_handles.h"
#include "zo_stdio_file.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"

namespace zo {
namespace {

constexpr char SOURCE_FILE[] = "src/zo_video/zo_image_io";

static_assert(sizeof(off_t) == 8, "file sizes are 64 bits wide");

// Callers recognise the errors of the file functions by their lines, which therefore stay what they are.
enum FixedLine {
  LINE_READ_OPEN = 383,
  LINE_READ_SEEK = 394,
  LINE_READ_TELL = 405,
  LINE_READ_SHORT = 423,
  LINE_READ_WRAPPED = 442,
  LINE_READ_NO_MEMORY = 454,
  LINE_READ_STD_EXCEPTION = 467,
  LINE_READ_UNKNOWN = 479,
  LINE_WRITE_NO_PIXELS = 499,
  LINE_WRITE_QUALITY = 508,
  LINE_WRITE_OPEN = 519,
  LINE_WRITE_SHORT = 536,
  LINE_WRITE_WRAPPED = 550,
  LINE_WRITE_NO_MEMORY = 562,
  LINE_WRITE_STD_EXCEPTION = 575,
  LINE_WRITE_UNKNOWN = 587,
  LINE_LOAD_NO_PATH = 824,
  LINE_LOAD_FAILED = 835,
  LINE_SAVE_NO_PIXELS = 851,
  LINE_SAVE_FORMAT = 898,
  LINE_SAVE_FAILED = 903
};

[[noreturn]] void throwReadFailure(int line, const std::string& path) {
  throw Exception(nullptr, ZO_STATUS_READ_ERROR, "imageRead", SOURCE_FILE, line,
                  "Failure in imageRead(...): failed to read image file %s", path.c_str());
}

[[noreturn]] void throwWriteFailure(const std::string& path) {
  throw Exception(nullptr, ZO_STATUS_WRITE_ERROR, "imageWrite", SOURCE_FILE, LINE_WRITE_SHORT,
                  "Failure in imageWrite(...): cannot write file '%s'", path.c_str());
}

void readWholeFile(const std::string& path, Buffer& buffer) {
  const FilePtr p_file(std::fopen(path.c_str(), "rb"));
  if (p_file == nullptr) {
    throw Exception(nullptr, ZO_STATUS_OPEN_ERROR, "imageRead", SOURCE_FILE, LINE_READ_OPEN,
                    "Failure in imageRead(...): can not open image file %s", path.c_str());
  }
  if (fseeko(p_file.get(), 0, SEEK_END) != 0) {
    throwReadFailure(LINE_READ_SEEK, path);
  }
  const off_t size = ftello(p_file.get());
  if (size < 0 || size > off_t{UINT_MAX}) {  // folders claim to be huge
    throwReadFailure(LINE_READ_TELL, path);
  }
  std::rewind(p_file.get());
  buffer.resize(static_cast<unsigned>(size), false);
  if (std::fread(buffer.data(), 1, buffer.size(), p_file.get()) != buffer.size()) {
    throwReadFailure(LINE_READ_SHORT, path);
  }
}

FilePtr openForWriting(const std::string& path) {
  FilePtr p_file(std::fopen(path.c_str(), "wb"));
  if (p_file == nullptr) {
    throw Exception(nullptr, ZO_STATUS_OPEN_ERROR, "imageWrite", SOURCE_FILE, LINE_WRITE_OPEN,
                    "Failure in imageWrite(...): cannot open file '%s' for writing", path.c_str());
  }
  // The image is written in one go; without a buffer in between, a full disk shows in that very call.
  std::setvbuf(p_file.get(), nullptr, _IONBF, 0);
  return p_file;
}

// What a YUV or packed frame hands to the image library; nothing for planes that it does not have.
SimdBlockPtr saveToMemory(const Frame& frame, SimdPixelFormatType format, int quality, size_t* p_size) {
  return SimdBlockPtr(SimdImageSaveToMemory(
      frame.planeData(0), frame.planeStride(0), static_cast<size_t>(frame.size().width),
      static_cast<size_t>(frame.size().height), format, SimdImageFileJpeg, quality, p_size));
}

SimdBlockPtr compress(const Frame& frame, int quality, size_t* p_size) {
  const size_t width = static_cast<size_t>(frame.size().width);
  const size_t height = static_cast<size_t>(frame.size().height);
  switch (frame.format()) {
    case ZO_FRAME_FORMAT_GRAY8:
      return saveToMemory(frame, SimdPixelFormatGray8, quality, p_size);
    case ZO_FRAME_FORMAT_RGB24:
      return saveToMemory(frame, SimdPixelFormatRgb24, quality, p_size);
    case ZO_FRAME_FORMAT_BGR24:
      return saveToMemory(frame, SimdPixelFormatBgr24, quality, p_size);
    case ZO_FRAME_FORMAT_YUV420_PLANAR_I420:
      return SimdBlockPtr(SimdYuv420pSaveAsJpegToMemory(
          frame.planeData(0), frame.planeStride(0), frame.planeData(1), frame.planeStride(1),
          frame.planeData(2), frame.planeStride(2), width, height, SimdYuvTrect871, quality, p_size));
    case ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12:
      return SimdBlockPtr(SimdNv12SaveAsJpegToMemory(frame.planeData(0), frame.planeStride(0),
                                                     frame.planeData(1), frame.planeStride(1), width, height,
                                                     SimdYuvTrect871, quality, p_size));
    default:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, "encodeJpeg", SOURCE_FILE, __LINE__,
                      "Unsupported format %s for JPEG encoding", toString(frame.format()));
  }
}

SimdPixelFormatType savingFormat(FrameFormat format) {
  switch (format) {
    case ZO_FRAME_FORMAT_GRAY8:
      return SimdPixelFormatGray8;
    case ZO_FRAME_FORMAT_RGB24:
      return SimdPixelFormatRgb24;
    case ZO_FRAME_FORMAT_BGR24:
      return SimdPixelFormatBgr24;
    default:
      throw Exception(nullptr, ZO_STATUS_NOT_SUPPORTED, "imageSave", SOURCE_FILE, LINE_SAVE_FORMAT,
                      "Unsupported format %s for image saving", toString(format));
  }
}

// Where the image library puts what it says about a loaded image.
struct LoadedImage {
  size_t stride = 0;
  size_t width = 0;
  size_t height = 0;
  SimdPixelFormatType format = SimdPixelFormatBgr24;

  bool representable() const { return stride <= INT_MAX && width <= INT_MAX && height <= INT_MAX; }
};

// A frame over the loaded pixels, which it is freed with.
std::shared_ptr<Frame> frameOver(SimdBlockPtr p_pixels, const LoadedImage& image, FrameFormat format) {
  const FrameLayout layout(format, Size(static_cast<int>(image.width), static_cast<int>(image.height)),
                           {static_cast<unsigned>(image.stride), 0, 0, 0});
  std::unique_ptr<Frame> p_frame(new Frame(layout, DeviceContext(), DevicePtr(p_pixels.get())));
  const FrameDeleter deleter(p_pixels.release());
  return std::shared_ptr<Frame>(std::unique_ptr<Frame, FrameDeleter>(p_frame.release(), deleter));
}

}  // namespace

FrameDeleter::FrameDeleter() noexcept : _p_pixels(nullptr) {}

FrameDeleter::FrameDeleter(void* p_pixels) noexcept : _p_pixels(p_pixels) {}

void FrameDeleter::operator()(Frame* p_frame) const noexcept {
  if (_p_pixels != nullptr) {
    SimdFree(_p_pixels);
  } else if (p_frame != nullptr && p_frame->initialized()) {
    SimdFree(p_frame->planeData(0));
  }
  delete p_frame;
}

void imageRead(const std::string& path, Frame& frame) {
  static const char FUNCTION[] = "imageRead";
  // TurboJPEG is to see an empty file as data without bytes, not as no data.
  static const unsigned char NO_BYTES[1] = {0};
  Buffer buffer;
  JpegDecoder decoder;
  try {
    readWholeFile(path, buffer);
    decoder.decode(buffer.size() == 0 ? NO_BYTES : buffer.data(), buffer.size(), frame);
  } catch (const Exception& e) {
    throw Exception(&e, e.status(), FUNCTION, SOURCE_FILE, LINE_READ_WRAPPED,
                    "Failure in imageRead function: failed to read file: '%s' due to %s", path.c_str(),
                    e.what());
  } catch (const std::bad_alloc&) {
    throw Exception(
        nullptr, ZO_STATUS_OUT_OF_MEMORY, FUNCTION, SOURCE_FILE, LINE_READ_NO_MEMORY,
        "Failure in imageRead(...): failed to read image file '%s', not enough memory to read the image",
        path.c_str());
  } catch (const std::exception& e) {
    throw Exception(
        nullptr, ZO_STATUS_STD_EXCEPTION, FUNCTION, SOURCE_FILE, LINE_READ_STD_EXCEPTION,
        "Failure in imageRead(...): failed to read image file '%s', caught standard exception: %s",
        path.c_str(), e.what());
  } catch (...) {
    throw Exception(nullptr, ZO_STATUS_UNKNOWN_ERROR, FUNCTION, SOURCE_FILE, LINE_READ_UNKNOWN,
                    "Failure in imageRead(...): failed to read image file '%s', caught unknown exception.",
                    path.c_str());
  }
}

void imageWrite(const std::string& path, const Frame& frame, int quality) {
  static const char FUNCTION[] = "imageWrite";
  JpegEncoder encoder;
  Buffer buffer;
  try {
    if (!frame.initialized()) {
      throw Exception(nullptr, ZO_STATUS_NOT_INITIALIZED, FUNCTION, SOURCE_FILE, LINE_WRITE_NO_PIXELS,
                      "Failure in imageWrite(...): trying to save non-initialized frame");
    }
    if (quality < 1 || quality > 100) {
      throw Exception(nullptr, ZO_STATUS_INVALID_ARGUMENT, FUNCTION, SOURCE_FILE, LINE_WRITE_QUALITY,
                      "Failure in imageWrite(...): 'quality' arg should lie in segment (0; 100]");
    }
    FilePtr p_file = openForWriting(path);
    encoder.encode(frame, quality, buffer);
    if (std::fwrite(buffer.data(), 1, buffer.size(), p_file.get()) != buffer.size()) {
      throwWriteFailure(path);
    }
    // Some file systems only tell at the end that the bytes did not arrive.
    if (std::fclose(p_file.release()) != 0) {
      throwWriteFailure(path);
    }
  } catch (const Exception& e) {
    throw Exception(&e, e.status(), FUNCTION, SOURCE_FILE, LINE_WRITE_WRAPPED,
                    "Failure in imageWrite(...): failed to write image file '%s' due to %s", path.c_str(),
                    e.what());
  } catch (const std::bad_alloc&) {
    throw Exception(
        nullptr, ZO_STATUS_OUT_OF_MEMORY, FUNCTION, SOURCE_FILE, LINE_WRITE_NO_MEMORY,
        "Failure in imageWrite(...): failed to write image file '%s', not enough memory to read the image",
        path.c_str());
  } catch (const std::exception& e) {
    throw Exception(
        nullptr, ZO_STATUS_STD_EXCEPTION, FUNCTION, SOURCE_FILE, LINE_WRITE_STD_EXCEPTION,
        "Failure in imageWrite(...): failed to write image file '%s', caught standard exception: %s",
        path.c_str(), e.what());
  } catch (...) {
    throw Exception(nullptr, ZO_STATUS_UNKNOWN_ERROR, FUNCTION, SOURCE_FILE, LINE_WRITE_UNKNOWN,
                    "Failure in imageWrite(...): failed to write image file '%s', caught unknown exception.",
                    path.c_str());
  }
}

void imageSave(const std::string& path, const Frame& frame, int quality) {
  static const char FUNCTION[] = "imageSave";
  if (!frame.initialized()) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, LINE_SAVE_NO_PIXELS,
                    "Assertion failed: %s", "frame.initialized()");
  }
  const SimdImageFileType type = detectFileType(path);
  const SimdPixelFormatType format = savingFormat(frame.format());
  if (!SimdImageSaveToFile(frame.planeData(0), frame.planeStride(0), static_cast<size_t>(frame.size().width),
                           static_cast<size_t>(frame.size().height), format, type, quality, path.c_str())) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, FUNCTION, SOURCE_FILE, LINE_SAVE_FAILED,
                    "Failed to save images");
  }
}

std::shared_ptr<Frame> imageLoad(const std::string& path) {
  static const char FUNCTION[] = "imageLoad";
  if (path.empty()) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, LINE_LOAD_NO_PATH,
                    "Assertion failed: %s", "!image_path.empty()");
  }
  LoadedImage image;
  image.format = detectFileType(path) == SimdImageFilePgmBin ? SimdPixelFormatGray8 : SimdPixelFormatBgr24;
  SimdBlockPtr p_pixels(
      SimdImageLoadFromFile(path.c_str(), &image.stride, &image.width, &image.height, &image.format));
  if (p_pixels == nullptr || !image.representable()) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, FUNCTION, SOURCE_FILE, LINE_LOAD_FAILED,
                    "Failed to encode JPEG frame");
  }
  return frameOver(std::move(p_pixels), image,
                   image.format == SimdPixelFormatGray8 ? ZO_FRAME_FORMAT_GRAY8 : ZO_FRAME_FORMAT_BGR24);
}

std::shared_ptr<Buffer> encodeJpeg(const Frame& frame, int quality) {
  static const char FUNCTION[] = "encodeJpeg";
  if (!frame.initialized()) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Assertion failed: %s", "frame.initialized()");
  }
  size_t size = 0;
  const SimdBlockPtr p_bytes = compress(frame, quality, &size);
  if (p_bytes == nullptr) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failed to encode JPEG frame");
  }
  if (size > UINT_MAX) {
    throw std::bad_alloc();
  }
  return std::make_shared<Buffer>(p_bytes.get(), static_cast<unsigned>(size));
}

std::shared_ptr<Frame> decodeJpeg(const unsigned char* p_buffer, unsigned buffer_size) {
  static const char FUNCTION[] = "decodeJpeg";
  if (p_buffer == nullptr || buffer_size == 0) {
    throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Assertion failed: %s", "p_buffer && buffer_size");
  }
  LoadedImage image;
  SimdBlockPtr p_pixels(SimdImageLoadFromMemory(p_buffer, buffer_size, &image.stride, &image.width,
                                                &image.height, &image.format));
  if (p_pixels == nullptr || !image.representable()) {
    throw Exception(nullptr, ZO_STATUS_CODEC_ERROR, FUNCTION, SOURCE_FILE, __LINE__,
                    "Failed to decode JPEG frame");
  }
  return frameOver(std::move(p_pixels), image, ZO_FRAME_FORMAT_BGR24);
}

}  // namespace zo
