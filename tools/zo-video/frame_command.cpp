#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <climits>
#include <cstdio>

#include "command.h"
#include "failure.h"
#include "picture.h"
#include "picture_file.h"
#include "source.h"
#include "text.h"
#include "video_picture.h"

namespace zo_tool {

namespace {

class FrameCommand : public Command {
 public:
  const char* name() const override { return "frame"; }
  const char* summary() const override { return "Extract one exact frame"; }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_option("--index", _index, "Index of the frame, counted from 0")
        ->type_name("I")
        ->required()
        ->transform(wholeNumber(0, LLONG_MAX));
    app.add_option("--out", _path, "Image to write: .jpg, .jpeg, .png, .pgm or .ppm")
        ->type_name("IMAGE")
        ->required();
    _size.declare(app, "Scale to that size; Wx or xH keep the shape");
    declareQuality(app, _quality);
    app.add_flag("--upright", _upright, "Turn as the file's rotation says");
    app.footer(
        "Examples:\n"
        "  zo-video frame clip.mp4 --index 250 --out frame250.png\n"
        "  zo-video frame phone.mov --index 0 --upright --size 320x --out thumbnail.jpg");
  }

  int run() override {
    checkPictureName(_path);
    Source source(_source);
    source.open(Access::NUMBERED);
    source.goTo(_index);
    zo::Frame frame;
    if (!source.read(frame)) {
      source.failOutOfRange(_index, source.reader().frameIndex() + 1);
    }
    if (!frame.initialized()) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT, "frame %lld has no picture: the decoder could not produce it",
           _index);
    }
    const zo::VideoRotation rotation = _upright ? source.reader().rotation() : zo::ZO_VIDEO_ROTATION_0;
    const zo::Size size = _size.resolve(uprightSize(frame.size(), rotation));
    PictureMaker maker;
    savePicture(_path, maker.makeUpright(frame, rotation, size), _quality);
    std::printf("frame %lld at %s, %d x %d: %s\n", _index, formatTime(frame.timestamp()).c_str(), size.width,
                size.height, oneLine(_path).c_str());
    return 0;
  }

 private:
  SourceOptions _source;
  WantedSize _size;
  std::string _path;
  long long _index = 0;
  int _quality = 90;
  bool _upright = false;
};

}  // namespace

std::unique_ptr<Command> makeFrameCommand() {
  return std::make_unique<FrameCommand>();
}

}  // namespace zo_tool
