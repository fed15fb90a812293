#include "simd_test_images.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>

#include <jpeglib.h>
#include <png.h>

#include "jump_guard.h"

namespace simd_test {
namespace {

struct SimdRelease {
  void operator()(uint8_t* p) const { SimdFree(p); }
};
using SimdMemory = std::unique_ptr<uint8_t, SimdRelease>;

Picture packed(const SimdMemory& p_pixels, size_t stride, size_t width, size_t height,
               SimdPixelFormatType format) {
  if (!p_pixels) {
    return Picture();
  }
  Picture picture{width, height, format, {}};
  for (size_t y = 0; y < height; ++y) {
    const uint8_t* p_row = p_pixels.get() + y * stride;
    picture.pixels.insert(picture.pixels.end(), p_row, p_row + picture.stride());
  }
  return picture;
}

}  // namespace

bool operator==(const Picture& a, const Picture& b) {
  return a.width == b.width && a.height == b.height && a.format == b.format && a.pixels == b.pixels;
}

std::ostream& operator<<(std::ostream& out, const Picture& picture) {
  out << picture.width << "x" << picture.height << " format " << picture.format << ":";
  for (size_t i = 0; i < std::min<size_t>(picture.pixels.size(), 32); ++i) {
    out << " " << static_cast<int>(picture.pixels[i]);
  }
  return out;
}

Picture makePicture(size_t width, size_t height, SimdPixelFormatType format) {
  Picture picture{width, height, format, {}};
  const size_t size = picture.pixelSize();
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      for (size_t channel = 0; channel < size; ++channel) {
        picture.pixels.push_back(static_cast<uint8_t>(channel == 3 ? 255 : 20 + 60 * channel + 2 * x + y));
      }
    }
  }
  return picture;
}

int largestDifference(const Picture& a, const Picture& b) {
  if (a.width != b.width || a.height != b.height || a.format != b.format) {
    return 256;
  }
  int largest = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) {
    largest = std::max(largest, std::abs(a.pixels[i] - b.pixels[i]));
  }
  return largest;
}

Picture load(const Bytes& data, SimdPixelFormatType wanted) {
  const std::unique_ptr<uint8_t[]> exact(new uint8_t[data.size()]);
  std::copy(data.begin(), data.end(), exact.get());
  size_t stride = 0;
  size_t width = 0;
  size_t height = 0;
  const SimdMemory pixels(
      SimdImageLoadFromMemory(exact.get(), data.size(), &stride, &width, &height, &wanted));
  return packed(pixels, stride, width, height, wanted);
}

Picture loadFile(const std::string& path, SimdPixelFormatType wanted) {
  size_t stride = 0;
  size_t width = 0;
  size_t height = 0;
  const SimdMemory pixels(SimdImageLoadFromFile(path.c_str(), &stride, &width, &height, &wanted));
  return packed(pixels, stride, width, height, wanted);
}

Bytes save(const Picture& picture, SimdImageFileType type, int quality) {
  size_t size = 0;
  const SimdMemory file(SimdImageSaveToMemory(picture.pixels.data(), picture.stride(), picture.width,
                                              picture.height, picture.format, type, quality, &size));
  return file ? Bytes(file.get(), file.get() + size) : Bytes();
}

Bytes makePng(const PngKind& kind, size_t width, size_t height, Picture& expected) {
  static const int CHANNELS[] = {1, 0, 3, 1, 2, 0, 4};
  const auto channels = static_cast<size_t>(CHANNELS[kind.color_type]);
  const size_t row_bytes = (width * channels * static_cast<size_t>(kind.bit_depth) + 7) / 8;
  std::mt19937 random(static_cast<unsigned>(kind.bit_depth * 16 + kind.color_type));
  std::vector<Bytes> rows(height, Bytes(row_bytes));
  for (Bytes& row : rows) {
    std::generate(row.begin(), row.end(), [&] { return static_cast<uint8_t>(random()); });
  }
  std::vector<png_color> palette(size_t(1) << std::min(kind.bit_depth, 8));
  for (png_color& color : palette) {
    color = {static_cast<png_byte>(random()), static_cast<png_byte>(random()),
             static_cast<png_byte>(random())};
  }

  png_structp p_png = png_create_write_struct(
      PNG_LIBPNG_VER_STRING, nullptr,
      [](png_structp, png_const_charp p_message) {
        fprintf(stderr, "libpng: %s\n", p_message);
        abort();
      },
      nullptr);
  png_infop p_info = png_create_info_struct(p_png);
  Bytes file;
  png_set_write_fn(
      p_png, &file,
      [](png_structp p, png_bytep p_bytes, size_t size) {
        Bytes& to = *static_cast<Bytes*>(png_get_io_ptr(p));
        to.insert(to.end(), p_bytes, p_bytes + size);
      },
      nullptr);
  png_set_IHDR(p_png, p_info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
               kind.bit_depth, kind.color_type, kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0,
               0);
  if (kind.color_type == PNG_COLOR_TYPE_PALETTE) {
    png_set_PLTE(p_png, p_info, palette.data(), static_cast<int>(palette.size()));
  }
  if (kind.transparent) {
    png_byte alphas[2] = {0, 100};
    png_color_16 color = {};
    png_set_tRNS(p_png, p_info, alphas, 2, &color);
  }
  png_set_gAMA(p_png, p_info, 1.0);  // must not change the samples
  std::vector<png_bytep> pointers;
  for (Bytes& row : rows) {
    pointers.push_back(row.data());
  }
  png_set_rows(p_png, p_info, pointers.data());
  png_write_png(p_png, p_info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&p_png, &p_info);

  const bool color = (kind.color_type & PNG_COLOR_MASK_COLOR) != 0;
  expected = Picture{width, height, color ? SimdPixelFormatRgb24 : SimdPixelFormatGray8, {}};
  const auto sample = [&](const Bytes& row, size_t index) -> unsigned {
    const auto depth = static_cast<size_t>(kind.bit_depth);
    if (depth == 16) {
      return (row[2 * index] * 256u + row[2 * index + 1]);
    }
    return row[index * depth / 8] >> (8 - depth - index * depth % 8) & ((1u << depth) - 1);
  };
  const unsigned maximum = (1u << kind.bit_depth) - 1;
  for (const Bytes& row : rows) {
    for (size_t x = 0; x < width; ++x) {
      if (kind.color_type == PNG_COLOR_TYPE_PALETTE) {
        const png_color entry = palette[sample(row, x)];
        expected.pixels.insert(expected.pixels.end(), {entry.red, entry.green, entry.blue});
        continue;
      }
      for (size_t channel = 0; channel < (color ? 3 : 1); ++channel) {
        const unsigned value = sample(row, x * channels + channel);
        expected.pixels.push_back(static_cast<uint8_t>((value * 255 + maximum / 2) / maximum));
      }
    }
  }
  return file;
}

