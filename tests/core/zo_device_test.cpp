#include "zo_core/zo_device.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace zo {
namespace {

struct Released {
  explicit Released(bool& released_) : released(released_) {}
  void operator()(unsigned char* p_memory) const {
    released = true;
    delete[] p_memory;
  }
  bool& released;
};

TEST(DevicePtrTest, HoldsNothingByDefault) {
  EXPECT_EQ(nullptr, DevicePtr().get());
}

TEST(DevicePtrTest, PointsAtMemoryThatSomebodyElseOwns) {
  unsigned char memory[4] = {};
  const DevicePtr pointer(static_cast<void*>(memory));
  EXPECT_EQ(memory, pointer.get());
  const DevicePtr copy(pointer);
  EXPECT_EQ(memory, copy.get());
}

TEST(DevicePtrTest, FreesOwnedMemoryWithTheLastCopy) {
  bool released = false;
  auto* p_memory = new unsigned char[4];
  {
    DevicePtr first(std::shared_ptr<void>(
        p_memory, [&released](void* p_bytes) { Released{released}(static_cast<unsigned char*>(p_bytes)); }));
    EXPECT_EQ(p_memory, first.get());
    DevicePtr second(first);
    DevicePtr third;
    third = second;
    first = DevicePtr();
    second = DevicePtr();
    EXPECT_FALSE(released);
    EXPECT_EQ(p_memory, third.get());
  }
  EXPECT_TRUE(released);
}

TEST(DevicePtrTest, IsEmptyAfterItWasMovedFrom) {
  unsigned char memory[4] = {};
  DevicePtr first(static_cast<void*>(memory));
  DevicePtr second(std::move(first));
  EXPECT_EQ(memory, second.get());
  EXPECT_EQ(nullptr, first.get());  // NOLINT(bugprone-use-after-move): that is what is tested
  first = std::move(second);
  EXPECT_EQ(memory, first.get());
  EXPECT_EQ(nullptr, second.get());  // NOLINT(bugprone-use-after-move)
}

}  // namespace
}  // namespace zo
