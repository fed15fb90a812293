#ifndef ZO_BENCHMARKS_ZO_BENCH_PEERS_H
#define ZO_BENCHMARKS_ZO_BENCH_PEERS_H

#include <cstdint>
#include <memory>
#include <string>

namespace zo {
namespace bench {

/// Another library's way of handing out pictures by their index.
class PeerReader {
 public:
  virtual ~PeerReader() = default;
  virtual bool next() = 0;
  virtual void get(long long frame_index) = 0;
  virtual uint64_t pictureHash() const = 0;
};

/// Opens a file with one decoder thread. Null when the library was not there at build time. The returned
/// reader is open and indexed. Throws std::runtime_error.
std::unique_ptr<PeerReader> openFfms(const std::string& path);
std::unique_ptr<PeerReader> openOpenCv(const std::string& path);

/// True when the library was there at build time.
bool haveFfms();
bool haveOpenCv();

/// OpenCV's other ways. Each keeps its images between calls; null without the library.
class PeerImages {
 public:
  virtual ~PeerImages() = default;
  virtual void i420ToBgr() = 0;
  virtual void bgrResized() = 0;
  virtual void encodeJpeg(int quality) = 0;
  virtual void decodeJpeg(const unsigned char* p_data, std::size_t size) = 0;
  virtual void save(const std::string& path) = 0;
  virtual void load(const std::string& path) = 0;
  virtual void line(int x1, int y1, int x2, int y2, int thickness) = 0;
  virtual void rectangle(int x, int y, int width, int height, int thickness) = 0;
  virtual void text(const std::string& text, int x, int y, int height) = 0;
};

/// @param p_bgr   Tightly packed picture to start from.
/// @param p_i420  The same, planar; may be null.
std::unique_ptr<PeerImages> makeOpenCvImages(const unsigned char* p_bgr, const unsigned char* p_i420,
                                             int width, int height);

}  // namespace bench
}  // namespace zo

#endif
