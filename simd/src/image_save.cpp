#include <cstdio>

#include "Simd/SimdLib.h"
#include "codecs.h"

using namespace Simd::Detail;

namespace {

bool encode(const ImageView& image, SimdImageFileType type, int quality, ByteSink& sink) {
  const size_t pixel_size = pixelSize(image.format);
  if (image.p_pixels == nullptr || image.width == 0 || image.height == 0 || pixel_size == 0 ||
      image.width > image.stride / pixel_size) {
    return false;
  }
  switch (type) {
    case SimdImageFilePgmTxt:
      return encodePnm(image, false, true, sink);
    case SimdImageFilePgmBin:
      return encodePnm(image, false, false, sink);
    case SimdImageFilePpmTxt:
      return encodePnm(image, true, true, sink);
    case SimdImageFilePpmBin:
      return encodePnm(image, true, false, sink);
    case SimdImageFilePng:
      return encodePng(image, sink);
    case SimdImageFileJpeg:
      return encodeJpeg(image, quality, sink);
    case SimdImageFileUndefined:
      break;
  }
  return false;
}

bool writeFile(const char* p_path, const ByteSink& content) {
  FILE* p_file = fopen(p_path, "wb");
  if (p_file == nullptr) {
    return false;
  }
  const bool written = fwrite(content.data(), 1, content.size(), p_file) == content.size();
  return fclose(p_file) == 0 && written;
}

uint8_t* saveYuv420(const Yuv420View& image, int quality, size_t* p_size) {
  const size_t chroma_width = (image.width + 1) / 2;
  ByteSink sink;
  if (image.p_y == nullptr || image.p_u == nullptr || image.p_v == nullptr || image.width == 0 ||
      image.height == 0 || image.y_stride < image.width ||
      image.u_stride < chroma_width * image.chroma_step ||
      image.v_stride < chroma_width * image.chroma_step || !encodeJpegYuv420(image, quality, sink)) {
    return nullptr;
  }
  return sink.release(p_size);
}

}  // namespace

void SimdFree(void* ptr) {
  free(ptr);
}

uint8_t* SimdImageSaveToMemory(const uint8_t* src, size_t stride, size_t width, size_t height,
                               SimdPixelFormatType format, SimdImageFileType file, int quality,
                               size_t* size) {
  ByteSink sink;
  return encode({src, stride, width, height, format}, file, quality, sink) ? sink.release(size) : nullptr;
}

SimdBool SimdImageSaveToFile(const uint8_t* src, size_t stride, size_t width, size_t height,
                             SimdPixelFormatType format, SimdImageFileType file, int quality,
                             const char* path) {
  ByteSink sink;
  const bool saved = path != nullptr && encode({src, stride, width, height, format}, file, quality, sink) &&
                     writeFile(path, sink);
  return saved ? SimdTrue : SimdFalse;
}

uint8_t* SimdNv12SaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* uv, size_t uvStride,
                                    size_t width, size_t height, SimdYuvType, int quality, size_t* size) {
  return saveYuv420({y, yStride, uv, uvStride, uv ? uv + 1 : nullptr, uvStride, 2, width, height}, quality,
                    size);
}

uint8_t* SimdYuv420pSaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* u, size_t uStride,
                                       const uint8_t* v, size_t vStride, size_t width, size_t height,
                                       SimdYuvType, int quality, size_t* size) {
  return saveYuv420({y, yStride, u, uStride, v, vStride, 1, width, height}, quality, size);
}
