#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>
#include <stdexcept>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "zo_bench_bare.h"
#include "zo_bench_peers.h"

namespace zo {
namespace bench {
namespace {

// It takes as many decoder threads as the process may use processors; main() has left it one.
class OpenCvReader : public PeerReader {
 public:
  explicit OpenCvReader(const std::string& path) {
    cv::setNumThreads(1);
    if (!_capture.open(path, cv::CAP_FFMPEG)) {
      throw std::runtime_error("OpenCV cannot open " + path);
    }
    av_log_set_level(AV_LOG_QUIET);  // opening has raised it, and writing lines costs time
  }

  bool next() override { return _capture.read(_image); }
  void get(long long frame_index) override {
    _capture.set(cv::CAP_PROP_POS_FRAMES, static_cast<double>(frame_index));
    if (!_capture.read(_image)) {
      _image.release();
    }
  }
  uint64_t pictureHash() const override {
    return _image.empty() ? 0
                          : hashPlane(_image.data, static_cast<std::ptrdiff_t>(_image.step[0]),
                                      _image.cols * 3, _image.rows, 1);
  }

 private:
  cv::VideoCapture _capture;
  cv::Mat _image;
};

class OpenCvImages : public PeerImages {
 public:
  OpenCvImages(const unsigned char* p_bgr, const unsigned char* p_i420, int width, int height) {
    cv::setNumThreads(1);
    _image = cv::Mat(height, width, CV_8UC3, const_cast<unsigned char*>(p_bgr)).clone();
    if (p_i420 != nullptr) {
      _planar = cv::Mat(height * 3 / 2, width, CV_8UC1, const_cast<unsigned char*>(p_i420)).clone();
    }
  }

  void i420ToBgr() override { cv::cvtColor(_planar, _result, cv::COLOR_YUV2BGR_I420); }
  void bgrResized() override { cv::resize(_image, _result, cv::Size(640, 360), 0, 0, cv::INTER_CUBIC); }
  void encodeJpeg(int quality) override {
    cv::imencode(".jpg", _image, _bytes, {cv::IMWRITE_JPEG_QUALITY, quality});
  }
  void decodeJpeg(const unsigned char* p_data, std::size_t size) override {
    const cv::Mat data(1, static_cast<int>(size), CV_8UC1, const_cast<unsigned char*>(p_data));
    cv::imdecode(data, cv::IMREAD_COLOR, &_result);
  }
  void save(const std::string& path) override { cv::imwrite(path, _image, {cv::IMWRITE_JPEG_QUALITY, 90}); }
  void load(const std::string& path) override { _result = cv::imread(path, cv::IMREAD_COLOR); }
  void line(int x1, int y1, int x2, int y2, int thickness) override {
    cv::line(_image, cv::Point(x1, y1), cv::Point(x2, y2), cv::Scalar(10, 200, 30), thickness);
  }
  void rectangle(int x, int y, int width, int height, int thickness) override {
    cv::rectangle(_image, cv::Rect(x, y, width, height), cv::Scalar(10, 200, 30), thickness);
  }
  void text(const std::string& text, int x, int y, int height) override {
    cv::putText(_image, text, cv::Point(x, y + height), cv::FONT_HERSHEY_SIMPLEX, height / 30.0,
                cv::Scalar(10, 200, 30), 1, cv::LINE_AA);
  }

 private:
  cv::Mat _image;
  cv::Mat _planar;
  cv::Mat _result;
  std::vector<unsigned char> _bytes;
};

}  // namespace

bool haveOpenCv() {
  return true;
}

std::unique_ptr<PeerReader> openOpenCv(const std::string& path) {
  return std::unique_ptr<PeerReader>(new OpenCvReader(path));
}

std::unique_ptr<PeerImages> makeOpenCvImages(const unsigned char* p_bgr, const unsigned char* p_i420,
                                             int width, int height) {
  return std::unique_ptr<PeerImages>(new OpenCvImages(p_bgr, p_i420, width, height));
}

}  // namespace bench
}  // namespace zo
