#ifndef ZO_TESTS_ZO_VIDEO_ZO_TURBOJPEG_CALLS_H
#define ZO_TESTS_ZO_VIDEO_ZO_TURBOJPEG_CALLS_H

namespace zo {
namespace test {

/// Stands between the library and TurboJPEG while it lives, in programs that are linked with --wrap for these
/// functions.
class TurboJpegAnswers {
 public:
  TurboJpegAnswers();
  ~TurboJpegAnswers();
  TurboJpegAnswers(const TurboJpegAnswers&) = delete;
  TurboJpegAnswers& operator=(const TurboJpegAnswers&) = delete;

  /// tjDecompressHeader3() tells this colour space of every picture.
  void setColourSpace(int colour_space);
  /// tjInitDecompress() and tjInitCompress() give null.
  void refuseInstances();
};

}  // namespace test
}  // namespace zo

#endif
