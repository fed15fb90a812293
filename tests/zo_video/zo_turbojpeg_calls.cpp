#include "zo_turbojpeg_calls.h"

#include <turbojpeg.h>

namespace {

// NOLINTBEGIN: what the functions below answer
bool colour_space_set = false;
int colour_space_told = 0;
bool instances_refused = false;
// NOLINTEND

}  // namespace

// The linker's option --wrap sends every call of f to __wrap_f, and __real_f is the f of TurboJPEG.
extern "C" {

tjhandle __real_tjInitCompress();
tjhandle __real_tjInitDecompress();
int __real_tjDecompressHeader3(tjhandle handle, const unsigned char* p_jpeg, unsigned long size, int* p_width,
                               int* p_height, int* p_subsampling, int* p_colour_space);

tjhandle __wrap_tjInitCompress();
tjhandle __wrap_tjInitDecompress();
int __wrap_tjDecompressHeader3(tjhandle handle, const unsigned char* p_jpeg, unsigned long size, int* p_width,
                               int* p_height, int* p_subsampling, int* p_colour_space);

tjhandle __wrap_tjInitCompress() {
  return instances_refused ? nullptr : __real_tjInitCompress();
}

tjhandle __wrap_tjInitDecompress() {
  return instances_refused ? nullptr : __real_tjInitDecompress();
}

int __wrap_tjDecompressHeader3(tjhandle handle, const unsigned char* p_jpeg, unsigned long size, int* p_width,
                               int* p_height, int* p_subsampling, int* p_colour_space) {
  const int result =
      __real_tjDecompressHeader3(handle, p_jpeg, size, p_width, p_height, p_subsampling, p_colour_space);
  if (colour_space_set) {
    *p_colour_space = colour_space_told;
  }
  return result;
}

}  // extern "C"

namespace zo {
namespace test {

TurboJpegAnswers::TurboJpegAnswers() {
  colour_space_set = false;
  instances_refused = false;
}

TurboJpegAnswers::~TurboJpegAnswers() {
  colour_space_set = false;
  instances_refused = false;
}

void TurboJpegAnswers::setColourSpace(int colour_space) {
  colour_space_set = true;
  colour_space_told = colour_space;
}

void TurboJpegAnswers::refuseInstances() {
  instances_refused = true;
}

}  // namespace test
}  // namespace zo
