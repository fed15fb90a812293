// Clips that nobody here made, against figures that bare FFmpeg gave for them. Skipped without ZO_TEST_MEDIA.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "zo_reader_steps.h"
#include "zo_test_support.h"

namespace zo {
namespace {

using nlohmann::json;

std::vector<json> references() {
  std::vector<json> lines;
  std::ifstream stream(test::realMediaDir() + "/reference.jsonl");
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(json::parse(line));
  }
  return lines;
}

// Pixel formats that frames have too, by FFmpeg's name.
bool arrivesExactly(const std::string& pixel_format) {
  for (const char* p_name : {"yuv420p", "yuvj420p", "yuv422p", "yuvj422p", "yuv444p", "yuvj444p", "nv12",
                             "nv21", "rgb24", "bgr24", "gray", "yuyv422", "uyvy422"}) {
    if (pixel_format == p_name) {
      return true;
    }
  }
  return false;
}

// The figures were made with FFmpeg 5. Others may tell another rate of a still image, and conceal damage in
// another way.
bool figuresAreOfThisFfmpeg() {
  return avcodec_version() >> 16 == 59;
}

// FFmpeg's NEON code for JPEG rounds some samples differently; bare decoding in the same process tells all
// the same.
bool figuresAreOfThisProcessor(const json& reference) {
#ifdef __arm__
  return reference["codec"] != "mjpeg";
#else
  static_cast<void>(reference);
  return true;
#endif
}

bool isDamaged(const json& reference) {
  return reference["note"].get<std::string>().find("damaged") != std::string::npos;
}

AVRational rationalOf(const std::string& text) {
  const std::size_t slash = text.find('/');
  return AVRational{std::stoi(text), std::stoi(text.substr(slash + 1))};
}

std::string caseName(const testing::TestParamInfo<json>& test_case) {
  std::string name = test_case.param["file"];
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

class RealClips : public testing::TestWithParam<json> {
 protected:
  std::string path() const { return test::realMediaDir() + "/" + GetParam()["file"].get<std::string>(); }
  static void expectPicture(const json& reference, const test::ReferenceStream& bare, std::size_t index,
                            const test::Delivery& delivery, bool exact) {
    const json& time = reference["pts"][index];
    if (!time.is_null()) {
      EXPECT_EQ(test::timestampToMs(time, rationalOf(reference["time_base"])), delivery.timestamp);
    }
    if (!exact) {
      return;
    }
    ASSERT_TRUE(test::samePixels(bare.pictures[index], delivery.frame)) << "picture " << index;
    const bool same_digests =
        figuresAreOfThisProcessor(reference) && (figuresAreOfThisFfmpeg() || !isDamaged(reference));
    if (same_digests && reference["pictures_stable"] && index < reference["picture_md5"].size()) {
      ASSERT_EQ(reference["picture_md5"][index].get<std::string>(),
                test::md5Hex(test::packedBytes(delivery.frame)))
          << "picture " << index;
    }
  }
  bool hasVideo() const { return !GetParam()["best_stream"].is_null(); }
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealClips);

TEST_P(RealClips, AreToldAboutAsTheyAre) {
  const json& reference = GetParam();
  VideoReader reader;
  if (!hasVideo()) {
    EXPECT_THROW(test::openPlainly(reader, path()), Exception);
    return;
  }
  ASSERT_EQ(0, test::openPlainly(reader, path()));
  EXPECT_EQ(Size(reference["width"], reference["height"]), reader.size());
  const AVRational rate = rationalOf(reference["avg_frame_rate"]);
  if (figuresAreOfThisFfmpeg() || reference["pictures"] > 1) {
    EXPECT_DOUBLE_EQ(static_cast<double>(rate.num) / rate.den, reader.fps());
  }
  // Printed counter-clockwise in -180 to 180; the reader tells clockwise.
  const int counter_clockwise = reference["rotation"].is_null() ? 0 : reference["rotation"].get<int>();
  const int clockwise = ((-counter_clockwise % 360) + 360) % 360;
  EXPECT_EQ(clockwise / 90, static_cast<int>(reader.rotation()));
}

// The pictures and their times are those of the reference, in its order. Empty frames may stand between them,
// and pictures without any time may be missing: nothing tells those from pictures that were never decoded.
TEST_P(RealClips, DeliverThePicturesOfTheReference) {
  const json& reference = GetParam();
  if (!hasVideo()) {
    GTEST_SKIP() << "sound only";
  }
  const test::ReferenceStream bare = test::decodeReference(path());
  ASSERT_EQ(reference["pictures"].get<std::size_t>(), bare.pictures.size());
  const bool exact = arrivesExactly(reference["pix_fmt"]);
  VideoReader reader;
  ASSERT_EQ(0, reader.open(path().c_str(), -1, nullptr, false, true, false));
  std::size_t deliveries = 0;
  std::size_t next = 0;
  for (const test::Delivery& delivery : test::readAll(reader)) {
    ++deliveries;
    if (!delivery.frame.initialized()) {
      continue;
    }
    const auto untimed = [&] {
      return bare.pictures[next].best_effort_timestamp == AV_NOPTS_VALUE &&
             !test::samePixels(bare.pictures[next], delivery.frame);
    };
    while (next < bare.pictures.size() && untimed()) {
      ++next;
    }
    ASSERT_LT(next, bare.pictures.size());
    expectPicture(reference, bare, next, delivery, exact);
    ++next;
  }
  while (next < bare.pictures.size() && bare.pictures[next].best_effort_timestamp == AV_NOPTS_VALUE) {
    ++next;
  }
  EXPECT_EQ(bare.pictures.size(), next);
  EXPECT_GE(deliveries, reference["video_packets"].get<std::size_t>());
}

INSTANTIATE_TEST_SUITE_P(Reference, RealClips, testing::ValuesIn(references()), caseName);

TEST(RealClipsFolder, HasReferenceFigures) {
  if (test::realMediaDir().empty()) {
    GTEST_SKIP() << "ZO_TEST_MEDIA names no folder with clips";
  }
  EXPECT_GT(references().size(), 10U);
}

}  // namespace
}  // namespace zo