void repairPngChecksums(Bytes& file) {
  const auto number = [&](size_t at) {
    return static_cast<size_t>(file[at]) << 24 | static_cast<size_t>(file[at + 1]) << 16 |
           static_cast<size_t>(file[at + 2]) << 8 | file[at + 3];
  };
  for (size_t at = 8; at + 12 <= file.size() && number(at) <= file.size() - at - 12; at += 12 + number(at)) {
    const size_t end = at + 8 + number(at);
    uint32_t crc = 0xFFFFFFFF;
    for (size_t i = at + 4; i < end; ++i) {
      crc ^= file[i];
      for (int bit = 0; bit < 8; ++bit) {
        crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
      }
    }
    for (size_t i = 0; i < 4; ++i) {
      file[end + i] = static_cast<uint8_t>(~crc >> (24 - 8 * i));
    }
  }
}

Bytes makeJpeg(const JpegKind& kind, size_t width, size_t height, std::array<uint8_t, 4> inks) {
  struct Error {
    jpeg_error_mgr manager;
    Simd::Detail::JumpPoint point;
  } error;
  jpeg_compress_struct info = {};
  info.err = jpeg_std_error(&error.manager);
  error.manager.error_exit = [](j_common_ptr p) {
    longjmp(static_cast<Error*>(static_cast<void*>(p->err))->point.buffer, 1);
  };
  const auto space = static_cast<J_COLOR_SPACE>(kind.color_space);
  const bool four = space == JCS_CMYK || space == JCS_YCCK;
  const Picture picture =
      makePicture(width, height, space == JCS_GRAYSCALE ? SimdPixelFormatGray8 : SimdPixelFormatRgb24);
  Bytes inks_row;
  for (size_t x = 0; x < width; ++x) {
    inks_row.insert(inks_row.end(), inks.begin(), inks.end());
  }
  unsigned char* p_memory = nullptr;
  unsigned long size = 0;
  const bool written = Simd::Detail::runGuarded(error.point, [&] {
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &p_memory, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = four ? 4 : static_cast<int>(picture.pixelSize());
    info.in_color_space = four ? JCS_CMYK : space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, space);
    jpeg_set_quality(&info, 100, TRUE);
    info.comp_info[0].h_samp_factor = kind.horizontal;
    info.comp_info[0].v_samp_factor = kind.vertical;
    info.restart_in_rows = kind.restart_rows;
    info.arith_code = kind.arithmetic ? TRUE : FALSE;
    if (!kind.adobe_marker) {
      info.write_Adobe_marker = FALSE;
    }
    if (kind.progressive) {
      jpeg_simple_progression(&info);
    }
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
      const uint8_t* p_row =
          four ? inks_row.data() : picture.pixels.data() + info.next_scanline * picture.stride();
      JSAMPROW p_input = const_cast<JSAMPROW>(p_row);
      jpeg_write_scanlines(&info, &p_input, 1);
    }
    jpeg_finish_compress(&info);
  });
  jpeg_destroy_compress(&info);
  const Bytes file(p_memory, p_memory + (written ? size : 0));
  free(p_memory);
  return file;
}

JpegHeader jpegHeader(const Bytes& jpeg) {
  for (size_t at = 2; at + 12 < jpeg.size();) {
    const uint8_t marker = jpeg[at + 1];
    if (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC) {
      return {jpeg[at + 7] * size_t(256) + jpeg[at + 8], jpeg[at + 5] * size_t(256) + jpeg[at + 6],
              jpeg[at + 9], jpeg[at + 11] >> 4, jpeg[at + 11] & 15};
    }
    at += 2 + jpeg[at + 2] * size_t(256) + jpeg[at + 3];
  }
  return {};
}

}  // namespace simd_test
