#include "zo_video/zo_jpeg_decoder.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <climits>
#include <new>
#include <random>
#include <string>
#include <tuple>

#include "zo_jpeg_test_support.h"
#include "zo_test_compare.h"
#include "zo_test_exception.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_turbojpeg_calls.h"
#include "zo_video/zo_jpeg_decoder_impl.h"

namespace zo {
namespace test {
namespace {

constexpr char FAILED[] = "Failed to decode frame. Error code -1";
constexpr char FILE_NAME[] = "src/zo_video/zo_jpeg_decoder";

void decodeInto(const Bytes& jpeg, Frame& frame) {
  JpegDecoder decoder;
  decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame);
}

Frame decode(const Bytes& jpeg) {
  Frame frame;
  decodeInto(jpeg, frame);
  return frame;
}

// The same data with so many pixels each way in its header.
Bytes claimSize(Bytes jpeg, unsigned side) {
  for (std::size_t at = 0; at + 9 < jpeg.size(); ++at) {
    if (jpeg[at] == 0xFF && jpeg[at + 1] == 0xC0) {
      jpeg[at + 5] = jpeg[at + 7] = static_cast<unsigned char>(side / 256);
      jpeg[at + 6] = jpeg[at + 8] = static_cast<unsigned char>(side % 256);
    }
  }
  return jpeg;
}

// The same data without the header's segments of one kind.
Bytes withoutSegments(const Bytes& jpeg, unsigned char marker) {
  Bytes rest(jpeg.begin(), jpeg.begin() + 2);
  std::size_t at = 2;
  while (jpeg.at(at + 1) != 0xDA) {
    const std::size_t length = 2 + std::size_t{jpeg.at(at + 2)} * 256 + jpeg.at(at + 3);
    if (jpeg[at + 1] != marker) {
      rest.insert(rest.end(), jpeg.begin() + static_cast<long>(at),
                  jpeg.begin() + static_cast<long>(at + length));
    }
    at += length;
  }
  rest.insert(rest.end(), jpeg.begin() + static_cast<long>(at), jpeg.end());
  return rest;
}

// The samples of the picture itself are those of the bare coder; what it pads is not looked at.
void expectPlane(const RawPlane& expected, const Frame& frame, unsigned plane) {
  for (unsigned y = 0; y < frame.planeRows(plane); ++y) {
    const unsigned char* p_row =
        frame.planeData(plane) + static_cast<std::size_t>(y) * frame.planeStride(plane);
    const auto expected_row = expected.bytes.begin() + static_cast<long>(y) * expected.width;
    ASSERT_EQ(Bytes(expected_row, expected_row + frame.planeRowBytes(plane)),
              Bytes(p_row, p_row + frame.planeRowBytes(plane)))
        << "plane " << plane << " row " << y;
  }
}

void expectPicture(const RawPicture& expected, const Frame& frame, unsigned cb_plane) {
  ASSERT_EQ(expected.size, frame.size());
  expectPlane(expected.planes[0], frame, 0);
  expectPlane(expected.planes[1], frame, cb_plane);
  expectPlane(expected.planes[2], frame, 3 - cb_plane);
}

// --- YCbCr
// --------------------------------------------------------------------------------------------------

struct YuvCase {
  int subsampling;
  FrameFormat format;
  unsigned cb_plane;
};

class JpegDecoderYuv : public testing::TestWithParam<std::tuple<YuvCase, Size>> {
 protected:
  const YuvCase& row() const { return std::get<0>(GetParam()); }
  Size size() const { return std::get<1>(GetParam()); }
  Bytes jpeg() const { return bareEncodeYuv(makeYuvPicture(size(), row().subsampling), 90); }
};

TEST_P(JpegDecoderYuv, GivesThePlanesOfTheBareCoder) {
  const Frame frame = decode(jpeg());
  EXPECT_EQ(row().format, frame.format());
  expectPicture(bareDecodeYuv(jpeg()), frame, row().cb_plane);
}

TEST_P(JpegDecoderYuv, StaysInsideMemoryOfTheCaller) {
  for (unsigned padding : {0U, 1U, 70U}) {
    GuardedFrame outside(row().format, size(), padding);
    decodeInto(jpeg(), outside.frame());
    ASSERT_EQ(outside.pixels(), outside.frame().planeData(0)) << "padding " << padding;
    expectPicture(bareDecodeYuv(jpeg()), outside.frame(), row().cb_plane);
    EXPECT_TRUE(outside.intact()) << "padding " << padding;
  }
}

TEST_P(JpegDecoderYuv, FillsAFrameWithTightRowsOfItsOwn) {
  Frame frame;
  frame.reuse(row().format, size(), DeviceContext(), 1);
  decodeInto(jpeg(), frame);
  expectPicture(bareDecodeYuv(jpeg()), frame, row().cb_plane);
}

INSTANTIATE_TEST_SUITE_P(
    Subsamplings, JpegDecoderYuv,
    testing::Combine(testing::Values(YuvCase{TJSAMP_444, ZO_FRAME_FORMAT_YUV444_PLANAR, 1},
                                     YuvCase{TJSAMP_422, ZO_FRAME_FORMAT_YUV422_PLANAR, 2},
                                     YuvCase{TJSAMP_420, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, 1}),
                     testing::Values(Size(1, 1), Size(2, 2), Size(3, 3), Size(17, 17), Size(16, 1),
                                     Size(1, 16), Size(15, 16), Size(16, 15), Size(63, 31), Size(64, 48),
                                     Size(129, 65))),
    [](const auto& i) {
      return shortName(std::get<0>(i.param).format) + "_" + shortName(std::get<1>(i.param));
    });

TEST(JpegDecoder, PutsCrIntoPlaneOneOfA422Picture) {
  const Frame frame = decode(bareEncodeYuv(makeYuvPicture(Size(32, 16), TJSAMP_422), 90));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV422_PLANAR, frame.format());
  EXPECT_GT(planeMean(frame, 1), 150);
  EXPECT_LT(planeMean(frame, 2), 80);
}

TEST(JpegDecoder, PutsCbIntoPlaneOneOfA420Picture) {
  const Frame frame = decode(bareEncodeYuv(makeYuvPicture(Size(32, 16), TJSAMP_420), 90));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
  EXPECT_LT(planeMean(frame, 1), 80);
  EXPECT_GT(planeMean(frame, 2), 150);
}

class JpegDecoderColourSpace : public testing::TestWithParam<int> {};

TEST_P(JpegDecoderColourSpace, IsRefusedWhenItIsUnknownAndTheFrameIsLeftAlone) {
  const Bytes jpeg = bareEncodeYuv(makeYuvPicture(Size(32, 16), TJSAMP_420), 90);
  const Frame before = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(9, 7), 3);
  Frame frame = before;
  JpegDecoder decoder;
  {
    TurboJpegAnswers answers;
    answers.setColourSpace(GetParam());
    EXPECT_ZO_EXCEPTION_FROM(FILE_NAME,
                             decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame),
                             ZO_STATUS_NOT_SUPPORTED, "Unsupported JPEG color space", "decode");
  }
  EXPECT_TRUE(samePixels(before, frame));
  decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
}

