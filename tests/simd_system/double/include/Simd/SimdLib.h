#ifndef SIMD_DOUBLE_SIMD_LIB_H
#define SIMD_DOUBLE_SIMD_LIB_H

// A stand-in for an installed Simd library: its interface as far as this project calls it, with more of the
// enumerators than are used.

#include <stddef.h>
#include <stdint.h>

#if defined(__cplusplus)
extern "C" {
#endif

typedef enum { SimdFalse = 0, SimdTrue = 1 } SimdBool;

typedef enum {
  SimdPixelFormatNone = 0,
  SimdPixelFormatGray8,
  SimdPixelFormatUv16,
  SimdPixelFormatBgr24,
  SimdPixelFormatBgra32,
  SimdPixelFormatInt16,
  SimdPixelFormatInt32,
  SimdPixelFormatInt64,
  SimdPixelFormatFloat,
  SimdPixelFormatDouble,
  SimdPixelFormatRgb24 = 16
} SimdPixelFormatType;

typedef enum {
  SimdImageFileUndefined = 0,
  SimdImageFilePgmTxt,
  SimdImageFilePgmBin,
  SimdImageFilePpmTxt,
  SimdImageFilePpmBin,
  SimdImageFilePng,
  SimdImageFileJpeg
} SimdImageFileType;

typedef enum { SimdYuvUnknown = -1, SimdYuvBt601, SimdYuvBt709, SimdYuvBt2020, SimdYuvTrect871 } SimdYuvType;

void SimdFree(void* ptr);
uint8_t* SimdImageSaveToMemory(const uint8_t* src, size_t stride, size_t width, size_t height,
                               SimdPixelFormatType format, SimdImageFileType file, int quality, size_t* size);
SimdBool SimdImageSaveToFile(const uint8_t* src, size_t stride, size_t width, size_t height,
                             SimdPixelFormatType format, SimdImageFileType file, int quality,
                             const char* path);
uint8_t* SimdNv12SaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* uv, size_t uvStride,
                                    size_t width, size_t height, SimdYuvType yuvType, int quality,
                                    size_t* size);
uint8_t* SimdYuv420pSaveAsJpegToMemory(const uint8_t* y, size_t yStride, const uint8_t* u, size_t uStride,
                                       const uint8_t* v, size_t vStride, size_t width, size_t height,
                                       SimdYuvType yuvType, int quality, size_t* size);
uint8_t* SimdImageLoadFromMemory(const uint8_t* data, size_t size, size_t* stride, size_t* width,
                                 size_t* height, SimdPixelFormatType* format);
uint8_t* SimdImageLoadFromFile(const char* path, size_t* stride, size_t* width, size_t* height,
                               SimdPixelFormatType* format);

#if defined(__cplusplus)
}
#endif

#endif
