#include "zo_core/zo_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

namespace zo {
namespace {

std::string text(const Buffer& buffer) {
  return buffer.size() == 0 ? std::string()
                            : std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size());
}

TEST(BufferTest, IsEmptyByDefault) {
  const Buffer buffer;
  EXPECT_EQ(0U, buffer.size());
  EXPECT_EQ(nullptr, buffer.data());
}

TEST(BufferTest, CopiesTheBytesItIsMadeFrom) {
  char source[] = "abc";
  const Buffer buffer(source, 3);
  source[0] = 'X';
  EXPECT_EQ("abc", text(buffer));
}

TEST(BufferTest, CanBeMadeFromNothing) {
  EXPECT_EQ(0U, Buffer(nullptr, 0).size());
  EXPECT_EQ(0U, Buffer("abc", 0).size());
}

TEST(BufferTest, KeepsTheOldBytesOnRequestWhenItGrows) {
  Buffer buffer("abc", 3);
  buffer.resize(1000, true);
  EXPECT_EQ(1000U, buffer.size());
  EXPECT_EQ("abc", text(buffer).substr(0, 3));
}

TEST(BufferTest, KeepsTheOldBytesOnRequestWhenItShrinks) {
  Buffer buffer("abcdef", 6);
  buffer.resize(2, true);
  EXPECT_EQ("ab", text(buffer));
}

TEST(BufferTest, HasTheRequestedSizeWithoutKeeping) {
  Buffer buffer("abc", 3);
  buffer.resize(70000, false);
  ASSERT_EQ(70000U, buffer.size());
  std::memset(buffer.data(), 7, 70000);
  EXPECT_EQ(7, buffer.data()[69999]);
}

TEST(BufferTest, DoesNotAllocateAgainWithinWhatItOnceHeld) {
  Buffer buffer;
  buffer.resize(100, false);
  const unsigned char* p_data = buffer.data();
  buffer.resize(10, false);
  EXPECT_EQ(p_data, buffer.data());
  buffer.resize(100, false);
  EXPECT_EQ(p_data, buffer.data());
  buffer.clear();
  EXPECT_EQ(0U, buffer.size());
  buffer.resize(99, false);
  EXPECT_EQ(p_data, buffer.data());
}

TEST(BufferTest, AllocatesForOneByteMoreThanItHolds) {
  Buffer buffer("abc", 3);
  const auto* const p_before = buffer.data();
  buffer.resize(4, true);
  EXPECT_NE(p_before, buffer.data());
  EXPECT_EQ("abc", text(buffer).substr(0, 3));
}

TEST(BufferTest, CanBeFilledAgainAfterItWasMovedFrom) {
  Buffer constructed_from("abc", 3);
  Buffer assigned_from(std::move(constructed_from));
  Buffer target;
  target = std::move(assigned_from);
  EXPECT_EQ("abc", text(target));
  for (Buffer* p_buffer : {&constructed_from, &assigned_from}) {  // NOLINT(bugprone-use-after-move)
    p_buffer->resize(2, false);
    ASSERT_NE(nullptr, p_buffer->data());
    std::memcpy(p_buffer->data(), "xy", 2);
    EXPECT_EQ("xy", text(*p_buffer));
  }
}

TEST(BufferTest, IsEmptyAfterClear) {
  Buffer buffer("abc", 3);
  buffer.clear();
  EXPECT_EQ(0U, buffer.size());
  buffer.clear();
  EXPECT_EQ(0U, buffer.size());
}

TEST(BufferTest, CopiesDeeply) {
  const Buffer original("abc", 3);
  Buffer copy(original);
  copy.data()[0] = 'X';
  EXPECT_EQ("abc", text(original));
  EXPECT_EQ("Xbc", text(copy));
  Buffer assigned("a longer text", 13);
  assigned = original;
  EXPECT_EQ("abc", text(assigned));
  const Buffer& same = assigned;
  assigned = same;
  EXPECT_EQ("abc", text(assigned));
  const Buffer empty;
  assigned = empty;
  EXPECT_EQ(0U, assigned.size());
}

TEST(BufferTest, MovesItsBytes) {
  Buffer original("abc", 3);
  const unsigned char* p_data = original.data();
  Buffer moved(std::move(original));
  EXPECT_EQ(p_data, moved.data());
  EXPECT_EQ("abc", text(moved));
  EXPECT_EQ(0U, original.size());  // NOLINT(bugprone-use-after-move): that is what is tested
  original = std::move(moved);
  EXPECT_EQ("abc", text(original));
  original.resize(4, true);
  EXPECT_EQ("abc", text(original).substr(0, 3));
}

}  // namespace
}  // namespace zo
