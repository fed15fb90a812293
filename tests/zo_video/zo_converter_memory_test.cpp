// Conversions between frames over outside memory that has not a byte to spare: nothing but the pixels is read
// or written. The scaler would like to work in whole vectors.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "zo_core/zo_frame.h"
#include "zo_scaler_call.h"
#include "zo_test_compare.h"
#include "zo_test_names.h"
#include "zo_test_picture.h"
#include "zo_video/zo_video_converter.h"
#include "zo_video/zo_video_converter_impl.h"
#include "zo_video/zo_video_helpers.h"

namespace zo {
namespace test {
namespace {

// A block whose end is the end of what may be read and written.
class BlockAtTheEdge {
 public:
  explicit BlockAtTheEdge(std::size_t bytes) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t room = (bytes + page - 1) / page * page;
    _size = room + page;
    _p_pages = mmap(nullptr, _size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (_p_pages == MAP_FAILED) {
      throw std::runtime_error("no memory");
    }
    unsigned char* p_end = static_cast<unsigned char*>(_p_pages) + room;
    mprotect(p_end, page, PROT_NONE);
    _p_data = p_end - bytes;
  }
  ~BlockAtTheEdge() { munmap(_p_pages, _size); }
  BlockAtTheEdge(const BlockAtTheEdge&) = delete;
  BlockAtTheEdge& operator=(const BlockAtTheEdge&) = delete;

  unsigned char* data() { return _p_data; }

 private:
  void* _p_pages;
  std::size_t _size;
  unsigned char* _p_data;
};

constexpr unsigned char GUARD = 0xA5;

// A frame over such a block, its rows so many bytes apart from one another.
class TightFrame {
 public:
  TightFrame(FrameFormat format, Size size, unsigned padding)
      : _shape(makeNumberedFrame(format, size, 0)), _padding(padding), _block(blockBytes(_shape, padding)) {
    std::array<unsigned, 4> strides{};
    for (unsigned i = 0; i < _shape.planeCount(); ++i) {
      strides[i] = _shape.planeRowBytes(i) + padding;
    }
    std::fill_n(_block.data(), blockBytes(_shape, padding), GUARD);
    frame = Frame(FrameLayout(format, size, strides), DeviceContext(), DevicePtr(_block.data()));
  }

  bool paddingIsIntact() {
    const unsigned char* p_at = _block.data();
    for (unsigned i = 0; i < _shape.planeCount(); ++i) {
      for (unsigned row = 0; row < _shape.planeRows(i); ++row) {
        p_at += _shape.planeRowBytes(i);
        if (!std::all_of(p_at, p_at + _padding, [](unsigned char byte) { return byte == GUARD; })) {
          return false;
        }
        p_at += _padding;
      }
    }
    return true;
  }

  Frame frame;

 private:
  static std::size_t blockBytes(const Frame& shape, unsigned padding) {
    std::size_t bytes = 0;
    for (unsigned i = 0; i < shape.planeCount(); ++i) {
      bytes += std::size_t{shape.planeRowBytes(i) + padding} * shape.planeRows(i);
    }
    return bytes;
  }

  Frame _shape;
  unsigned _padding;
  BlockAtTheEdge _block;
};

// The same bytes with zeros behind them.
class RoomyCopy {
 public:
  explicit RoomyCopy(const Frame& source) {
    std::array<unsigned, 4> strides{};
    std::size_t used = 0;
    for (unsigned i = 0; i < source.planeCount(); ++i) {
      strides[i] = source.planeStride(i);
      used += std::size_t{strides[i]} * source.planeRows(i);
    }
    _bytes.resize(used + 512);
    std::memcpy(_bytes.data(), source.planeData(0), used);
    frame = Frame(FrameLayout(source.format(), source.size(), strides), DeviceContext(),
                  DevicePtr(_bytes.data()));
  }

  Frame frame;

