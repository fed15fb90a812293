// Every request for memory of frames, converter, JPEG coders, image files and drawing fails in turn.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zo_core/zo_buffer.h"
#include "zo_fault_trials.h"
#include "zo_test_support.h"
#include "zo_video/zo_drawing.h"
#include "zo_video/zo_image_io.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_encoder.h"
#include "zo_video/zo_video_converter.h"

namespace zo {
namespace test {
namespace {

// An instance that cannot be set up completely loses the JPEG library's memory manager.
constexpr long long LOST_BY_TURBOJPEG = 256;

constexpr unsigned char WHITE[3] = {255, 255, 255};

std::string bytesOf(const Buffer& buffer) {
  return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size());
}

class PictureMemory : public testing::TestWithParam<Requests> {
 protected:
  // `statuses` are what failing libraries are reported as, besides std::bad_alloc.
  void failEach(const std::string& what, const std::vector<int>& statuses,
                const std::function<Trial()>& prepare, long long lost_by_libraries = 0) {
    std::vector<int> allowed = {Ending::BAD_ALLOC};
    if (GetParam() == Requests::LIBRARIES) {
      allowed.insert(allowed.end(), statuses.begin(), statuses.end());
    }
    failEachRequest("no memory: " + what, GetParam(), allowed, prepare, lost_by_libraries);
  }

  // The functions for JPEG files name every failure, of either kind.
  void failEachWrapped(const std::string& what, const std::vector<int>& statuses,
                       const std::function<Trial()>& prepare) {
    std::vector<int> allowed = {Ending::BAD_ALLOC, ZO_STATUS_OUT_OF_MEMORY};
    if (GetParam() == Requests::LIBRARIES) {
      allowed.insert(allowed.end(), statuses.begin(), statuses.end());
    }
    failEachRequest("no memory: " + what, GetParam(), allowed, prepare, LOST_BY_TURBOJPEG);
  }

