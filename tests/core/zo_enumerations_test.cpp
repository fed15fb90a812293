#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "zo_core/zo_core.h"

namespace zo {
namespace {

template <class Enumeration>
constexpr bool isInt32() {
  return std::is_same<std::underlying_type_t<Enumeration>, int32_t>::value &&
         std::is_convertible<Enumeration, int>::value;  // unscoped
}
static_assert(isInt32<Status>() && isInt32<FrameFormat>(), "32 bits, unscoped");
static_assert(isInt32<::ZoStatus>() && isInt32<::ZoFrameFormat>(), "32 bits, unscoped");

TEST(StatusTest, HasTheNumbersThatCallersCompileIn) {
  EXPECT_EQ(0, ZO_STATUS_OK);
  EXPECT_EQ(1, ZO_STATUS_UNKNOWN_ERROR);
  EXPECT_EQ(2, ZO_STATUS_INTERNAL_ERROR);
  EXPECT_EQ(3, ZO_STATUS_STD_EXCEPTION);
  EXPECT_EQ(4, ZO_STATUS_NULL_POINTER);
  EXPECT_EQ(5, ZO_STATUS_OUT_OF_RANGE);
  EXPECT_EQ(6, ZO_STATUS_INVALID_ARGUMENT);
  EXPECT_EQ(7, ZO_STATUS_NOT_INITIALIZED);
  EXPECT_EQ(8, ZO_STATUS_NOT_SUPPORTED);
  EXPECT_EQ(10, ZO_STATUS_INVALID_STATE);
  EXPECT_EQ(11, ZO_STATUS_NOT_ALLOWED);
  EXPECT_EQ(12, ZO_STATUS_UNEXPECTED_RESULT);
  EXPECT_EQ(13, ZO_STATUS_TIMEOUT);
  EXPECT_EQ(18, ZO_STATUS_OUT_OF_MEMORY);
  EXPECT_EQ(20, ZO_STATUS_OPEN_ERROR);
  EXPECT_EQ(21, ZO_STATUS_READ_ERROR);
  EXPECT_EQ(22, ZO_STATUS_WRITE_ERROR);
  EXPECT_EQ(23, ZO_STATUS_SEEK_ERROR);
  EXPECT_EQ(24, ZO_STATUS_NOT_OPENED);
  EXPECT_EQ(27, ZO_STATUS_DECODER_ERROR);
  EXPECT_EQ(28, ZO_STATUS_CODEC_ERROR);
}

TEST(StatusTest, HasTheSameNumbersForPlainFunctions) {
#define ZO_SAME(name) EXPECT_EQ(static_cast<int>(zo::name), static_cast<int>(::name)) << #name
  ZO_SAME(ZO_STATUS_OK);
  ZO_SAME(ZO_STATUS_UNKNOWN_ERROR);
  ZO_SAME(ZO_STATUS_INTERNAL_ERROR);
  ZO_SAME(ZO_STATUS_STD_EXCEPTION);
  ZO_SAME(ZO_STATUS_NULL_POINTER);
  ZO_SAME(ZO_STATUS_OUT_OF_RANGE);
  ZO_SAME(ZO_STATUS_INVALID_ARGUMENT);
  ZO_SAME(ZO_STATUS_NOT_INITIALIZED);
  ZO_SAME(ZO_STATUS_NOT_SUPPORTED);
  ZO_SAME(ZO_STATUS_INVALID_STATE);
  ZO_SAME(ZO_STATUS_NOT_ALLOWED);
  ZO_SAME(ZO_STATUS_UNEXPECTED_RESULT);
  ZO_SAME(ZO_STATUS_TIMEOUT);
  ZO_SAME(ZO_STATUS_OUT_OF_MEMORY);
  ZO_SAME(ZO_STATUS_OPEN_ERROR);
  ZO_SAME(ZO_STATUS_READ_ERROR);
  ZO_SAME(ZO_STATUS_WRITE_ERROR);
  ZO_SAME(ZO_STATUS_SEEK_ERROR);
  ZO_SAME(ZO_STATUS_NOT_OPENED);
  ZO_SAME(ZO_STATUS_DECODER_ERROR);
  ZO_SAME(ZO_STATUS_CODEC_ERROR);
#undef ZO_SAME
}

struct NamedFormat {
  int value;
  int enumerator;
  int plain_enumerator;
  const char* name;
};

#define ZO_FORMAT(value, name) \
  { value, zo::name, ::name, #name }
const NamedFormat FORMATS[] = {
    ZO_FORMAT(0, ZO_FRAME_FORMAT_UNDEFINED),
    ZO_FORMAT(1, ZO_FRAME_FORMAT_GRAY8),
    ZO_FORMAT(2, ZO_FRAME_FORMAT_RGB24),
    ZO_FORMAT(3, ZO_FRAME_FORMAT_RESERVED_3),
    ZO_FORMAT(4, ZO_FRAME_FORMAT_BGR24),
    ZO_FORMAT(5, ZO_FRAME_FORMAT_RESERVED_5),
    ZO_FORMAT(6, ZO_FRAME_FORMAT_YUV420_PLANAR_I420),
    ZO_FORMAT(7, ZO_FRAME_FORMAT_YUV420_PLANAR_YV12),
    ZO_FORMAT(8, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12),
    ZO_FORMAT(9, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV21),
    ZO_FORMAT(10, ZO_FRAME_FORMAT_YUV422_PLANAR),
    ZO_FORMAT(11, ZO_FRAME_FORMAT_YUV422_PACKED_YUY2),
    ZO_FORMAT(12, ZO_FRAME_FORMAT_YUV422_PACKED_UYVY),
    ZO_FORMAT(13, ZO_FRAME_FORMAT_YUV422_SEMIPLANAR_NV16),
    ZO_FORMAT(14, ZO_FRAME_FORMAT_YUV444_PACKED_IYU2),
    ZO_FORMAT(15, ZO_FRAME_FORMAT_YUV444_PLANAR),
    ZO_FORMAT(16, ZO_FRAME_FORMAT_CUSTOM_1),
    ZO_FORMAT(17, ZO_FRAME_FORMAT_RESERVED_17),
    ZO_FORMAT(18, ZO_FRAME_FORMAT_RESERVED_18),
    ZO_FORMAT(19, ZO_FRAME_FORMAT_CUSTOM_2),
    ZO_FORMAT(20, ZO_FRAME_FORMAT_CUSTOM_3),
};
#undef ZO_FORMAT

class FrameFormats : public testing::TestWithParam<NamedFormat> {};

TEST_P(FrameFormats, HaveTheNumberThatCallersCompileIn) {
  EXPECT_EQ(GetParam().value, GetParam().enumerator);
  EXPECT_EQ(GetParam().value, GetParam().plain_enumerator);
}

TEST_P(FrameFormats, AreNamedAsTheirEnumerators) {
  EXPECT_STREQ(GetParam().name, toString(static_cast<FrameFormat>(GetParam().value)));
}

INSTANTIATE_TEST_SUITE_P(All, FrameFormats, testing::ValuesIn(FORMATS),
                         [](const auto& test_case) { return std::string(test_case.param.name); });

class AnyFormatValue : public testing::TestWithParam<int> {};

TEST_P(AnyFormatValue, PassesBetweenTheTwoEnumerationsUnchanged) {
  const int value = GetParam();
  EXPECT_EQ(value, static_cast<int>(toFrameFormat(static_cast<ZoFrameFormat>(value))));
  EXPECT_EQ(value, static_cast<int>(toZoFrameFormat(static_cast<FrameFormat>(value))));
}

INSTANTIATE_TEST_SUITE_P(Known, AnyFormatValue, testing::Range(0, 21));
INSTANTIATE_TEST_SUITE_P(Unknown, AnyFormatValue, testing::Values(-2147483647 - 1, -1, 21, 100, 2147483647));

TEST(FrameFormatTest, HasOneFixedTextForAllUnknownValues) {
  for (const int value : {-2147483647 - 1, -1, 21, 22, 100, 2147483647}) {
    EXPECT_STREQ("ZO_FRAME_FORMAT_UNKNOWN", toString(static_cast<FrameFormat>(value))) << value;
  }
}

}  // namespace
}  // namespace zo