INSTANTIATE_TEST_SUITE_P(Values, JpegDecoderColourSpace, testing::Values(-1, 5, 99, INT_MAX));

TEST(JpegDecoder, ReadsProgressiveAndArithmeticCodedPictures) {
  for (int kind = 0; kind < 4; ++kind) {
    LibjpegOptions options;
    options.progressive = kind % 2 == 1;
    options.arithmetic = kind >= 2;
    const Bytes jpeg = libjpegEncode(Size(50, 31), options);
    expectPicture(bareDecodeYuv(jpeg), decode(jpeg), 1);
  }
}

TEST(JpegDecoder, DecodesIntoTheFrameOfTheLastPictureWithoutTouchingCopiesOfIt) {
  JpegDecoder decoder;
  Frame frame;
  const Bytes first = bareEncodeYuv(makeYuvPicture(Size(33, 33), TJSAMP_420), 90);
  const Bytes second = bareEncodeYuv(makeYuvPicture(Size(33, 33), TJSAMP_420), 20);
  decoder.decode(first.data(), static_cast<unsigned>(first.size()), frame);
  const Frame kept = frame;
  decoder.decode(second.data(), static_cast<unsigned>(second.size()), frame);
  expectPicture(bareDecodeYuv(first), kept, 1);
  expectPicture(bareDecodeYuv(second), frame, 1);
}

