#include "zo_test_compare.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

extern "C" {
#include <libavutil/md5.h>
}

namespace zo {
namespace test {
namespace {

testing::AssertionResult samePlanes(const std::vector<std::string>& expected,
                                    const std::vector<std::string>& actual) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure()
           << actual.size() << " planes where " << expected.size() << " were expected";
  }
  for (std::size_t plane = 0; plane < expected.size(); ++plane) {
    if (expected[plane].size() != actual[plane].size()) {
      return testing::AssertionFailure() << "plane " << plane << " has " << actual[plane].size()
                                         << " bytes where " << expected[plane].size() << " were expected";
    }
    const auto difference =
        std::mismatch(expected[plane].begin(), expected[plane].end(), actual[plane].begin());
    if (difference.first != expected[plane].end()) {
      return testing::AssertionFailure()
             << "plane " << plane << " differs first at byte " << difference.first - expected[plane].begin()
             << ": " << static_cast<int>(static_cast<unsigned char>(*difference.second)) << " where "
             << static_cast<int>(static_cast<unsigned char>(*difference.first)) << " was expected";
    }
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult sameSize(Size expected, Size actual) {
  if (expected == actual) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << actual.width << " x " << actual.height << " pixels where "
                                     << expected.width << " x " << expected.height << " were expected";
}

}  // namespace

std::vector<std::string> packedPlanes(const Frame& frame) {
  std::vector<std::string> planes;
  for (unsigned plane = 0; plane < frame.planeCount(); ++plane) {
    std::string bytes;
    const unsigned char* p_row = frame.planeData(plane);
    for (unsigned row = 0; row < frame.planeRows(plane); ++row, p_row += frame.planeStride(plane)) {
      bytes.append(reinterpret_cast<const char*>(p_row), frame.planeRowBytes(plane));
    }
    planes.push_back(std::move(bytes));
  }
  return planes;
}

std::string packedBytes(const Frame& frame) {
  std::string all;
  for (const std::string& plane : packedPlanes(frame)) {
    all += plane;
  }
  return all;
}

std::string md5Hex(const std::string& bytes) {
  uint8_t digest[16];
  av_md5_sum(digest, reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<int>(bytes.size()));
  static const char DIGITS[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : digest) {
    text += DIGITS[byte >> 4];
    text += DIGITS[byte & 15];
  }
  return text;
}

testing::AssertionResult samePixels(const Frame& expected, const Frame& actual) {
  if (expected.format() != actual.format()) {
    return testing::AssertionFailure()
           << toString(actual.format()) << " where " << toString(expected.format()) << " was expected";
  }
  const testing::AssertionResult size = sameSize(expected.size(), actual.size());
  return size ? samePlanes(packedPlanes(expected), packedPlanes(actual)) : size;
}

testing::AssertionResult samePixels(const ReferencePicture& expected, const Frame& actual) {
  const testing::AssertionResult size = sameSize(Size(expected.width, expected.height), actual.size());
  return size ? samePlanes(expected.planes, packedPlanes(actual)) : size;
}

double psnr(const Frame& a, const Frame& b) {
  const std::string bytes_a = packedBytes(a);
  const std::string bytes_b = packedBytes(b);
  if (a.format() != b.format() || a.size() != b.size() || bytes_a.empty()) {
    throw std::invalid_argument("frames that cannot be compared");
  }
  double sum = 0;
  for (std::size_t i = 0; i < bytes_a.size(); ++i) {
    const double difference = static_cast<double>(static_cast<unsigned char>(bytes_a[i])) -
                              static_cast<double>(static_cast<unsigned char>(bytes_b[i]));
    sum += difference * difference;
  }
  return sum == 0 ? 1000.0 : 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(bytes_a.size()) / sum);
}

}  // namespace test
}  // namespace zo
