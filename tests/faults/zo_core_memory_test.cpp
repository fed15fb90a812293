// Every request for memory of buffers, frames, exceptions and the plain functions for frames fails in turn.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zo_core/zo_core.h"
#include "zo_fault_trials.h"
#include "zo_test_support.h"

namespace zo {
namespace test {
namespace {

class CoreMemory : public testing::TestWithParam<Requests> {
 protected:
  static void failEach(const std::string& what, const std::vector<int>& allowed,
                       const std::function<Trial()>& prepare) {
    failEachRequest("no memory: " + what, GetParam(), allowed, prepare);
  }
};

// What a buffer is seen to be; only compared while nothing fails.
struct BufferState {
  explicit BufferState(const Buffer& buffer)
      : p_data(buffer.data()), bytes(reinterpret_cast<const char*>(buffer.data()), buffer.size()) {}
  bool operator==(const BufferState& other) const { return p_data == other.p_data && bytes == other.bytes; }

  const unsigned char* p_data;
  std::string bytes;
};

TEST_P(CoreMemory, FailsForNewBuffers) {
  failEach("buffer: constructors", {Ending::BAD_ALLOC}, [] {
    const auto p_source = std::make_shared<Buffer>("abc", 3);
    const BufferState before(*p_source);
    const auto run = [p_source] {
      const Buffer made("a longer text", 13);
      const Buffer copy(*p_source);  // NOLINT(performance-unnecessary-copy-initialization)
    };
    const auto check = [run, p_source, before](bool) {
      EXPECT_TRUE(before == BufferState(*p_source));
      EXPECT_NO_THROW(run());
    };
    return Trial{run, check};
  });
}

struct BufferCase {
  const char* name;
  void (*change)(Buffer& buffer);
};

TEST_P(CoreMemory, LeavesABufferAsItWas) {
  for (const BufferCase& c :
       {BufferCase{"buffer: resize", [](Buffer& buffer) { buffer.resize(1000, true); }},
        BufferCase{"buffer: resize", [](Buffer& buffer) { buffer.resize(1000, false); }},
        BufferCase{"buffer: assignment", [](Buffer& buffer) {
                     static const Buffer LONGER("a longer text", 13);
                     buffer = LONGER;
                   }}}) {
    failEach(c.name, {Ending::BAD_ALLOC}, [c] {
      const auto p_buffer = std::make_shared<Buffer>("abc", 3);
      const BufferState before(*p_buffer);
      const auto check = [c, p_buffer, before](bool reported) {
        if (reported) {
          EXPECT_TRUE(before == BufferState(*p_buffer));
          c.change(*p_buffer);
        }
        EXPECT_LT(3U, p_buffer->size());
      };
      return Trial{[c, p_buffer] { c.change(*p_buffer); }, check};
    });
  }
}

struct FrameCase {
  const char* name;
  std::function<void(Frame& frame)> change;
};

// A frame of its own memory, one that shares it, and one over outside memory.
TEST_P(CoreMemory, LeavesAFrameAsItWas) {
  const Frame other = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
  struct Objects {
    std::array<unsigned char, 16> pixels{{1, 2, 3, 4, 5, 6, 7, 8}};
    Frame own = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), 3);
    Frame shared = own;
    Frame outside{FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), {{4, 0, 0, 0}}), DeviceContext(),
                  DevicePtr(static_cast<void*>(pixels.data()))};
    Frame empty;
  };
  const FrameCase cases[] = {
      {"frame: reuse",
       [](Frame& frame) { frame.reuse(ZO_FRAME_FORMAT_BGR24, Size(33, 17), DeviceContext(), 0); }},
      {"frame: copyTo", [&other](Frame& frame) { other.copyTo(frame); }},
  };
  for (const FrameCase& c : cases) {
    for (Frame Objects::*p_member : {&Objects::own, &Objects::outside, &Objects::empty}) {
      failEach(c.name, {Ending::BAD_ALLOC}, [&, p_member] {
        const auto p_objects = std::make_shared<Objects>();
        Frame* const p_frame = &((*p_objects).*p_member);
        p_frame->setTimestamp(40);
        const std::uint64_t before = digest(*p_frame);
        const unsigned char* const p_data = p_frame->planeData(0);
        const std::uint64_t shared = digest(p_objects->shared);
        const auto check = [=, &c](bool reported) {
          EXPECT_EQ(shared, digest(p_objects->shared));
          if (reported) {
            EXPECT_EQ(before, digest(*p_frame));
            EXPECT_EQ(p_data, p_frame->planeData(0));
            EXPECT_EQ(40, p_frame->timestamp());
            c.change(*p_frame);
          }
          EXPECT_EQ(ZO_FRAME_FORMAT_BGR24, p_frame->format());
          EXPECT_EQ(Size(33, 17), p_frame->size());
        };
        return Trial{[p_objects, p_frame, &c] { c.change(*p_frame); }, check};
      });
    }
  }
}

// Memory of which the frame takes the last handle is not lost.
TEST_P(CoreMemory, FailsForFramesOverOutsideMemory) {
  failEach("frame: constructor over outside memory", {Ending::BAD_ALLOC}, [] {
    const auto p_pixels = std::make_shared<std::array<unsigned char, 16>>();
    const auto run = [p_pixels] {
      const Frame frame(FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), {{4, 0, 0, 0}}), DeviceContext(),
                        DevicePtr(std::shared_ptr<void>(p_pixels)));
      if (!frame.initialized()) {
        throw Exception(nullptr, ZO_STATUS_INTERNAL_ERROR, "", "", 0, "no planes");
      }
    };
    const std::weak_ptr<void> users = p_pixels;
    const auto check = [run, users](bool) {
      EXPECT_NO_THROW(run());
      EXPECT_EQ(2, users.use_count()) << "those of the trial's two steps";
    };
    return Trial{run, check};
  });
}