  const TempDir _directory;
  const Frame _colour = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
  const Frame _grey = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(33, 17), 5);
  const Frame _packed = makeNumberedFrame(ZO_FRAME_FORMAT_YUV422_PACKED_YUY2, Size(33, 17), 5);
};

TEST_P(PictureMemory, FailsForFrames) {
  failEach("frame: reuse and copyTo", {}, [&] {
    const auto p_frame = std::make_shared<Frame>();
    const auto p_copy = std::make_shared<Frame>();
    p_frame->reuse(ZO_FRAME_FORMAT_GRAY8, Size(4, 4), DeviceContext(), 0);
    const auto run = [=] {
      p_frame->reuse(ZO_FRAME_FORMAT_BGR24, Size(33, 17), DeviceContext(), 0);
      _colour.copyTo(*p_copy);
    };
    const auto check = [=](bool) {
      run();
      _colour.copyTo(*p_frame);
      EXPECT_TRUE(samePixels(_colour, *p_frame));
      EXPECT_TRUE(samePixels(_colour, *p_copy));
    };
    return Trial{run, check};
  });
}

// Into every kind of format; in place; from and into outside memory.
TEST_P(PictureMemory, FailsForConversions) {
  struct Objects {
    VideoConverter converter;
    Frame scaled;
    Frame in_place;
    unsigned char pixels[20 * 30];
    Frame outside{FrameLayout(ZO_FRAME_FORMAT_GRAY8, Size(20, 30), {{20, 0, 0, 0}}), DeviceContext(),
                  DevicePtr(static_cast<void*>(pixels))};
  };
  const auto convert = [this](Objects& objects) {
    objects.converter.convert(_packed, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12, Size(20, 30), objects.scaled,
                              VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
    // Not to I420, where FFmpeg before 4.4 leaves the last chroma column of odd widths as it was.
    objects.converter.convert(objects.in_place, ZO_FRAME_FORMAT_YUV422_PLANAR, Size(33, 17), objects.in_place,
                              VideoConverter::ZO_SCALE_ALGORITHM_AREA);
    objects.converter.convert(_colour, ZO_FRAME_FORMAT_GRAY8, Size(20, 30), objects.outside,
                              VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS);
    objects.converter.convert(objects.outside, ZO_FRAME_FORMAT_YUV444_PLANAR, Size(20, 30), objects.scaled,
                              VideoConverter::ZO_SCALE_ALGORITHM_NEAREST);
  };
  Objects expected;
  _colour.copyTo(expected.in_place);
  convert(expected);
  failEach("convert", {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_UNEXPECTED_RESULT}, [&] {
    const auto p_objects = std::make_shared<Objects>();
    _colour.copyTo(p_objects->in_place);
    const auto check = [=, &expected](bool reported) {
      if (reported) {
        _colour.copyTo(p_objects->in_place);
        convert(*p_objects);
      }
      EXPECT_TRUE(samePixels(expected.scaled, p_objects->scaled));
      EXPECT_TRUE(samePixels(expected.in_place, p_objects->in_place));
      EXPECT_TRUE(samePixels(expected.outside, p_objects->outside));
    };
    return Trial{[=] { convert(*p_objects); }, check};
  });
}

// What a conversion writes to is as it was when the library's own memory did not suffice.
struct OutsideConversion {
  const char* name;
  FrameFormat from;
  FrameFormat to;
  bool in_place;
};

class ConversionTarget : public testing::TestWithParam<OutsideConversion> {};

TEST_P(ConversionTarget, StaysAsItIsWhenThereIsNoMemory) {
  struct Objects {
    unsigned char pixels[64] = {1, 2, 3, 4, 5, 6, 7, 8};
    Frame source{FrameLayout(GetParam().from, Size(8, 8), {{8, 0, 0, 0}}), DeviceContext(),
                 DevicePtr(static_cast<void*>(pixels))};
    Frame other = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(5, 3), 9);
    VideoConverter converter;
    Frame& target() { return GetParam().in_place ? source : other; }
  };
  failEachRequest("no memory: convert from outside memory", Requests::OURS, {Ending::BAD_ALLOC}, [&] {
    const auto p_objects = std::make_shared<Objects>();
    p_objects->target().setTimestamp(40);
    const auto p_before = std::make_shared<Frame>();
    p_objects->target().copyTo(*p_before);
    const auto run = [=] {
      p_objects->converter.convert(p_objects->source, GetParam().to, Size(8, 8), p_objects->target(),
                                   VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
    };
    const auto check = [=](bool reported) {
      if (reported) {
        EXPECT_TRUE(samePixels(*p_before, p_objects->target()));
        EXPECT_EQ(40, p_objects->target().timestamp());
        run();
      }
      EXPECT_EQ(GetParam().to, p_objects->target().format());
      EXPECT_EQ(Size(8, 8), p_objects->target().size());
    };
    return Trial{run, check};
  });
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ConversionTarget,
    testing::Values(OutsideConversion{"AnotherFormat", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, false},
                    OutsideConversion{"InPlace", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_RGB24, true},
                    OutsideConversion{"CopyOfGrey", ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_GRAY8, false},
                    OutsideConversion{"CopyOfACustomFormat", ZO_FRAME_FORMAT_CUSTOM_1,
                                      ZO_FRAME_FORMAT_CUSTOM_1, false}),
    [](const auto& test) { return std::string(test.param.name); });

// libswscale does not notice when it cannot have its table for YUV to RGB, and crashes when it looks there.
TEST_P(PictureMemory, FailsForConversionsFromYuvToRgb) {
  struct Objects {
    VideoConverter converter;
    Frame result;
  };
  const auto convert = [this](Objects& objects) {
    objects.converter.convert(_packed, ZO_FRAME_FORMAT_BGR24, Size(20, 30), objects.result,
                              VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
  };
  Objects expected;
  convert(expected);
  failEach("convert YUV to RGB", {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_UNEXPECTED_RESULT}, [&] {
    const auto p_objects = std::make_shared<Objects>();
    const auto check = [=, &expected](bool reported) {
      if (reported) {
        convert(*p_objects);
      }
      EXPECT_TRUE(samePixels(expected.result, p_objects->result));
    };
    return Trial{[=] { convert(*p_objects); }, check};
  });
}

TEST_P(PictureMemory, FailsForConstructors) {
  failEach(
      "constructors of converter and JPEG coders", {ZO_STATUS_OUT_OF_MEMORY},
      [] {
        return Trial{[] {
                       VideoConverter();
                       JpegEncoder();
                       JpegDecoder();
                     },
                     [](bool) {}};
      },
      LOST_BY_TURBOJPEG);
}

TEST_P(PictureMemory, FailsForTheJpegEncoder) {
  Buffer expected;
  JpegEncoder().encode(_packed, 90, expected);
  struct Objects {
    JpegEncoder encoder;
    Buffer out;
  };
  failEach("JPEG encoder: encode",
           {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_UNEXPECTED_RESULT, ZO_STATUS_CODEC_ERROR}, [&] {
             const auto p_objects = std::make_shared<Objects>();
             const auto run = [=] { p_objects->encoder.encode(_packed, 90, p_objects->out); };
             const auto check = [=, &expected](bool reported) {
               if (reported) {
                 run();
               }
               EXPECT_EQ(bytesOf(expected), bytesOf(p_objects->out));
             };
             return Trial{run, check};
           });
}

TEST_P(PictureMemory, FailsForTheJpegDecoder) {
  Buffer jpeg;
  JpegEncoder().encode(_packed, 90, jpeg);
  Frame expected;
  JpegDecoder().decode(jpeg.data(), jpeg.size(), expected);
  struct Objects {
    JpegDecoder decoder;
    Frame frame;
  };
  failEach("JPEG decoder: decode", {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_CODEC_ERROR}, [&] {
    const auto p_objects = std::make_shared<Objects>();
    const auto run = [=, &jpeg] { p_objects->decoder.decode(jpeg.data(), jpeg.size(), p_objects->frame); };
    const auto check = [=, &expected](bool reported) {
      if (reported) {
        run();
      }
      EXPECT_TRUE(samePixels(expected, p_objects->frame));
    };
    return Trial{run, check};
  });
}

TEST_P(PictureMemory, FailsForJpegInMemory) {
  const std::shared_ptr<Buffer> p_expected = encodeJpeg(_colour, 90);
  const std::shared_ptr<Frame> p_picture = decodeJpeg(p_expected->data(), p_expected->size());
  failEach("encodeJpeg", {ZO_STATUS_CODEC_ERROR}, [&] {
    const auto p_result = std::make_shared<std::shared_ptr<Buffer>>();
    const auto run = [=] { *p_result = encodeJpeg(_colour, 90); };
    const auto check = [=](bool reported) {
      if (reported) {
        run();
      }
      EXPECT_EQ(bytesOf(*p_expected), bytesOf(**p_result));
    };
    return Trial{run, check};
  });
  failEach("decodeJpeg", {ZO_STATUS_CODEC_ERROR}, [&] {
    const auto p_result = std::make_shared<std::shared_ptr<Frame>>();
    const auto run = [=] { *p_result = decodeJpeg(p_expected->data(), p_expected->size()); };
    const auto check = [=](bool reported) {
      if (reported) {
        run();
      }
      EXPECT_TRUE(samePixels(*p_picture, **p_result));
    };
    return Trial{run, check};
  });
}

TEST_P(PictureMemory, FailsForSavingAndLoadingImages) {
  for (const char* p_name : {"a.jpg", "a.png", "a.pgm", "a.ppm"}) {
    const std::string path = _directory.file(p_name);
    imageSave(path, _colour, 90);
    const std::string bytes = readFile(path);
    const std::shared_ptr<Frame> p_expected = imageLoad(path);
    failEach("imageSave", {ZO_STATUS_CODEC_ERROR}, [&] {
      const auto run = [this, &path] { imageSave(path, _colour, 90); };
      const auto check = [run, &path, &bytes](bool reported) {
        if (reported) {
          run();
        }
        EXPECT_EQ(bytes, readFile(path));
      };
      return Trial{run, check};
    });
    failEach("imageLoad", {ZO_STATUS_CODEC_ERROR}, [&] {
      const auto p_result = std::make_shared<std::shared_ptr<Frame>>();
      const auto run = [p_result, &path] { *p_result = imageLoad(path); };
      const auto check = [run, p_result, &p_expected](bool reported) {
        if (reported) {
          run();
        }
        EXPECT_TRUE(samePixels(*p_expected, **p_result));
      };
      return Trial{run, check};
    });
  }
}

TEST_P(PictureMemory, FailsForWritingAndReadingJpegFiles) {
  const std::string path = _directory.file("a.jpg");
  imageWrite(path, _packed, 90);
  const std::string bytes = readFile(path);
  Frame expected;
  imageRead(path, expected);
  failEachWrapped(
      "imageWrite",
      {ZO_STATUS_NULL_POINTER, ZO_STATUS_OPEN_ERROR, ZO_STATUS_UNEXPECTED_RESULT, ZO_STATUS_CODEC_ERROR},
      [&] {
        const auto run = [this, &path] { imageWrite(path, _packed, 90); };
        const auto check = [run, &path, &bytes](bool reported) {
          if (reported) {
            run();
          }
          EXPECT_EQ(bytes, readFile(path));
        };
        return Trial{run, check};
      });
  failEachWrapped("imageRead", {ZO_STATUS_OPEN_ERROR, ZO_STATUS_READ_ERROR, ZO_STATUS_CODEC_ERROR}, [&] {
    const auto p_frame = std::make_shared<Frame>();
    const auto run = [p_frame, &path] { imageRead(path, *p_frame); };
    const auto check = [run, p_frame, &expected](bool reported) {
      if (reported) {
        run();
      }
      EXPECT_TRUE(samePixels(expected, *p_frame));
    };
    return Trial{run, check};
  });
}

TEST_P(PictureMemory, DoesNotConcernLinesAndRectangles) {
  Frame expected;
  Frame frame;
  _colour.copyTo(expected);
  _colour.copyTo(frame);
  const auto draw = [](Frame& target) {
    drawLine(target, Point(-5, 3), Point(40, 16), WHITE, 3);
    drawRect(target, Rect(2, 2, 20, 12), WHITE, 2);
  };
  draw(expected);
  {
    const MemoryShortage shortage(GetParam(), 0, true);
    draw(frame);
  }
  EXPECT_TRUE(samePixels(expected, frame));
}

INSTANTIATE_TEST_SUITE_P(Of, PictureMemory, testing::Values(Requests::OURS, Requests::LIBRARIES),
                         [](const auto& test) {
                           return test.param == Requests::OURS ? "Ours" : "Libraries";
                         });

// Letters are scaled when they are first drawn, and the last heights stay with the thread.
class TextMemory : public testing::TestWithParam<int> {
 protected:
  // Other heights push the font that is looked at out of the store.
  static void drawOtherHeights() {
    Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
    for (const int height : {100, 101, 102, 103}) {
      drawText(frame, "", Point(0, 0), WHITE, height);
    }
  }
  static void draw(Frame& frame) {
    static const std::string TEXT = "A b\n\xE4y";
    drawText(frame, TEXT, Point(1, 2), WHITE, GetParam());
  }
};

TEST_P(TextMemory, FailsForText) {
  const Frame blank = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
  Frame expected;
  blank.copyTo(expected);
  draw(expected);
  failEachRequest("no memory: drawText", Requests::OURS, {Ending::BAD_ALLOC}, [&] {
    drawOtherHeights();
    const auto p_frame = std::make_shared<Frame>();
    blank.copyTo(*p_frame);
    const auto run = [p_frame] { draw(*p_frame); };
    const auto check = [p_frame, run, &blank, &expected](bool reported) {
      if (reported) {
        blank.copyTo(*p_frame);
        run();
      }
      EXPECT_TRUE(samePixels(expected, *p_frame));
      drawOtherHeights();
    };
    return Trial{run, check};
  });
}

INSTANTIATE_TEST_SUITE_P(Heights, TextMemory, testing::Values(8, 200),
                         [](const auto& test) { return "H" + std::to_string(test.param); });

}  // namespace
}  // namespace test
}  // namespace zo
