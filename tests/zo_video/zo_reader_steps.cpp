#include "zo_reader_steps.h"

#include <gtest/gtest.h>

#include <numeric>

#include "zo_test_picture.h"

namespace zo {
namespace test {

int openPlainly(VideoReader& reader, const std::string& url) {
  return reader.open(url.c_str(), -1, nullptr, false, false, false);
}

std::vector<Delivery> readAll(VideoReader& reader, std::size_t most) {
  std::vector<Delivery> deliveries;
  while (deliveries.size() < most) {
    const long long index_before = reader.frameIndex();
    Delivery delivery;
    bool got_frame = false;
    EXPECT_EQ(0, reader.read(delivery.frame, got_frame, nullptr));
    if (!got_frame) {
      EXPECT_EQ(index_before, reader.frameIndex());
      break;
    }
    delivery.index = reader.frameIndex();
    delivery.timestamp = delivery.frame.timestamp();
    EXPECT_EQ(reader.timestamp(), delivery.timestamp);
    EXPECT_EQ(index_before + 1, delivery.index);
    deliveries.push_back(delivery);
  }
  return deliveries;
}

std::vector<int> numbersOf(const std::vector<Delivery>& deliveries) {
  std::vector<int> numbers;
  for (const Delivery& delivery : deliveries) {
    numbers.push_back(delivery.frame.initialized() ? paintedNumber(delivery.frame) : -1);
  }
  return numbers;
}

std::vector<long long> timesOf(const std::vector<Delivery>& deliveries) {
  std::vector<long long> times;
  for (const Delivery& delivery : deliveries) {
    times.push_back(delivery.timestamp);
  }
  return times;
}

std::vector<int> countTo(int count) {
  std::vector<int> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

}  // namespace test
}  // namespace zo
