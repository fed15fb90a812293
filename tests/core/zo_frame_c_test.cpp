#include "zo_core/zo_frame_c.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <new>

#include "zo_core/zo_frame.h"
#include "zo_test_support.h"

namespace {

using zo::Frame;
using zo::Size;

constexpr char SOURCE_FILE[] = "core/zo_frame_c";

struct Message {
  char text[200] = "untouched";
  static constexpr unsigned SIZE = sizeof(text);
};

// A record that is released at the end of the test.
class PlainFrame : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, zoFrame_create(&_p_frame, _message.text, Message::SIZE)); }
  void TearDown() override {
    EXPECT_EQ(0, zoFrame_release(&_p_frame));
    EXPECT_EQ(nullptr, _p_frame);
  }
  Frame& frame() { return *static_cast<Frame*>(_p_frame->p_handle); }

  ZoFrame* _p_frame = nullptr;
  Message _message;
};

void expectRecordOf(const Frame& frame, const ZoFrame& record) {
  EXPECT_EQ(static_cast<int>(frame.format()), static_cast<int>(record.format));
  EXPECT_EQ(frame.size().width, record.width);
  EXPECT_EQ(frame.size().height, record.height);
  EXPECT_EQ(static_cast<int>(frame.planeCount()), record.plane_count);
  for (unsigned i = 0; i < 4; ++i) {
    EXPECT_EQ(frame.planeData(i), record.p_planes[i]);
    EXPECT_EQ(frame.planeStride(i), record.strides[i]);
  }
  EXPECT_EQ(frame.timestamp(), record.timestamp);
}

TEST(ZoFrameRecord, HasItsHandleFirst) {
  EXPECT_EQ(0U, offsetof(ZoFrame, p_handle));
}

TEST_F(PlainFrame, IsEmptyWhenCreated) {
  EXPECT_NE(nullptr, _p_frame->p_handle);
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, _p_frame->format);
  EXPECT_EQ(0, _p_frame->width);
  EXPECT_EQ(0, _p_frame->height);
  EXPECT_EQ(0, _p_frame->plane_count);
  EXPECT_EQ(0, _p_frame->timestamp);
  expectRecordOf(Frame(), *_p_frame);
}

TEST_F(PlainFrame, IsReshapedByReuse) {
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_YUV420_PLANAR_I420, ZoSize{7, 5}, _message.text,
                             Message::SIZE));
  EXPECT_EQ(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, _p_frame->format);
  EXPECT_EQ(7, _p_frame->width);
  EXPECT_EQ(5, _p_frame->height);
  EXPECT_EQ(3, _p_frame->plane_count);
  EXPECT_NE(nullptr, _p_frame->p_planes[2]);
  EXPECT_EQ(nullptr, _p_frame->p_planes[3]);
  expectRecordOf(frame(), *_p_frame);
}

TEST_F(PlainFrame, HoldsNoPlanesAfterReuseWithoutALayout) {
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_BGR24, ZoSize{7, 5}, nullptr, 0));
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_CUSTOM_2, ZoSize{7, 5}, nullptr, 0));
  EXPECT_EQ(ZO_FRAME_FORMAT_CUSTOM_2, _p_frame->format);
  EXPECT_EQ(7, _p_frame->width);
  EXPECT_EQ(0, _p_frame->plane_count);
  EXPECT_EQ(nullptr, _p_frame->p_planes[0]);
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_BGR24, ZoSize{-1, 5}, nullptr, 0));
  EXPECT_EQ(-1, _p_frame->width);
  EXPECT_EQ(0, _p_frame->plane_count);
}

TEST_F(PlainFrame, KeepsItsMemoryAndTimestampAcrossReuse) {
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_BGR24, ZoSize{70, 50}, nullptr, 0));
  frame().setTimestamp(99);
  const unsigned char* p_plane = _p_frame->p_planes[0];
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_GRAY8, ZoSize{7, 5}, nullptr, 0));
  EXPECT_EQ(p_plane, _p_frame->p_planes[0]);
  EXPECT_EQ(99, _p_frame->timestamp);
}