TEST(JpegDecoder, KeepsTheTimestampOfTheFrame) {
  for (bool outside : {false, true}) {
    GuardedFrame guarded(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, Size(17, 17));
    Frame own;
    Frame& frame = outside ? guarded.frame() : own;
    frame.setTimestamp(1234567890123LL);
    decodeInto(bareEncodeYuv(makeYuvPicture(Size(17, 17), TJSAMP_420), 90), frame);
    EXPECT_EQ(1234567890123LL, frame.timestamp());
  }
}

// --- Grey and colour in one plane
// -----------------------------------------------------------------------------

TEST(JpegDecoder, GivesAGreyPictureAsGrey) {
  LibjpegOptions options;
  options.colour_space = 1;
  for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5), Size(64, 48)}) {
    const Bytes jpeg = libjpegEncode(size, options);
    GuardedFrame outside(ZO_FRAME_FORMAT_GRAY8, size);
    decodeInto(jpeg, outside.frame());
    EXPECT_EQ(outside.pixels(), outside.frame().planeData(0));
    EXPECT_TRUE(outside.intact());
    const Bytes expected = bareDecodePacked(jpeg, TJPF_GRAY);
    EXPECT_EQ(expected, Bytes(outside.pixels(), outside.pixels() + expected.size())) << shortName(size);
    EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, decode(jpeg).format());
  }
}

TEST(JpegDecoder, GivesAnRgbPictureAsBgr) {
  LibjpegOptions options;
  options.colour_space = 2;
  for (Size size : {Size(1, 1), Size(3, 3), Size(17, 5), Size(64, 48)}) {
    const Bytes jpeg = libjpegEncode(size, options);
    GuardedFrame outside(ZO_FRAME_FORMAT_BGR24, size);
    decodeInto(jpeg, outside.frame());
    EXPECT_EQ(outside.pixels(), outside.frame().planeData(0));
    EXPECT_TRUE(outside.intact());
    const Bytes expected = bareDecodePacked(jpeg, TJPF_BGR);
    EXPECT_EQ(expected, Bytes(outside.pixels(), outside.pixels() + expected.size())) << shortName(size);
    EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, decode(jpeg).format());
  }
}

class JpegDecoderFourChannels : public testing::TestWithParam<int> {};

TEST_P(JpegDecoderFourChannels, ReportsWhatTheCoderSaysAboutThem) {
  LibjpegOptions options;
  options.colour_space = GetParam();
  options.horizontal = options.vertical = 1;
  const Bytes jpeg = libjpegEncode(Size(20, 10), options);
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 5), 1);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decodeInto(jpeg, frame), ZO_STATUS_CODEC_ERROR, FAILED,
                           "checkDecoderError");
  EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, frame.format());
  EXPECT_EQ(Size(20, 10), frame.size());
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegDecoderFourChannels, testing::Values(4, 5),
                         [](const auto& i) { return std::string(i.param == 4 ? "Cmyk" : "Ycck"); });

// --- Refusals
// -----------------------------------------------------------------------------------------------

class JpegDecoderSubsampling : public testing::TestWithParam<int> {};

TEST_P(JpegDecoderSubsampling, IsRefusedWhenNoFrameFormatHasIt) {
  const Bytes jpeg = bareEncodeYuv(makeYuvPicture(Size(32, 32), GetParam()), 90);
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 5), 1);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decodeInto(jpeg, frame), ZO_STATUS_NOT_SUPPORTED,
                           "Unsupported JPEG frame YUV sub-sampling", "decode_yuv");
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(Size(5, 5), frame.size());
}

