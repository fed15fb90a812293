// JPEG coding in memory, and image files.
#include <turbojpeg.h>

#include <cstdio>
#include <memory>
#include <vector>

#include "zo_bench_jobs.h"
#include "zo_bench_peers.h"
#include "zo_bench_pictures.h"
#include "zo_video/zo_turbojpeg_handles.h"
#include "zo_video/zo_video.h"

namespace zo {
namespace bench {
namespace {

const Size SIZE(1920, 1080);
constexpr int QUALITY = 90;

using Bytes = std::vector<unsigned char>;

std::shared_ptr<PeerImages> openCvImages() {
  const auto p_bgr = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  return std::shared_ptr<PeerImages>(makeOpenCvImages(p_bgr->planeData(0), nullptr, SIZE.width, SIZE.height));
}

std::vector<Contender> encoding(FrameFormat format, int subsampling) {
  const auto p_frame = makePicture(format, SIZE);
  const std::shared_ptr<void> p_compressor(tjInitCompress(), &tjDestroy);
  const auto p_bytes = std::make_shared<Bytes>(tjBufSize(SIZE.width, SIZE.height, subsampling));
  const auto p_encoder = std::make_shared<JpegEncoder>();
  const auto p_out = std::make_shared<Buffer>();
  const bool packed = p_frame->planeCount() == 1;
  std::vector<Contender> contenders = {
      {"bare",
       [=](Stopwatch& watch) {
         const Planes planes(*p_frame);
         const unsigned char* sources[3] = {planes.data[0], planes.data[1], planes.data[2]};
         unsigned char* p_jpeg = p_bytes->data();
         unsigned long size = p_bytes->size();
         watch.start();
         if (packed) {
           tjCompress2(p_compressor.get(), planes.data[0], SIZE.width, planes.strides[0], SIZE.height,
                       TJPF_BGR, &p_jpeg, &size, subsampling, QUALITY, TJFLAG_NOREALLOC);
         } else {
           tjCompressFromYUVPlanes(p_compressor.get(), sources, SIZE.width, planes.strides, SIZE.height,
                                   subsampling, &p_jpeg, &size, QUALITY, TJFLAG_NOREALLOC);
         }
         watch.stop();
       }},
      {"ours", [=](Stopwatch& watch) {
         watch.start();
         p_encoder->encode(*p_frame, QUALITY, *p_out);
         watch.stop();
       }}};
  if (haveOpenCv() && packed) {
    const auto p_images = openCvImages();
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            p_images->encodeJpeg(QUALITY);
                            watch.stop();
                          }});
  }
  return contenders;
}

Buffer compressed() {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, SIZE);
  Buffer jpeg;
  JpegEncoder().encode(*p_frame, QUALITY, jpeg);
  return jpeg;
}

std::vector<Contender> decodingToPlanes() {
  const auto p_jpeg = std::make_shared<Buffer>(compressed());
  const std::shared_ptr<void> p_decompressor(tjInitDecompress(), &tjDestroy);
  const auto p_decoder = std::make_shared<JpegDecoder>();
  const auto p_bare_target = makePicture(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, SIZE);
  const auto p_target = std::make_shared<Frame>();
  return {{"bare",
           [=](Stopwatch& watch) {
             Planes planes(*p_bare_target);
             watch.start();
             int width = 0;
             int height = 0;
             int subsampling = 0;
             int colour_space = 0;
             tjDecompressHeader3(p_decompressor.get(), p_jpeg->data(), p_jpeg->size(), &width, &height,
                                 &subsampling, &colour_space);
             tjDecompressToYUVPlanes(p_decompressor.get(), p_jpeg->data(), p_jpeg->size(), planes.data, width,
                                     planes.strides, height, TJFLAG_NOREALLOC);
             watch.stop();
           }},
          {"ours", [=](Stopwatch& watch) {
             watch.start();
             p_decoder->decode(p_jpeg->data(), p_jpeg->size(), *p_target);
             watch.stop();
           }}};
}

void decodeBareToBgr(void* p_decompressor, const Buffer& jpeg, Frame& target) {
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colour_space = 0;
  tjDecompressHeader3(p_decompressor, jpeg.data(), jpeg.size(), &width, &height, &subsampling, &colour_space);
  tjDecompress2(p_decompressor, jpeg.data(), jpeg.size(), target.planeData(0), width,
                static_cast<int>(target.planeStride(0)), height, TJPF_BGR, 0);
}

std::vector<Contender> decodingToBgr() {
  const auto p_jpeg = std::make_shared<Buffer>(compressed());
  const std::shared_ptr<void> p_decompressor(tjInitDecompress(), &tjDestroy);
  std::vector<Contender> contenders = {{"bare",
                                        [=](Stopwatch& watch) {
                                          watch.start();
                                          Frame target;  // fresh memory, as the others return it
                                          target.reuse(ZO_FRAME_FORMAT_BGR24, SIZE, DeviceContext(), 0);
                                          decodeBareToBgr(p_decompressor.get(), *p_jpeg, target);
                                          watch.stop();
                                        }},
                                       {"ours", [=](Stopwatch& watch) {
                                          watch.start();
                                          decodeJpeg(p_jpeg->data(), p_jpeg->size());
                                          watch.stop();
                                        }}};
  if (haveOpenCv()) {
    const auto p_images = openCvImages();
    contenders.push_back({"OpenCV", [=](Stopwatch& watch) {
                            watch.start();
                            p_images->decodeJpeg(p_jpeg->data(), p_jpeg->size());
                            watch.stop();
                          }});
  }
  return contenders;
}

