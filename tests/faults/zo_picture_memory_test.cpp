// Every request for memory of frames, converter, JPEG coders, image files and drawing fails in turn.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
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
    Frame frame = makeNumberedFrame(ZO_FRAME_FORMAT_GRAY8, Size(5, 3), 9);
    int decoded = 0;
    int status = ZO_STATUS_OK;
  };
  failEach(
      "JPEG decoder: decode", {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_CODEC_ERROR},
      [&] {
        const auto p_objects = std::make_shared<Objects>();
        const std::uint64_t before = digest(p_objects->frame);
        const auto decode = [=, &jpeg] {
          p_objects->decoder.decode(jpeg.data(), jpeg.size(), p_objects->frame);
        };
        const auto run = [=] {
          try {
            for (; p_objects->decoded < 2; ++p_objects->decoded) {  // the second one with a new instance
              decode();
            }
          } catch (const Exception& exception) {
            p_objects->status = exception.status();
            throw;
          }
        };
        const auto check = [=, &expected](bool reported) {
          if (reported) {
            if (p_objects->status != ZO_STATUS_CODEC_ERROR) {
              EXPECT_EQ(p_objects->decoded == 0 ? before : digest(expected), digest(p_objects->frame));
            }
            decode();
          }
          EXPECT_TRUE(samePixels(expected, p_objects->frame));
        };
        return Trial{run, check};
      },
      LOST_BY_TURBOJPEG);
}

// Pictures in the caller's own memory, row upon row without a gap. Of odd sizes the coders want a luma sample
// more than there is, and take it from a copy.
class OutsidePicture {
 public:
  OutsidePicture(FrameFormat format, Size size) {
    const Frame numbered = makeNumberedFrame(format, size, 5);
    std::array<unsigned, 4> strides{};
    for (unsigned i = 0; i < numbered.planeCount(); ++i) {
      strides[i] = numbered.planeRowBytes(i);
    }
    const std::string bytes = packedBytes(numbered);
    _pixels.assign(bytes.begin(), bytes.end());
    _frame = Frame(FrameLayout(format, size, strides), DeviceContext(),
                   DevicePtr(static_cast<void*>(_pixels.data())));
  }
  OutsidePicture(const OutsidePicture&) = delete;
  OutsidePicture& operator=(const OutsidePicture&) = delete;

  Frame& frame() { return _frame; }
  const Frame& frame() const { return _frame; }

 private:
  std::vector<unsigned char> _pixels;
  Frame _frame;
};

const FrameFormat CODED_FORMATS[] = {
    ZO_FRAME_FORMAT_GRAY8,         ZO_FRAME_FORMAT_BGR24,
    ZO_FRAME_FORMAT_YUV422_PLANAR, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
    ZO_FRAME_FORMAT_YUV444_PLANAR, ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12,
};

TEST_P(PictureMemory, FailsForEncodingOutsideMemory) {
  struct Objects {
    JpegEncoder encoder;
    Buffer out;
  };
  for (const FrameFormat format : CODED_FORMATS) {
    for (const Size size : {Size(33, 17), Size(32, 16)}) {
      const OutsidePicture picture(format, size);
      const std::uint64_t pixels = digest(picture.frame());
      Objects expected;
      expected.encoder.encode(picture.frame(), 90, expected.out);
      failEach("JPEG encoder: outside memory",
               {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_UNEXPECTED_RESULT, ZO_STATUS_CODEC_ERROR,
                ZO_STATUS_NULL_POINTER},
               [&] {
                 const auto p_objects = std::make_shared<Objects>();
                 const auto run = [=, &picture] {
                   p_objects->encoder.encode(picture.frame(), 90, p_objects->out);
                 };
                 const auto check = [=, &picture, &expected](bool reported) {
                   EXPECT_EQ(pixels, digest(picture.frame()));
                   if (reported) {
                     run();
                   }
                   EXPECT_EQ(bytesOf(expected.out), bytesOf(p_objects->out));
                 };
                 return Trial{run, check};
               });
    }
  }
}

