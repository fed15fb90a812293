// What is left behind when memory runs out.
#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <utility>

#include "zo_core/zo_core.h"
#include "zo_failing_memory.h"

namespace zo {
namespace {

using test::runsOutOfMemory;

TEST(OutOfMemory, IsSimulatedByThisProgram) {
  EXPECT_TRUE(runsOutOfMemory([] {
    void* volatile p_block = ::operator new(1);  // compilers leave out pairs of new and delete otherwise
    ::operator delete(p_block);
  }));
}

TEST(OutOfMemory, LeavesABufferAsItWas) {
  Buffer buffer("abc", 3);
  const unsigned char* p_data = buffer.data();
  EXPECT_TRUE(runsOutOfMemory([&] { buffer.resize(1000, true); }));
  EXPECT_TRUE(runsOutOfMemory([&] { buffer.resize(1000, false); }));
  EXPECT_EQ(3U, buffer.size());
  EXPECT_EQ(p_data, buffer.data());
  EXPECT_EQ('c', buffer.data()[2]);
}

TEST(OutOfMemory, DoesNotConcernABufferThatShrinks) {
  Buffer buffer("abc", 3);
  EXPECT_FALSE(runsOutOfMemory([&] { buffer.resize(2, true); }));
  EXPECT_EQ(2U, buffer.size());
}

TEST(OutOfMemory, LeavesTheTargetOfABufferAssignmentAsItWas) {
  const Buffer large("a longer text", 13);
  Buffer buffer("abc", 3);
  EXPECT_TRUE(runsOutOfMemory([&] { buffer = large; }));
  ASSERT_EQ(3U, buffer.size());
  EXPECT_EQ('c', buffer.data()[2]);
}

TEST(OutOfMemory, LeavesAFrameAsItWas) {
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), DeviceContext(), 0);
  frame.planeData(0)[3] = 42;
  const unsigned char* p_data = frame.planeData(0);
  EXPECT_TRUE(
      runsOutOfMemory([&] { frame.reuse(ZO_FRAME_FORMAT_BGR24, Size(400, 400), DeviceContext(), 0); }));
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(Size(4, 4), frame.size());
  EXPECT_EQ(p_data, frame.planeData(0));
  EXPECT_EQ(42, frame.planeData(0)[3]);
}

TEST(OutOfMemory, LeavesTheTargetOfAFrameCopyAsItWas) {
  Frame source;
  source.reuse(ZO_FRAME_FORMAT_BGR24, Size(400, 400), DeviceContext(), 0);
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), DeviceContext(), 0);
  frame.setTimestamp(6);
  EXPECT_TRUE(runsOutOfMemory([&] { source.copyTo(frame); }));
  EXPECT_EQ(ZO_FRAME_FORMAT_GRAY8, frame.format());
  EXPECT_EQ(6, frame.timestamp());
  EXPECT_TRUE(frame.initialized());
}

TEST(OutOfMemory, DoesNotConcernSharingAndMovingFrames) {
  Frame frame;
  frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), DeviceContext(), 0);
  EXPECT_FALSE(runsOutOfMemory([&] {
    Frame copy(frame);
    Frame moved(std::move(copy));
    moved.clear();
    frame.reuse(ZO_FRAME_FORMAT_GRAY8, Size(4, 3), DeviceContext(), 0);
  }));
}

TEST(OutOfMemory, DoesNotConcernExceptions) {
  const Exception inner(nullptr, ZO_STATUS_TIMEOUT, "f", "file", 1, "inner");
  Status status = ZO_STATUS_OK;
  std::size_t length = 0;
  bool has_previous = true;
  EXPECT_FALSE(runsOutOfMemory([&] {
    const Exception outer(&inner, ZO_STATUS_READ_ERROR, "g", "file", 2, "%s", "outer");
    const Exception copy(outer);
    status = copy.status();
    length = std::char_traits<char>::length(copy.what());
    has_previous = copy.previous() != nullptr;
  }));
  EXPECT_EQ(ZO_STATUS_READ_ERROR, status);
  EXPECT_EQ(5U, length);
  EXPECT_FALSE(has_previous);  // no memory to keep the wrapped one in
}

TEST(OutOfMemory, IsAStatusOfThePlainFunctions) {
  char message[100] = "";
  ZoFrame* p_frame = nullptr;
  int status = 0;
  EXPECT_FALSE(runsOutOfMemory([&] { status = zoFrame_create(&p_frame, message, sizeof(message)); }));
  EXPECT_EQ(ZO_STATUS_STD_EXCEPTION, status);
  EXPECT_EQ(nullptr, p_frame);
  EXPECT_EQ(std::string("zoFrame_create: caught standard exception: ") + std::bad_alloc().what(), message);
}

}  // namespace
}  // namespace zo
