// Damaged files load or are refused; the sanitizers watch.

#include <gtest/gtest.h>

#include <cstdio>

#include <jpeglib.h>
#include <png.h>

#include <random>
#include <string>

#include "simd_test_images.h"
#include "zo_test_names.h"

namespace {

using namespace simd_test;

constexpr size_t WIDTH = 23;
constexpr size_t HEIGHT = 14;

struct Kind {
  const char* name;
  Bytes (*make)();
};

Bytes png(int color_type, int bit_depth, bool interlaced, bool transparent) {
  Picture ignored;
  return makePng({"", color_type, bit_depth, interlaced, transparent}, WIDTH, HEIGHT, ignored);
}
Bytes jpeg(int space, int factor, bool progressive, bool arithmetic) {
  return makeJpeg({"", space, factor, factor, progressive, arithmetic}, WIDTH, HEIGHT, {90, 100, 110, 200});
}
Bytes pnm(SimdPixelFormatType format, SimdImageFileType type) {
  return save(makePicture(WIDTH, HEIGHT, format), type);
}

const Kind KINDS[] = {
    {"PgmText", [] { return pnm(SimdPixelFormatGray8, SimdImageFilePgmTxt); }},
    {"PgmBinary", [] { return pnm(SimdPixelFormatGray8, SimdImageFilePgmBin); }},
    {"PpmText", [] { return pnm(SimdPixelFormatRgb24, SimdImageFilePpmTxt); }},
    {"PpmBinary", [] { return pnm(SimdPixelFormatRgb24, SimdImageFilePpmBin); }},
    {"PngGray", [] { return png(PNG_COLOR_TYPE_GRAY, 2, false, false); }},
    {"PngPalette", [] { return png(PNG_COLOR_TYPE_PALETTE, 4, true, true); }},
    {"PngRgba16", [] { return png(PNG_COLOR_TYPE_RGB_ALPHA, 16, true, false); }},
    {"JpegGray", [] { return jpeg(JCS_GRAYSCALE, 1, false, false); }},
    {"JpegColor", [] { return jpeg(JCS_YCbCr, 2, false, false); }},
    {"JpegProgressive", [] { return jpeg(JCS_YCbCr, 2, true, false); }},
    {"JpegArithmetic", [] { return jpeg(JCS_YCbCr, 1, false, true); }},
    {"JpegInks", [] { return jpeg(JCS_YCCK, 1, false, false); }},
};
void PrintTo(const Kind& kind, std::ostream* p_out) {
  *p_out << kind.name;
}

class Damage : public testing::TestWithParam<Kind> {
 protected:
  static constexpr SimdPixelFormatType WANTED[] = {SimdPixelFormatNone, SimdPixelFormatGray8,
                                                   SimdPixelFormatBgr24, SimdPixelFormatBgra32,
                                                   SimdPixelFormatRgb24};

  void SetUp() override {
    _file = GetParam().make();
    if (_file.empty()) {
      GTEST_SKIP() << "the installed JPEG library does not write this kind";
    }
    ASSERT_FALSE(load(_file, SimdPixelFormatBgr24).isNull());
  }

  // A picture that does come out is whole: as many pixels as its size says, in the wanted format.
  static void expectSound(const Picture& picture, SimdPixelFormatType wanted) {
    if (!picture.isNull()) {
      EXPECT_EQ(picture.stride() * picture.height, picture.pixels.size());
      EXPECT_TRUE(wanted == SimdPixelFormatNone || wanted == picture.format);
    }
  }

  Bytes _file;
};

constexpr SimdPixelFormatType Damage::WANTED[];

TEST_P(Damage, CutAtEveryLengthLoadsOrIsRefused) {
  for (size_t size = 0; size < _file.size(); ++size) {
    const SimdPixelFormatType wanted = WANTED[size % 5];
    const Bytes cut(_file.begin(), _file.begin() + static_cast<ptrdiff_t>(size));
    const Picture picture = load(cut, wanted);
    expectSound(picture, wanted);
    // Nobody misses digits of the last number in a text.
    const bool text = _file[0] == 'P' && _file[1] <= '3';
    const bool may_load = _file[0] == 0xFF || (text && size + 4 >= _file.size());
    EXPECT_TRUE(may_load || picture.isNull()) << size;
  }
}

TEST_P(Damage, TenThousandMutationsLoadOrAreRefused) {
  std::mt19937 random(77);
  const auto below = [&](size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
  };
  for (int round = 0; round < 10000; ++round) {
    Bytes mutated = _file;
    for (size_t changes = 1 + below(6); changes > 0; --changes) {
      switch (below(8)) {
        case 0:  // a piece goes
          if (mutated.size() > 8) {
            const auto begin = mutated.begin() + static_cast<ptrdiff_t>(below(mutated.size() - 4));
            mutated.erase(begin, begin + static_cast<ptrdiff_t>(1 + below(4)));
          }
          break;
        case 1:  // a piece comes twice
          if (mutated.size() > 16) {
            const size_t at = below(mutated.size() - 8);
            const Bytes piece(mutated.begin() + static_cast<ptrdiff_t>(at),
                              mutated.begin() + static_cast<ptrdiff_t>(at + 8));
            mutated.insert(mutated.begin() + static_cast<ptrdiff_t>(below(mutated.size())), piece.begin(),
                           piece.end());
          }
          break;
        case 2:
          mutated[below(mutated.size())] = below(2) == 0 ? 0 : 0xFF;
          break;
        case 3:
          mutated[below(mutated.size())] = static_cast<uint8_t>(random());
          break;
        default:  // mostly in the header
          mutated[below(std::min<size_t>(mutated.size(), 200))] ^= static_cast<uint8_t>(1u << below(8));
          break;
      }
    }
    if (round % 2 == 0 && _file[0] == 0x89) {
      repairPngChecksums(mutated);  // or else hardly any damage gets past them
    }
    const SimdPixelFormatType wanted = WANTED[static_cast<size_t>(round) % 5];
    expectSound(load(mutated, wanted), wanted);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, Damage, testing::ValuesIn(KINDS), zo::test::CaseName());

}  // namespace
