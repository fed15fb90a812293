// The library prints nothing by itself, whatever it is given.
#include <gtest/gtest.h>

#include "zo_reader_steps.h"
#include "zo_test_support.h"
#include "zo_video/zo_video.h"

extern "C" {
#include <libavutil/log.h>
}

namespace zo {
namespace {

TEST(Silence, IsKeptByTheConverterWhenTheScalerRefuses) {
  av_log_set_level(AV_LOG_INFO);  // as in a fresh process
  const test::StderrCapture capture;
  const Frame source = test::makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(16, 16), 1);
  VideoConverter converter;
  Frame result;
  EXPECT_THROW(converter.convert(source, ZO_FRAME_FORMAT_GRAY8, Size(-1, 16), result,
                                 VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC),
               Exception);
  EXPECT_THROW(converter.convert(source, ZO_FRAME_FORMAT_UNDEFINED, Size(16, 16), result,
                                 VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC),
               Exception);
  converter.convert(source, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(7, 9), result,
                    VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  EXPECT_EQ("", capture.text());
}

TEST(Silence, IsKeptByTheReaderWithGoodAndBadFiles) {
  const test::TempDir directory;
  test::ClipOptions options;
  options.audio = true;
  const test::Clip clip = test::makeClip(directory.file("good.mp4"), options);
  const std::string bytes = test::readFile(clip.path);
  test::writeFile(directory.file("cut.mp4"), bytes.substr(0, bytes.size() / 2));
  test::writeFile(directory.file("text.mp4"), "no video");
  options.corrupted_packets = {3, 4, 5, 20};
  test::makeClip(directory.file("damaged.mkv"), options);
  const test::StderrCapture capture;
  for (const char* p_file : {"good.mp4", "cut.mp4", "text.mp4", "damaged.mkv", "missing.mp4"}) {
    VideoReader reader;
    try {
      reader.open(directory.file(p_file).c_str(), 5000, nullptr, false, true, false);
      test::readAll(reader);
    } catch (const Exception& exception) {
      EXPECT_EQ(ZO_STATUS_OPEN_ERROR, exception.status()) << p_file << ": " << exception.what();
    }
  }
  EXPECT_EQ("", capture.text());
}

}  // namespace
}  // namespace zo