// However little data there is for the claim: it would not be decoded if there were more.
TEST_P(JpegDecoderSubsampling, IsRefusedForEnormousPicturesAsWell) {
  const Bytes jpeg = claimSize(bareEncodeYuv(makeYuvPicture(Size(32, 32), GetParam()), 90), 65500);
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 5), 1);
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decodeInto(jpeg, frame), ZO_STATUS_NOT_SUPPORTED,
                           "Unsupported JPEG frame YUV sub-sampling", "decode_yuv");
  EXPECT_EQ(Size(5, 5), frame.size());
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegDecoderSubsampling, testing::Values(TJSAMP_440, TJSAMP_411),
                         [](const auto& i) { return std::string(i.param == TJSAMP_440 ? "440" : "411"); });

TEST(JpegDecoder, RefusesNoData) {
  JpegDecoder decoder;
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 5), 1);
  for (unsigned size : {0U, 10U, UINT_MAX}) {
    EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decoder.decode(nullptr, size, frame), ZO_STATUS_NULL_POINTER,
                             "Parameter 'p_buffer' is null.", "decode");
  }
  EXPECT_EQ(Size(5, 5), frame.size());
}

TEST(JpegDecoder, RefusesDataWithoutBytes) {
  const unsigned char byte = 0xFF;
  JpegDecoder decoder;
  Frame frame;
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, decoder.decode(&byte, 0, frame), ZO_STATUS_CODEC_ERROR, FAILED,
                           "checkDecoderError");
}

TEST(JpegDecoder, RefusesWhatIsNoJpeg) {
  for (const char* p_text :
       {"This is a text and no picture.", "\x89PNG\r\n\x1a\n", "P5 2 2 255 abcd", "\xFF\xD8"}) {
    const std::string text(p_text);
    Frame frame;
    EXPECT_ZO_EXCEPTION(decodeInto(Bytes(text.begin(), text.end()), frame), ZO_STATUS_CODEC_ERROR, FAILED,
                        "checkDecoderError")
        << text;
    EXPECT_FALSE(frame.initialized());
  }
}

TEST(JpegDecoder, ReportsThatItCannotBeSetUp) {
  EXPECT_ZO_EXCEPTION_FROM(FILE_NAME, JpegDecoder::Impl((TurboJpegDecompressorPtr())),
                           ZO_STATUS_OUT_OF_MEMORY, "Not enough memory to initialize JPEG decoder.", "Impl");
}

// --- Damage
// -------------------------------------------------------------------------------------------------

class JpegDecoderDamage : public testing::TestWithParam<int> {
 protected:
  static Bytes jpeg() {
    if (GetParam() == TJSAMP_GRAY) {
      LibjpegOptions options;
      options.colour_space = 1;
      return libjpegEncode(Size(19, 13), options);
    }
    return bareEncodeYuv(makeYuvPicture(Size(19, 13), GetParam()), 80);
  }

  // Success, or one of the two errors that damaged data may give; anything else fails the test.
  static void decodeOrFail(JpegDecoder& decoder, const Bytes& bytes, Frame& frame) {
    try {
      decoder.decode(bytes.data(), static_cast<unsigned>(bytes.size()), frame);
      EXPECT_TRUE(frame.initialized());
    } catch (const Exception& e) {
      EXPECT_TRUE(e.status() == ZO_STATUS_CODEC_ERROR || e.status() == ZO_STATUS_NOT_SUPPORTED) << e.what();
    } catch (const std::bad_alloc&) {
      // A header that promises more pixels than there is memory for.
    }
  }
};

TEST_P(JpegDecoderDamage, EveryShorterLengthIsTheDecodingError) {
  const Bytes whole = jpeg();
  JpegDecoder decoder;
  Frame frame;
  for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(length));
    const unsigned char nothing = 0;
    EXPECT_ZO_EXCEPTION(
        decoder.decode(length == 0 ? &nothing : cut.data(), static_cast<unsigned>(length), frame),
        ZO_STATUS_CODEC_ERROR, FAILED, "checkDecoderError")
        << "cut to " << length << " of " << whole.size();
  }
  decoder.decode(whole.data(), static_cast<unsigned>(whole.size()), frame);
  EXPECT_EQ(Size(19, 13), frame.size());
}