TEST_F(PlainFrame, StaysAsItWasWhenReuseHasNoMemory) {
  ASSERT_EQ(0, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_GRAY8, ZoSize{7, 5}, nullptr, 0));
  const ZoFrame before = *_p_frame;
  EXPECT_EQ(ZO_STATUS_STD_EXCEPTION, zoFrame_reuse(_p_frame, ZO_FRAME_FORMAT_YUV444_PLANAR,
                                                   ZoSize{INT_MAX, INT_MAX}, _message.text, Message::SIZE));
  EXPECT_EQ(std::string("zoFrame_reuse: caught standard exception: ") + std::bad_alloc().what(),
            _message.text);
  expectRecordOf(frame(), before);
  expectRecordOf(frame(), *_p_frame);
}

TEST_F(PlainFrame, ShowsTheFrameBehindItAfterUpdate) {
  frame() = zo::test::makeNoiseFrame(zo::ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, Size(9, 4), 1);
  frame().setTimestamp(-7);
  EXPECT_EQ(0, _p_frame->plane_count);
  zo::updateFrame(_p_frame);
  EXPECT_EQ(2, _p_frame->plane_count);
  expectRecordOf(frame(), *_p_frame);
  frame().clear();
  zo::updateFrame(_p_frame);
  expectRecordOf(Frame(), *_p_frame);
}

TEST_F(PlainFrame, LeavesTheMessageAloneOnSuccess) {
  EXPECT_STREQ("untouched", _message.text);
}

TEST(PlainFrameErrors, NameTheNullPointer) {
  Message message;
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, message.text, Message::SIZE));
  EXPECT_STREQ("Parameter 'pp_frame' is null", message.text);
  EXPECT_EQ(ZO_STATUS_NULL_POINTER,
            zoFrame_reuse(nullptr, ZO_FRAME_FORMAT_GRAY8, ZoSize{1, 1}, message.text, Message::SIZE));
  EXPECT_STREQ("Parameter 'p_frame' is null", message.text);
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_release(nullptr));
}

TEST(PlainFrameErrors, NeedNoMessageBuffer) {
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, nullptr, 0));
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, nullptr, 10));
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_reuse(nullptr, ZO_FRAME_FORMAT_GRAY8, ZoSize{1, 1}, nullptr, 0));
}

TEST(PlainFrameErrors, NeverWriteBeyondTheMessageBuffer) {
  char text[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, text, 0));
  EXPECT_EQ('a', text[0]);
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, text, 1));
  EXPECT_EQ('\0', text[0]);
  EXPECT_EQ('b', text[1]);
  EXPECT_EQ(ZO_STATUS_NULL_POINTER, zoFrame_create(nullptr, text, 3));
  EXPECT_STREQ("Pa", text);
  EXPECT_EQ('d', text[3]);
}

TEST(PlainFrameErrors, TellARecordWithoutAFrame) {
  Message message;
  ZoFrame record = {};
  EXPECT_EQ(ZO_STATUS_NOT_INITIALIZED,
            zoFrame_reuse(&record, ZO_FRAME_FORMAT_GRAY8, ZoSize{1, 1}, message.text, Message::SIZE));
  EXPECT_STREQ("Underlying C++ object is not initialized.", message.text);
  EXPECT_EQ(ZO_FRAME_FORMAT_UNDEFINED, record.format);
}

TEST(PlainFrameErrors, AreExceptionsInUpdateFrame) {
  ZoFrame record = {};
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, zo::updateFrame(nullptr), zo::ZO_STATUS_NULL_POINTER,
                           "Parameter 'p_frame' is null", "updateFrame");
  EXPECT_ZO_EXCEPTION_FROM(SOURCE_FILE, zo::updateFrame(&record), zo::ZO_STATUS_NOT_INITIALIZED,
                           "Underlying C++ object is not initialized.", "updateFrame");
}

TEST(PlainFrameRelease, TakesANullRecord) {
  ZoFrame* p_frame = nullptr;
  EXPECT_EQ(0, zoFrame_release(&p_frame));
  EXPECT_EQ(nullptr, p_frame);
}

TEST(PlainFrameRelease, TakesARecordWithoutAFrame) {
  ZoFrame* p_frame = nullptr;
  ASSERT_EQ(0, zoFrame_create(&p_frame, nullptr, 0));
  delete static_cast<Frame*>(p_frame->p_handle);
  p_frame->p_handle = nullptr;
  EXPECT_EQ(0, zoFrame_release(&p_frame));
  EXPECT_EQ(nullptr, p_frame);
}

}  // namespace