// --- Files -----------------------------------------------------------------------------------------------

void writeBytes(const std::string& path, const unsigned char* p_data, std::size_t size) {
  std::FILE* const p_file = std::fopen(path.c_str(), "wb");
  if (p_file != nullptr) {
    std::fwrite(p_data, 1, size, p_file);
    std::fclose(p_file);
  }
}

Contender openCvFile(const std::string& path, bool save) {
  const auto p_images = openCvImages();
  if (!save) {
    p_images->save(path);
  }
  return {"OpenCV", [=](Stopwatch& watch) {
            watch.start();
            save ? p_images->save(path) : p_images->load(path);
            watch.stop();
          }};
}

std::vector<Contender> fileWriting(const std::string& path) {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  const std::shared_ptr<void> p_compressor(tjInitCompress(), &tjDestroy);
  const auto p_bytes = std::make_shared<Bytes>(tjBufSize(SIZE.width, SIZE.height, TJSAMP_444));
  std::vector<Contender> contenders = {{"bare",
                                        [=](Stopwatch& watch) {
                                          unsigned char* p_jpeg = p_bytes->data();
                                          unsigned long size = p_bytes->size();
                                          watch.start();
                                          tjCompress2(p_compressor.get(), p_frame->planeData(0), SIZE.width,
                                                      static_cast<int>(p_frame->planeStride(0)), SIZE.height,
                                                      TJPF_BGR, &p_jpeg, &size, TJSAMP_444, QUALITY,
                                                      TJFLAG_NOREALLOC);
                                          writeBytes(path, p_jpeg, size);
                                          watch.stop();
                                        }},
                                       {"ours", [=](Stopwatch& watch) {
                                          watch.start();
                                          imageWrite(path, *p_frame, QUALITY);
                                          watch.stop();
                                        }}};
  if (haveOpenCv()) {
    contenders.push_back(openCvFile(path, true));
  }
  return contenders;
}

std::vector<Contender> fileReading(const std::string& path) {
  const Buffer jpeg = compressed();
  writeBytes(path, jpeg.data(), jpeg.size());
  const std::shared_ptr<void> p_decompressor(tjInitDecompress(), &tjDestroy);
  const auto p_bare_target = makePicture(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, SIZE);
  const auto p_target = std::make_shared<Frame>();
  return {{"bare",
           [=](Stopwatch& watch) {
             Planes planes(*p_bare_target);
             watch.start();
             Bytes bytes;
             std::FILE* const p_file = std::fopen(path.c_str(), "rb");
             if (p_file != nullptr) {
               std::fseek(p_file, 0, SEEK_END);
               bytes.resize(static_cast<std::size_t>(std::ftell(p_file)));
               std::rewind(p_file);
               bytes.resize(std::fread(bytes.data(), 1, bytes.size(), p_file));
               std::fclose(p_file);
             }
             int width = 0;
             int height = 0;
             int subsampling = 0;
             int colour_space = 0;
             tjDecompressHeader3(p_decompressor.get(), bytes.data(), bytes.size(), &width, &height,
                                 &subsampling, &colour_space);
             tjDecompressToYUVPlanes(p_decompressor.get(), bytes.data(), bytes.size(), planes.data, width,
                                     planes.strides, height, TJFLAG_NOREALLOC);
             watch.stop();
           }},
          {"ours", [=](Stopwatch& watch) {
             watch.start();
             imageRead(path, *p_target);
             watch.stop();
           }}};
}

// Nothing bare does the same as a whole; a plain JPEG of the same picture is the measure.
std::vector<Contender> fileSaving(const std::string& path, bool save) {
  const auto p_frame = makePicture(ZO_FRAME_FORMAT_BGR24, SIZE);
  imageSave(path, *p_frame, QUALITY);
  std::vector<Contender> contenders = {{"ours", [=](Stopwatch& watch) {
                                          watch.start();
                                          if (save) {
                                            imageSave(path, *p_frame, QUALITY);
                                          } else {
                                            imageLoad(path);
                                          }
                                          watch.stop();
                                        }}};
  if (haveOpenCv()) {
    contenders.push_back(openCvFile(path, save));
  }
  return contenders;
}

}  // namespace

void addImageJobs(Jobs& jobs, const std::string& clips) {
  jobs.push_back(
      {"JPEG encode", "I420 1080p", [] { return encoding(ZO_FRAME_FORMAT_YUV420_PLANAR_I420, TJSAMP_420); }});
  jobs.push_back({"JPEG encode", "BGR24 1080p", [] { return encoding(ZO_FRAME_FORMAT_BGR24, TJSAMP_444); }});
  jobs.push_back({"JPEG decode", "to planes 1080p", [] { return decodingToPlanes(); }});
  jobs.push_back({"JPEG decode", "to BGR24 1080p", [] { return decodingToBgr(); }});
  jobs.push_back({"image file", "write JPEG 1080p", [=] { return fileWriting(clips + "/image_write.jpg"); }});
  jobs.push_back({"image file", "read JPEG 1080p", [=] { return fileReading(clips + "/image_read.jpg"); }});
  for (const std::string extension : {"jpg", "png", "ppm"}) {
    const std::string path = clips + "/image." + extension;
    jobs.push_back({"image save", extension + " 1080p", [=] { return fileSaving(path, true); }});
    jobs.push_back({"image load", extension + " 1080p", [=] { return fileSaving(path, false); }});
  }
}

}  // namespace bench
}  // namespace zo
