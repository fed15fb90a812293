#ifndef ZO_TESTS_SUPPORT_ZO_TEST_COMPARE_H
#define ZO_TESTS_SUPPORT_ZO_TEST_COMPARE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_test_reference.h"

namespace zo {
namespace test {

/// The planes of a frame without row padding, and all of them in one piece.
std::vector<std::string> packedPlanes(const Frame& frame);
std::string packedBytes(const Frame& frame);

/// MD5 as 32 lower-case hexadecimal digits.
std::string md5Hex(const std::string& bytes);

/// Byte equality of all planes; a failure names the first difference. Formats are not compared with the
/// second form: a picture in a full-range "J" format equals the limited-range frame with the same bytes.
testing::AssertionResult samePixels(const Frame& expected, const Frame& actual);
testing::AssertionResult samePixels(const ReferencePicture& expected, const Frame& actual);

/// Peak signal-to-noise ratio in decibels over all planes; 1000 for equal ones. Throws std::invalid_argument
/// unless formats and sizes agree.
double psnr(const Frame& a, const Frame& b);

}  // namespace test
}  // namespace zo

#endif