 private:
  std::vector<unsigned char> _bytes;
};

const auto& FORMATS = SCALABLE_FORMATS;

class TightMemory : public testing::TestWithParam<std::tuple<FrameFormat, Size>> {
 protected:
  static FrameFormat format() { return std::get<0>(GetParam()); }
  static Size size() { return std::get<1>(GetParam()); }
  static std::vector<Size> otherSizes() {
    return {size(), Size(size().width * 2, size().height * 2), Size((size().width + 1) / 2, size().height)};
  }
};

constexpr VideoConverter::ScaleAlgorithm BICUBIC = VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC;

TEST_P(TightMemory, IsReadNoFurtherThanItsPixels) {
  const Frame picture = makeNumberedFrame(format(), size(), 77);
  VideoConverter converter;
  for (const unsigned padding : {0U, 5U}) {
    TightFrame source(format(), size(), padding);
    picture.copyTo(source.frame);
    for (const FrameFormat to : FORMATS) {
      for (const Size to_size : otherSizes()) {
        Frame result;
        converter.convert(source.frame, to, to_size, result, BICUBIC);
        EXPECT_EQ(to, result.format());
        EXPECT_EQ(to_size, result.size());
      }
    }
    EXPECT_TRUE(source.paddingIsIntact());
    EXPECT_TRUE(samePixels(picture, source.frame));
  }
}

TEST_P(TightMemory, IsWrittenNoFurtherThanItsPixels) {
  for (const FrameFormat from : FORMATS) {
    for (const Size from_size : otherSizes()) {
      const Frame picture = makeNumberedFrame(from, from_size, 77);
      VideoConverter converter;
      Frame expected = makeNumberedFrame(format(), size(), 0);
      fillFrame(expected, GUARD);
      converter.convert(picture, format(), size(), expected, BICUBIC);
      for (const unsigned padding : {0U, 5U}) {
        TightFrame result(format(), size(), padding);
        const unsigned char* p_data = result.frame.planeData(0);
        converter.convert(picture, format(), size(), result.frame, BICUBIC);
        ASSERT_EQ(p_data, result.frame.planeData(0)) << "the outside memory is what was to be written";
        EXPECT_TRUE(result.paddingIsIntact()) << toString(from);
        EXPECT_TRUE(samePixels(expected, result.frame)) << toString(from);
      }
    }
  }
}

// The scaler sees the rows as they lie there, with what is between them.
TEST_P(TightMemory, GivesTheScalersOwnBytes) {
  const Frame picture = makeNumberedFrame(format(), size(), 77);
  for (const unsigned padding : {0U, 5U}) {
    TightFrame source(format(), size(), padding);
    picture.copyTo(source.frame);
    RoomyCopy roomy(source.frame);
    VideoConverter converter;
    for (const FrameFormat to : FORMATS) {
      for (const Size to_size : otherSizes()) {
        if (to == format() && to_size == size()) {
          continue;  // a plain copy
        }
        Frame one = makeNumberedFrame(to, to_size, 0);
        Frame other = makeNumberedFrame(to, to_size, 0);
        fillFrame(one, 0xA5);
        fillFrame(other, 0x5A);
        for (Frame* p_expected : {&one, &other}) {
          ASSERT_EQ(to_size.height, callScaler(ScalerImage(roomy.frame, frameFormatToAvPixelFormat(format())),
                                               ScalerImage(*p_expected, frameFormatToAvPixelFormat(to)),
                                               videoConvertorAlgorithmToAvScaleFlags(BICUBIC)));
        }
        Frame result;
        converter.convert(source.frame, to, to_size, result, BICUBIC);
        EXPECT_TRUE(sameWhereWritten(one, other, result)) << toString(to) << " " << shortName(to_size);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Frames, TightMemory,
                         testing::Combine(testing::ValuesIn(FORMATS),
                                          testing::Values(Size(1, 1), Size(2, 2), Size(3, 5), Size(16, 4),
                                                          Size(17, 6), Size(33, 3), Size(64, 64))),
                         [](const auto& test) {
                           return shortName(std::get<0>(test.param)) + "_" +
                                  shortName(std::get<1>(test.param));
                         });

TEST(TightPicture, IsWrittenNoFurtherThanItsPixels) {
  AvFramePtr p_picture(av_frame_alloc());
  p_picture->format = AV_PIX_FMT_YUV410P;  // has no equal among the frame formats' own layouts
  p_picture->width = 17;
  p_picture->height = 6;
  ASSERT_EQ(0, av_frame_get_buffer(p_picture.get(), 32));
  paintNumber(p_picture.get(), 5);
  VideoConverter::Impl converter;
  Frame expected;
  converter.convertAvFrame(p_picture.get(), AV_PIX_FMT_BGR24, expected);
  for (const unsigned padding : {0U, 5U}) {
    TightFrame result(ZO_FRAME_FORMAT_BGR24, Size(17, 6), padding);
    result.frame.setTimestamp(8);
    const unsigned char* p_data = result.frame.planeData(0);
    converter.convertAvFrame(p_picture.get(), AV_PIX_FMT_BGR24, result.frame);
    ASSERT_EQ(p_data, result.frame.planeData(0));
    EXPECT_TRUE(result.paddingIsIntact());
    EXPECT_TRUE(samePixels(expected, result.frame));
    EXPECT_EQ(8, result.frame.timestamp()) << "left alone";
  }
}

}  // namespace
}  // namespace test
}  // namespace zo
