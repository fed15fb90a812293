#ifndef SIMD_SIMD_LIB_H
#define SIMD_SIMD_LIB_H

#include <stddef.h>
#include <stdint.h>

// The part of the Simd image library's plain interface that this project calls: image files to and from
// memory. Used when no installed Simd library is found (ZO_SIMD=bundled).

#define SIMD_API

#ifdef __cplusplus
extern "C" {
#endif

typedef enum { SimdFalse = 0, SimdTrue = 1 } SimdBool;

typedef enum {
  SimdPixelFormatNone = 0,
  SimdPixelFormatGray8 = 1,
  SimdPixelFormatUv16 = 2,
  SimdPixelFormatBgr24 = 3,
  SimdPixelFormatBgra32 = 4,
  SimdPixelFormatRgb24 = 16
} SimdPixelFormatType;

typedef enum {
  SimdImageFileUndefined = 0,
  SimdImageFilePgmTxt = 1,
  SimdImageFilePgmBin = 2,
  SimdImageFilePpmTxt = 3,
  SimdImageFilePpmBin = 4,
  SimdImageFilePng = 5,
  SimdImageFileJpeg = 6
} SimdImageFileType;

typedef enum {
  SimdYuvUnknown = -1,
  SimdYuvBt601 = 0,
  SimdYuvBt709 = 1,
  SimdYuvBt2020 = 2,
  SimdYuvTrect871 = 3
} SimdYuvType;

/// Releases memory that a function below returned. Null is allowed.
SIMD_API void SimdFree(void* ptr);

/// Encodes an image. The image is converted to what the file type holds: colour becomes grey in PGM, grey
/// becomes three equal channels in PPM.
/// @param format   Gray8, Bgr24, Bgra32 or Rgb24.
/// @param quality  Only for JPEG: 0 means 90, other values are clamped to 1 to 100. Colour is written 4:2:0
/// up
///                 to 90 and 4:4:4 above.
/// @return The file's bytes, released with SimdFree(), their number in *size; null when anything is wrong.
SIMD_API uint8_t* SimdImageSaveToMemory(const uint8_t* src, size_t stride, size_t width, size_t height,
                                        SimdPixelFormatType format, SimdImageFileType file, int quality,
                                        size_t* size);

/// The same into a file, which is opened only after the image has been encoded. SimdFalse when the image
/// cannot be encoded or the file cannot be written completely.
SIMD_API SimdBool SimdImageSaveToFile(const uint8_t* src, size_t stride, size_t width, size_t height,
                                      SimdPixelFormatType format, SimdImageFileType file, int quality,
                                      const char* path);

/// Compresses an NV12 picture to JPEG: 4:2:0, the samples as they are, without colour conversion. Chroma
/// planes are (width + 1) / 2 by (height + 1) / 2.
SIMD_API uint8_t* SimdNv12SaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* uv,
                                             size_t uvStride, size_t width, size_t height,
                                             SimdYuvType yuvType, int quality, size_t* size);

/// The same for three planes.
SIMD_API uint8_t* SimdYuv420pSaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* u,
                                                size_t uStride, const uint8_t* v, size_t vStride,
                                                size_t width, size_t height, SimdYuvType yuvType, int quality,
                                                size_t* size);

/// Decodes an image: PGM and PPM (text and binary), PNG, JPEG, told apart by their content. Alpha is dropped.
/// @param format  In: the wanted format (Gray8, Bgr24, Bgra32, Rgb24; None for the image's own, Gray8 or
/// Rgb24).
///                Out: the format delivered.
/// @return Pixels, released with SimdFree(); null for anything that is not an image. A JPEG that ends early
/// may come
///         out with the rest made up.
SIMD_API uint8_t* SimdImageLoadFromMemory(const uint8_t* data, size_t size, size_t* stride, size_t* width,
                                          size_t* height, SimdPixelFormatType* format);

SIMD_API uint8_t* SimdImageLoadFromFile(const char* path, size_t* stride, size_t* width, size_t* height,
                                        SimdPixelFormatType* format);

#ifdef __cplusplus
}
#endif

#endif