// What is decoded into is as it was, unless decompression itself has failed.
TEST_P(PictureMemory, FailsForDecodingIntoOutsideMemory) {
  for (const FrameFormat format : CODED_FORMATS) {
    if (format == ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12 || format == ZO_FRAME_FORMAT_BGR24) {
      continue;  // come out as other formats
    }
    for (const Size size : {Size(33, 17), Size(32, 16)}) {
      Buffer jpeg;
      JpegEncoder().encode(makeNumberedFrame(format, size, 9), 90, jpeg);
      OutsidePicture expected(format, size);
      JpegDecoder().decode(jpeg.data(), jpeg.size(), expected.frame());
      ASSERT_FALSE(expected.frame().hasSlack());
      struct Objects {
        Objects(FrameFormat format, Size size) : picture(format, size) {}
        JpegDecoder decoder;
        OutsidePicture picture;
        int status = ZO_STATUS_OK;
      };
      failEach("JPEG decoder: outside memory", {ZO_STATUS_OUT_OF_MEMORY, ZO_STATUS_CODEC_ERROR}, [&] {
        const auto p_objects = std::make_shared<Objects>(format, size);
        p_objects->picture.frame().setTimestamp(40);
        const std::uint64_t before = digest(p_objects->picture.frame());
        const auto decode = [=, &jpeg] {
          p_objects->decoder.decode(jpeg.data(), jpeg.size(), p_objects->picture.frame());
        };
        const auto run = [=] {
          try {
            decode();
          } catch (const Exception& exception) {
            p_objects->status = exception.status();
            throw;
          }
        };
        const auto check = [=, &expected](bool reported) {
          if (reported) {
            if (p_objects->status != ZO_STATUS_CODEC_ERROR) {
              EXPECT_EQ(before, digest(p_objects->picture.frame()));
            }
            decode();
          }
          EXPECT_FALSE(p_objects->picture.frame().hasSlack());
          EXPECT_EQ(40, p_objects->picture.frame().timestamp());
          EXPECT_TRUE(samePixels(expected.frame(), p_objects->picture.frame()));
        };
        return Trial{run, check};
      });
    }
  }
}

TEST_P(PictureMemory, FailsForEncodingInMemory) {
  for (const FrameFormat format :
       {ZO_FRAME_FORMAT_BGR24, ZO_FRAME_FORMAT_GRAY8, ZO_FRAME_FORMAT_YUV420_PLANAR_I420,
        ZO_FRAME_FORMAT_YUV420_SEMIPLANAR_NV12}) {
    const Frame picture = makeNumberedFrame(format, Size(33, 17), 5);
    const std::string expected = bytesOf(*encodeJpeg(picture, 90));
    failEach(std::string("encodeJpeg ") + toString(format), {ZO_STATUS_CODEC_ERROR}, [&] {
      const auto p_result = std::make_shared<std::shared_ptr<Buffer>>();
      const auto run = [p_result, &picture] { *p_result = encodeJpeg(picture, 90); };
      const auto check = [run, p_result, &expected](bool reported) {
        if (reported) {
          EXPECT_EQ(nullptr, *p_result);
          run();
        }
        EXPECT_EQ(expected, bytesOf(**p_result));
      };
      return Trial{run, check};
    });
  }
}

TEST_P(PictureMemory, FailsForDecodingInMemory) {
  const std::shared_ptr<Buffer> p_expected = encodeJpeg(_colour, 90);
  const std::shared_ptr<Frame> p_picture = decodeJpeg(p_expected->data(), p_expected->size());
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
  for (const Frame* p_picture : {&_colour, &_grey}) {
    const std::string kind = p_picture == &_grey ? " of grey" : "";
    for (const char* p_name : {"a.jpg", "a.png", "a.pgm", "a.ppm"}) {
      const std::string path = _directory.file(p_name);
      imageSave(path, *p_picture, 90);
      const std::string bytes = readFile(path);
      const std::shared_ptr<Frame> p_expected = imageLoad(path);
      failEach("imageSave" + kind, {ZO_STATUS_CODEC_ERROR}, [&] {
        const auto run = [p_picture, &path] { imageSave(path, *p_picture, 90); };
        const auto check = [run, &path, &bytes](bool reported) {
          if (reported) {
            run();
          }
          EXPECT_EQ(bytes, readFile(path));
        };
        return Trial{run, check};
      });
      failEach("imageLoad" + kind, {ZO_STATUS_CODEC_ERROR}, [&] {
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
class TextMemory : public testing::TestWithParam<std::tuple<int, Requests>> {
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
    drawText(frame, TEXT, Point(1, 2), WHITE, std::get<0>(GetParam()));
  }
};

TEST_P(TextMemory, FailsForText) {
  const Frame blank = makeNumberedFrame(ZO_FRAME_FORMAT_BGR24, Size(33, 17), 5);
  Frame expected;
  blank.copyTo(expected);
  draw(expected);
  failEachRequest("no memory: drawText", std::get<1>(GetParam()), {Ending::BAD_ALLOC}, [&] {
    drawOtherHeights();
    const auto p_frame = std::make_shared<Frame>();
    blank.copyTo(*p_frame);
    const auto run = [p_frame] { draw(*p_frame); };
    const auto check = [p_frame, run, &blank, &expected](bool reported) {
      if (reported) {
        EXPECT_TRUE(samePixels(blank, *p_frame)) << "half a text was drawn";
        run();
      }
      EXPECT_TRUE(samePixels(expected, *p_frame));
      drawOtherHeights();
    };
    return Trial{run, check};
  });
}

INSTANTIATE_TEST_SUITE_P(Heights, TextMemory,
                         testing::Combine(testing::Values(8, 200),
                                          testing::Values(Requests::OURS, Requests::LIBRARIES)),
                         [](const auto& test) {
                           return "H" + std::to_string(std::get<0>(test.param)) +
                                  (std::get<1>(test.param) == Requests::OURS ? "Ours" : "Libraries");
                         });

}  // namespace
}  // namespace test
}  // namespace zo
