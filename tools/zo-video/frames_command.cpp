#include <sys/stat.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstring>

#include "command.h"
#include "failure.h"
#include "picture.h"
#include "picture_file.h"
#include "progress.h"
#include "source.h"
#include "text.h"
#include "video_picture.h"

namespace zo_tool {

namespace {

/// Lets through at most so many frames per second of stream time, counted from the first one.
class RateLimit {
 public:
  explicit RateLimit(double max_fps) : _max_fps(max_fps) {}

  bool letsThrough(long long timestamp) {
    if (_max_fps <= 0) {
      return true;
    }
    if (_passed == 0) {
      _first = timestamp;
    }
    const double due = static_cast<double>(_first) + 1000.0 * static_cast<double>(_passed) / _max_fps;
    if (_passed > 0 && static_cast<double>(timestamp) < std::floor(due)) {
      return false;
    }
    ++_passed;
    return true;
  }

 private:
  double _max_fps;
  long long _passed = 0;
  long long _first = 0;
};

/// Makes a folder and the folders above it.
void makeFolder(const std::string& path) {
  int error = 0;
  const auto make = [&error](const std::string& folder) {
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST && error == 0) {
      error = errno;
    }
  };
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    make(path.substr(0, slash));
  }
  make(path);
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    fail(zo::ZO_STATUS_WRITE_ERROR, "cannot make the folder '%s': %s", path.c_str(),
         std::strerror(error != 0 ? error : errno));
  }
  if (!S_ISDIR(status.st_mode)) {
    fail(zo::ZO_STATUS_WRITE_ERROR, "cannot make the folder '%s': there is a file of that name",
         path.c_str());
  }
}

class FramesCommand : public Command {
 public:
  const char* name() const override { return "frames"; }
  const char* summary() const override { return "Extract frames as numbered image files"; }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_option("--out", _folder, "Folder for the pictures, made when missing")
        ->type_name("DIR")
        ->required();
    app.add_option("--max-fps", _max_fps, "At most so many per second; 0.5: one in 2 seconds")
        ->type_name("N")
        ->check(number(0.001, 1000000));
    _size.declare(app, "Scale to that size; Wx or xH keep the shape");
    app.add_option("--ext", _extension, "Kind of image: jpg, png or ppm")
        ->type_name("EXT")
        ->capture_default_str()
        ->check(CLI::IsMember({"jpg", "png", "ppm"}).description(""));
    declareQuality(app, _quality);
    app.add_option("--from", _from, "Index of the first frame, counted from 0")
        ->type_name("I")
        ->transform(wholeNumber(0, LLONG_MAX));
    app.add_option("--count", _count, "Number of pictures to write")
        ->type_name("N")
        ->transform(wholeNumber(1, LLONG_MAX));
    app.add_flag("--stamp", _stamp, "Draw index and time onto the pictures");
    app.add_flag("--upright", _upright, "Turn as the file's rotation says");
    app.footer(
        "The files are named after the frame's index: frame_000000.jpg,\n"
        "frame_000001.jpg, ... A frame that the decoder could not produce leaves a gap.\n"
        "Files of an earlier run are replaced.\n"
        "\n"
        "Examples:\n"
        "  zo-video frames clip.mp4 --out pictures\n"
        "  zo-video frames clip.mp4 --out pictures --from 250 --count 10 --ext png\n"
        "  zo-video frames clip.mp4 --out pictures --max-fps 1 --size 640x --stamp");
  }

  int run() override {
    makeFolder(_folder);
    Source source(_source);
    source.open(isNetworkUrl(_source.url) && _from == 0 ? Access::IN_ORDER : Access::NUMBERED);
    if (_from > 0) {
      source.goTo(_from);
    }
    extract(source);
    if (_written == 0 && _without_picture > 0) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT,
           "'%s': none of the %lld frames has a picture (a stream without timestamps has to be put into a "
           "container)",
           _source.url.c_str(), _without_picture);
    }
    report();
    return 0;
  }

 private:
  void extract(Source& source) {
    Progress progress("frames", expectedFrames(source));
    RateLimit limit(_max_fps);
    PictureMaker maker;
    zo::Frame frame;
    long long done = 0;
    while ((_count == 0 || _written < _count) && source.read(frame)) {
      progress.update(++done);
      if (!frame.initialized()) {
        ++_without_picture;
      } else if (limit.letsThrough(frame.timestamp())) {
        write(frame, source.reader(), maker);
      }
    }
  }

  /// Frames that will be read, 0 when that is not known.
  long long expectedFrames(const Source& source) const {
    if (!source.isNumbered()) {
      return _max_fps > 0 ? 0 : _count;
    }
    const long long rest = source.frameCount() - _from;
    return _count > 0 && _max_fps <= 0 ? std::min(_count, rest) : rest;
  }

  void write(const zo::Frame& frame, const zo::VideoReader& reader, PictureMaker& maker) {
    const zo::VideoRotation rotation = _upright ? reader.rotation() : zo::ZO_VIDEO_ROTATION_0;
    const zo::Size size = _size.resolve(uprightSize(frame.size(), rotation));
    zo::Frame& picture = maker.makeUpright(frame, rotation, size);
    if (_stamp) {
      stamp(picture, reader.frameIndex(), frame.timestamp());
    }
    char name[64];
    std::snprintf(name, sizeof name, "frame_%06lld.%s", reader.frameIndex(), _extension.c_str());
    savePicture(_folder + "/" + name, picture, _quality);
    if (_written == 0) {
      _first_name = name;
    }
    _last_name = name;
    ++_written;
  }

  void report() const {
    if (_written == 0) {
      std::printf("no frame to write\n");
    } else if (_written == 1) {
      std::printf("1 picture in %s: %s\n", oneLine(_folder).c_str(), _first_name.c_str());
    } else {
      std::printf("%lld pictures in %s: %s to %s\n", _written, oneLine(_folder).c_str(), _first_name.c_str(),
                  _last_name.c_str());
    }
    if (_without_picture > 0) {
      std::printf("%s without a picture left out\n", counted(_without_picture, "frame").c_str());
    }
  }

  SourceOptions _source;
  std::string _folder;
  WantedSize _size;
  std::string _extension = "jpg";
  double _max_fps = 0;
  int _quality = 90;
  long long _from = 0;
  long long _count = 0;
  bool _stamp = false;
  bool _upright = false;
  long long _written = 0;
  long long _without_picture = 0;
  std::string _first_name;
  std::string _last_name;
};

}  // namespace

std::unique_ptr<Command> makeFramesCommand() {
  return std::make_unique<FramesCommand>();
}

}  // namespace zo_tool