// Throwing and copying never fail: what an exception wraps is left out instead.
TEST_P(CoreMemory, DoesNotConcernExceptions) {
  const Exception cause(nullptr, ZO_STATUS_OPEN_ERROR, "first", "", 1, "the cause");
  failEach("exceptions", {}, [&cause] {
    const auto p_kept = std::make_shared<Exception>();
    const auto run = [&cause, p_kept] {
      const Exception wrapping(&cause, ZO_STATUS_READ_ERROR, "second", "", 2, "wraps %d", 1);
      *p_kept = wrapping;
    };
    const auto check = [p_kept](bool) {
      EXPECT_EQ(ZO_STATUS_READ_ERROR, p_kept->status());
      EXPECT_STREQ("wraps 1", p_kept->what());
      if (p_kept->previous() != nullptr) {
        EXPECT_STREQ("the cause", p_kept->previous()->what());
      }
    };
    return Trial{run, check};
  });
}

TEST_P(CoreMemory, FailsForFileExtensions) {
  const std::string path = "folder/name." + std::string(100, 'x');
  failEach("fileExtension", {Ending::BAD_ALLOC}, [&path] {
    const auto p_extension = std::make_shared<std::string>();
    const auto run = [&path, p_extension] { *p_extension = fileExtension(path); };
    const auto check = [run, p_extension](bool reported) {
      if (reported) {
        EXPECT_EQ("", *p_extension);
        run();
      }
      EXPECT_EQ(101U, p_extension->size());
    };
    return Trial{run, check};
  });
}

// --- Plain functions -------------------------------------------------------------------------------------

// Owns a plain frame; a status other than 0 is thrown on, so that the trials see it.
struct PlainFrame {
  PlainFrame() = default;
  PlainFrame(const PlainFrame&) = delete;
  PlainFrame& operator=(const PlainFrame&) = delete;
  ~PlainFrame() { EXPECT_EQ(::ZO_STATUS_OK, zoFrame_release(&p_frame)); }

  void require(int status) const {
    if (status != ::ZO_STATUS_OK) {
      throw Exception(nullptr, static_cast<Status>(status), "plain function", "", 0, "%s", message.data());
    }
  }
  void create() { require(zoFrame_create(&p_frame, message.data(), messageSize())); }
  void reuse(ZoSize size) {
    require(zoFrame_reuse(p_frame, ::ZO_FRAME_FORMAT_BGR24, size, message.data(), messageSize()));
  }
  unsigned messageSize() const { return static_cast<unsigned>(message.size()); }
  Frame& frame() const { return *static_cast<Frame*>(p_frame->p_handle); }

  ZoFrame* p_frame = nullptr;
  std::array<char, 256> message{};
};

TEST_P(CoreMemory, FailsForNewPlainFrames) {
  failEach("zoFrame_create, zoFrame_release", {ZO_STATUS_STD_EXCEPTION}, [] {
    const auto p_plain = std::make_shared<PlainFrame>();
    const auto run = [p_plain] {
      p_plain->create();
      p_plain->require(zoFrame_release(&p_plain->p_frame));
    };
    const auto check = [p_plain](bool reported) {
      EXPECT_EQ(nullptr, p_plain->p_frame);
      if (reported) {
        EXPECT_EQ("zoFrame_create: caught standard exception: std::bad_alloc",
                  std::string(p_plain->message.data()));
      }
      EXPECT_NO_THROW(p_plain->create());
      EXPECT_EQ(0, p_plain->p_frame->plane_count);
    };
    return Trial{run, check};
  });
}

// Frame and record stay as they were.
TEST_P(CoreMemory, FailsForReshapingPlainFrames) {
  for (const bool filled : {false, true}) {
    failEach("zoFrame_reuse", {ZO_STATUS_STD_EXCEPTION}, [filled] {
      const auto p_plain = std::make_shared<PlainFrame>();
      p_plain->create();
      if (filled) {
        p_plain->reuse({4, 3});
        fillFrame(p_plain->frame(), 7);
      }
      ZoFrame record;
      std::memcpy(&record, p_plain->p_frame, sizeof(record));
      const std::uint64_t before = digest(p_plain->frame());
      const auto run = [p_plain] { p_plain->reuse({33, 17}); };
      const auto check = [run, p_plain, record, before](bool reported) {
        if (reported) {
          EXPECT_EQ(0, std::memcmp(&record, p_plain->p_frame, sizeof(record)));
          EXPECT_EQ(before, digest(p_plain->frame()));
          EXPECT_EQ("zoFrame_reuse: caught standard exception: std::bad_alloc",
                    std::string(p_plain->message.data()));
          run();
        }
        EXPECT_EQ(33, p_plain->p_frame->width);
        EXPECT_EQ(17, p_plain->p_frame->height);
        EXPECT_EQ(1, p_plain->p_frame->plane_count);
        EXPECT_EQ(p_plain->frame().planeData(0), p_plain->p_frame->p_planes[0]);
      };
      return Trial{run, check};
    });
  }
}

INSTANTIATE_TEST_SUITE_P(Of, CoreMemory, testing::Values(Requests::OURS, Requests::LIBRARIES),
                         [](const auto& test) {
                           return test.param == Requests::OURS ? "Ours" : "Libraries";
                         });

}  // namespace
}  // namespace test
}  // namespace zo