TEST_P(JpegDecoderDamage, ChangedBytesDecodeOrFailCleanly) {
  const Bytes whole = jpeg();
  std::mt19937 random(20240607);
  JpegDecoder decoder;
  for (int round = 0; round < 3000; ++round) {
    Bytes changed = whole;
    for (unsigned change = random() % 4 + 1; change > 0; --change) {
      changed[random() % changed.size()] = static_cast<unsigned char>(random());
    }
    Frame own;
    decodeOrFail(decoder, changed, own);
    const bool small = own.initialized() && own.size().width <= 500 && own.size().height <= 500;
    GuardedFrame outside(small ? own.format() : ZO_FRAME_FORMAT_GRAY8, small ? own.size() : Size(1, 1));
    decodeOrFail(decoder, changed, outside.frame());
    if (outside.frame().planeData(0) == outside.pixels()) {
      ASSERT_TRUE(outside.intact()) << "round " << round;
    }
  }
}

std::string subsamplingName(const testing::TestParamInfo<int>& info) {
  static const char* const NAMES[] = {"444", "422", "420", "Gray"};
  return NAMES[info.param];
}

INSTANTIATE_TEST_SUITE_P(Subsamplings, JpegDecoderDamage,
                         testing::Values(TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_GRAY), subsamplingName);

TEST(JpegDecoder, ReshapesTheFrameBeforeTheDamageShows) {
  const Bytes whole = bareEncodeYuv(makeYuvPicture(Size(64, 48), TJSAMP_420), 90);
  const Bytes cut(whole.begin(), whole.end() - 20);
  Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 5), 1);
  EXPECT_ZO_EXCEPTION(decodeInto(cut, frame), ZO_STATUS_CODEC_ERROR, FAILED, "checkDecoderError");
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
  EXPECT_EQ(Size(64, 48), frame.size());
}

TEST(JpegDecoder, RefusesASmallFileThatClaimsAnEnormousPictureWithoutMakingRoomForIt) {
  for (int subsampling : {TJSAMP_444, TJSAMP_422, TJSAMP_420}) {
    const Bytes jpeg = claimSize(bareEncodeYuv(makeYuvPicture(Size(16, 16), subsampling), 90), 65500);
    ASSERT_EQ(Size(65500, 65500), jpegHeader(jpeg).size);
    Frame frame;
    EXPECT_ZO_EXCEPTION(decodeInto(jpeg, frame), ZO_STATUS_CODEC_ERROR, FAILED, "checkDecoderError");
    EXPECT_FALSE(frame.initialized());
  }
}

// Arithmetic coding has no least size, but some claims are beyond reason.
TEST(JpegDecoder, RefusesAFewArithmeticallyCodedBytesThatClaimAnEnormousPicture) {
  for (const bool progressive : {false, true}) {
    LibjpegOptions options;
    options.arithmetic = true;
    options.progressive = progressive;
    options.flat = true;
    Bytes jpeg = libjpegEncode(Size(64, 64), options);
    for (std::size_t at = 0; at + 9 < jpeg.size(); ++at) {
      if (jpeg[at] == 0xFF && (jpeg[at + 1] == 0xC9 || jpeg[at + 1] == 0xCA)) {
        jpeg[at + 5] = jpeg[at + 7] = 65500 / 256;
        jpeg[at + 6] = jpeg[at + 8] = 65500 % 256;
      }
    }
    ASSERT_EQ(Size(65500, 65500), jpegHeader(jpeg).size);
    Frame frame;
    EXPECT_ZO_EXCEPTION(decodeInto(jpeg, frame), ZO_STATUS_CODEC_ERROR, FAILED, "checkDecoderError");
    EXPECT_FALSE(frame.initialized());
  }
}

struct LargeCase {
  const char* name;
  bool progressive;
  bool arithmetic;
  bool optimised;
};

// A flat picture is the least data that a picture of its size can have.
class JpegDecoderLargePicture : public testing::TestWithParam<LargeCase> {};

