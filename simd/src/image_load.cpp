#include <algorithm>
#include <cstdio>

#include "Simd/SimdLib.h"
#include "codecs.h"

using namespace Simd::Detail;

namespace {

// The first bytes of a file tell whether it is worth reading the rest.
constexpr size_t FIRST_READ = 4096;

class FileCloser {
 public:
  void operator()(FILE* p_file) const noexcept { fclose(p_file); }
};

bool isImage(const uint8_t* p_data, size_t size) {
  return isJpeg(p_data, size) || isPng(p_data, size) || isPnm(p_data, size);
}

bool decode(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) {
  if (isJpeg(p_data, size)) {
    return decodeJpeg(p_data, size, wanted, image);
  }
  if (isPng(p_data, size)) {
    return decodePng(p_data, size, wanted, image);
  }
  return isPnm(p_data, size) && decodePnm(p_data, size, wanted, image);
}

bool readFile(const char* p_path, ByteSink& content) {
  const std::unique_ptr<FILE, FileCloser> p_file(fopen(p_path, "rb"));
  if (!p_file) {
    return false;
  }
  size_t wanted = FIRST_READ;
  for (;;) {
    if (content.room() < wanted && !content.grow(std::max(wanted, content.size()))) {
      return false;
    }
    const size_t room = std::min(content.room(), wanted);
    const size_t got = fread(content.end(), 1, room, p_file.get());
    content.advance(got);
    if (got < room) {
      return ferror(p_file.get()) == 0;
    }
    if (!isImage(content.data(), content.size()) || content.size() > Image::MAX_BYTES) {
      return false;
    }
    wanted = content.size();
  }
}

}  // namespace

uint8_t* SimdImageLoadFromMemory(const uint8_t* data, size_t size, size_t* stride, size_t* width,
                                 size_t* height, SimdPixelFormatType* format) {
  Image image;
  if (data == nullptr || !decode(data, size, *format, image)) {
    return nullptr;
  }
  *stride = image.stride();
  *width = image.width();
  *height = image.height();
  *format = image.format();
  return image.release();
}

uint8_t* SimdImageLoadFromFile(const char* path, size_t* stride, size_t* width, size_t* height,
                               SimdPixelFormatType* format) {
  ByteSink content;
  if (path == nullptr || !readFile(path, content)) {
    return nullptr;
  }
  return SimdImageLoadFromMemory(content.data(), content.size(), stride, width, height, format);
}
