#ifndef SIMD_SRC_CODECS_H
#define SIMD_SRC_CODECS_H

#include <cstddef>
#include <cstdint>

#include "byte_sink.h"
#include "image.h"

namespace Simd {
namespace Detail {

// Coders of the image file types. All of them report failure by false, never throw, and leave the result in
// an undefined state then. A decoder delivers the wanted format; SimdPixelFormatNone stands for Gray8 or
// Rgb24, whatever the file holds.

bool isJpeg(const uint8_t* p_data, size_t size) noexcept;
bool decodeJpeg(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept;
bool encodeJpeg(const ImageView& image, int quality, ByteSink& sink) noexcept;

/// A 4:2:0 picture. With u_step and v_step 2, chroma samples are every second byte (interleaved planes).
struct Yuv420View {
  const uint8_t* p_y;
  size_t y_stride;
  const uint8_t* p_u;
  size_t u_stride;
  const uint8_t* p_v;
  size_t v_stride;
  size_t chroma_step;
  size_t width;
  size_t height;
};
bool encodeJpegYuv420(const Yuv420View& image, int quality, ByteSink& sink) noexcept;

bool isPng(const uint8_t* p_data, size_t size) noexcept;
bool decodePng(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept;
bool encodePng(const ImageView& image, ByteSink& sink) noexcept;

bool isPnm(const uint8_t* p_data, size_t size) noexcept;
bool decodePnm(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept;
/// @param color  PPM, otherwise PGM.
bool encodePnm(const ImageView& image, bool color, bool text, ByteSink& sink) noexcept;

}  // namespace Detail
}  // namespace Simd

#endif
