// Uses the installed library from C++: a conversion, and an exception that crosses from the library.
#include <cstdio>
#include <cstring>

#include "zo_video/zo_video.h"

namespace {

int fail(const char* what) {
  std::fprintf(stderr, "consumer_cpp: %s\n", what);
  return 1;
}

}  // namespace

int main() {
  zo::Frame gray;
  gray.reuse(zo::ZO_FRAME_FORMAT_GRAY8, zo::Size(64, 48), zo::DeviceContext(), 0);
  for (int y = 0; y < 48; ++y) {
    std::memset(gray.planeData(0) + y * static_cast<int>(gray.planeStride(0)), 200, 64);
  }
  gray.setTimestamp(40);

  zo::VideoConverter converter;
  zo::Frame colour;
  converter.convert(gray, zo::ZO_FRAME_FORMAT_BGR24, zo::Size(32, 24), colour,
                    zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  if (colour.size() != zo::Size(32, 24) || colour.timestamp() != 40) {
    return fail("the converted frame has the wrong size or time");
  }
  for (int x = 0; x < 32 * 3; ++x) {
    if (colour.planeData(0)[x] != 200) {
      return fail("grey did not stay grey");
    }
  }

  bool caught = false;
  try {
    converter.convert(gray, zo::ZO_FRAME_FORMAT_YUV444_PACKED_IYU2, zo::Size(32, 24), colour,
                      zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  } catch (const zo::Exception& error) {
    caught = error.status() == zo::ZO_STATUS_NOT_SUPPORTED && error.what()[0] != '\0';
  }
  if (!caught) {
    return fail("the library's exception was not caught as a zo::Exception");
  }

  zo::VideoReader reader;
  zo::Status status = zo::ZO_STATUS_OK;
  try {
    reader.open("/no/such/clip.mp4", -1, nullptr, true, false, false);
  } catch (const zo::Exception& error) {
    status = error.status();
  }
  if (status != zo::ZO_STATUS_OPEN_ERROR) {
    return fail("a clip that does not exist was not refused");
  }

  const auto p_jpeg = zo::encodeJpeg(gray, 90);
  if (p_jpeg == nullptr || zo::decodeJpeg(p_jpeg->data(), p_jpeg->size())->size() != zo::Size(64, 48)) {
    return fail("the frame did not come back from JPEG");
  }
  std::puts("consumer_cpp: ok");
  return 0;
}