TEST_P(JpegDecoderLargePicture, IsDecodedHoweverLittleDataItHas) {
  LibjpegOptions options;
  options.progressive = GetParam().progressive;
  options.arithmetic = GetParam().arithmetic;
  options.optimised = GetParam().optimised;
  options.flat = true;
  for (int colour_space : {1, 3}) {
    options.colour_space = colour_space;
    const Size size(4200, 4100);
    EXPECT_EQ(size, decode(libjpegEncode(size, options)).size());
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegDecoderLargePicture,
                         testing::Values(LargeCase{"Sequential", false, false, false},
                                         LargeCase{"Optimised", false, false, true},
                                         LargeCase{"Progressive", true, false, true},
                                         LargeCase{"Arithmetic", false, true, false}),
                         CaseName());

// Many cameras leave out code tables, since everybody knows the usual ones; no tables are to be left over
// from the picture before.
struct TableCase {
  const char* name;
  unsigned char marker;
};

class JpegDecoderWithoutTables : public testing::TestWithParam<TableCase> {};

TEST_P(JpegDecoderWithoutTables, DoesTheSameWhateverWasDecodedBefore) {
  const Bytes whole = bareEncodeYuv(makeYuvPicture(Size(64, 48), TJSAMP_420), 90);
  const Bytes jpeg = withoutSegments(whole, GetParam().marker);
  ASSERT_LT(jpeg.size(), whole.size());
  Frame expected;
  bool refused = false;
  try {
    decodeInto(jpeg, expected);
  } catch (const Exception& e) {
    refused = true;
    EXPECT_EQ(ZO_STATUS_CODEC_ERROR, e.status());
  }
  LibjpegOptions options;
  options.optimised = true;
  options.quality = 30;
  const Bytes other = libjpegEncode(Size(64, 48), options);
  JpegDecoder decoder;
  Frame frame;
  for (int round = 0; round < 3; ++round) {
    decoder.decode(other.data(), static_cast<unsigned>(other.size()), frame);
    const auto decodeAgain = [&] { decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame); };
    if (refused) {
      EXPECT_ZO_EXCEPTION(decodeAgain(), ZO_STATUS_CODEC_ERROR, FAILED, "checkDecoderError");
    } else {
      decodeAgain();
      EXPECT_TRUE(samePixels(expected, frame));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegDecoderWithoutTables,
                         testing::Values(TableCase{"Codes", 0xC4}, TableCase{"Quantisation", 0xDB}),
                         CaseName());

TEST(JpegDecoder, ReportsThatItCannotBeSetUpForAFurtherPicture) {
  const Bytes jpeg = bareEncodeYuv(makeYuvPicture(Size(32, 16), TJSAMP_420), 90);
  JpegDecoder decoder;
  Frame frame;
  decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame);
  const Frame before = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(9, 7), 3);
  frame = before;
  {
    TurboJpegAnswers answers;
    answers.refuseInstances();
    EXPECT_ZO_EXCEPTION_FROM(
        FILE_NAME, decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame),
        ZO_STATUS_OUT_OF_MEMORY, "Not enough memory to initialize JPEG decoder.", "decode");
  }
  EXPECT_TRUE(samePixels(before, frame));
  decoder.decode(jpeg.data(), static_cast<unsigned>(jpeg.size()), frame);
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, frame.format());
}

TEST(JpegDecoder, GoesOnAfterAnyFailure) {
  JpegDecoder decoder;
  Frame frame;
  const Bytes good = bareEncodeYuv(makeYuvPicture(Size(31, 9), TJSAMP_422), 90);
  const Bytes unsupported = bareEncodeYuv(makeYuvPicture(Size(32, 32), TJSAMP_440), 90);
  for (const Bytes& bad : {Bytes(good.begin(), good.begin() + 50), Bytes(200, 0xFF), unsupported}) {
    EXPECT_THROW(decoder.decode(bad.data(), static_cast<unsigned>(bad.size()), frame), Exception);
    decoder.decode(good.data(), static_cast<unsigned>(good.size()), frame);
    expectPicture(bareDecodeYuv(good), frame, 2);
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
