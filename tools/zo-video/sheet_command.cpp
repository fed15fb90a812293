#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>

#include "command.h"
#include "contact_sheet.h"
#include "failure.h"
#include "picture.h"
#include "picture_file.h"
#include "progress.h"
#include "source.h"
#include "text.h"
#include "video_picture.h"

namespace zo_tool {

namespace {

/// How far to look for a picture when a chosen frame has none.
constexpr int FRAMES_TO_TRY = 8;

class SheetCommand : public Command {
 public:
  const char* name() const override { return "sheet"; }
  const char* summary() const override { return "Make a contact sheet of evenly spaced frames"; }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_option("--out", _path, "Image to write: .jpg, .jpeg, .png, .pgm or .ppm")
        ->type_name("IMAGE")
        ->required();
    app.add_option("--columns", _columns, "Pictures in a row")
        ->type_name("C")
        ->capture_default_str()
        ->transform(wholeNumber(1, 100));
    app.add_option("--rows", _rows, "Rows of pictures")
        ->type_name("R")
        ->capture_default_str()
        ->transform(wholeNumber(1, 1000));
    app.add_option("--width", _width, "Width of the sheet in pixels")
        ->type_name("W")
        ->capture_default_str()
        ->transform(wholeNumber(64, 32768));
    declareQuality(app, _quality);
    app.footer(
        "The pictures keep their shape and stand upright as the file's rotation says.\n"
        "Underneath each are its index and time. A video with fewer frames than places\n"
        "gives a smaller sheet.\n"
        "\n"
        "Examples:\n"
        "  zo-video sheet clip.mp4 --out sheet.jpg\n"
        "  zo-video sheet clip.mp4 --out sheet.png --columns 6 --rows 8 --width 1920");
  }

  int run() override {
    checkPictureName(_path);
    Source source(_source);
    source.requireRestart();
    source.open(Access::NUMBERED);
    const long long frames = source.isNumbered() ? source.frameCount() : countFrames(source);
    if (frames == 0) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT, "'%s' has no frames", _source.url.c_str());
    }
    const int count = static_cast<int>(std::min<long long>(frames, static_cast<long long>(_columns) * _rows));
    ContactSheet sheet(_width, std::min(_columns, count), count,
                       uprightSize(source.reader().size(), source.reader().rotation()));
    sheet.setHeading(baseName(_source.url), details(source.reader(), frames));
    place(source, frames, count, sheet);
    savePicture(_path, sheet.page(), _quality);
    std::printf("%s of %lld in %s\n", counted(count, "frame").c_str(), frames, oneLine(_path).c_str());
    return 0;
  }

 private:
  /// Counts by reading, then starts again.
  static long long countFrames(Source& source) {
    long long count = 0;
    {
      Progress progress("frames counted", 0);
      zo::Frame frame;
      while (source.read(frame)) {
        progress.update(++count);
      }
    }
    source.open(Access::IN_ORDER);
    return count;
  }

  static std::string details(const zo::VideoReader& reader, long long frames) {
    const zo::Size size = uprightSize(reader.size(), reader.rotation());
    std::string text =
        std::to_string(size.width) + " x " + std::to_string(size.height) + "   " + counted(frames, "frame");
    if (reader.fps() > 0) {
      char fps[64];
      std::snprintf(fps, sizeof fps, "   %.4g fps   %s", reader.fps(),
                    formatDuration(static_cast<double>(frames) / reader.fps()).c_str());
      text += fps;
    }
    return text;
  }

  /// Takes the middle frame of `count` equal stretches.
  static void place(Source& source, long long frames, int count, ContactSheet& sheet) {
    Progress progress("pictures", count);
    PictureMaker maker;
    zo::Frame frame;
    int with_picture = 0;
    for (int position = 0; position < count; ++position) {
      const long long start = frames * position / count;
      const long long next = frames * (position + 1) / count;
      const long long index = start + (next - start - 1) / 2;
      source.goTo(index);
      if (!readPicture(source, next, frame)) {
        sheet.placeNothing(position, index, source.reader().timestamp());
        continue;
      }
      const zo::VideoRotation rotation = source.reader().rotation();
      const zo::Size size = fitInto(uprightSize(frame.size(), rotation), sheet.cellSize());
      const bool shrinks = size.width < uprightSize(frame.size(), rotation).width;
      const zo::Frame& picture = maker.makeUpright(frame, rotation, size,
                                                   shrinks ? zo::VideoConverter::ZO_SCALE_ALGORITHM_AREA
                                                           : zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC);
      sheet.place(position, picture, source.reader().frameIndex(), frame.timestamp());
      progress.update(++with_picture);
    }
    if (with_picture == 0) {
      fail(zo::ZO_STATUS_UNEXPECTED_RESULT,
           "no frame has a picture (a stream without timestamps has to be put into a container)");
    }
  }

  /// Reads the frame, or the first of those after it (below `end`) that has a picture.
  static bool readPicture(Source& source, long long end, zo::Frame& frame) {
    for (int tried = 0; tried < FRAMES_TO_TRY && source.read(frame); ++tried) {
      if (frame.initialized()) {
        return true;
      }
      if (source.reader().frameIndex() + 1 >= end) {
        return false;
      }
    }
    return false;
  }

  SourceOptions _source;
  std::string _path;
  int _columns = 4;
  int _rows = 4;
  int _width = 1280;
  int _quality = 90;
};

}  // namespace

std::unique_ptr<Command> makeSheetCommand() {
  return std::make_unique<SheetCommand>();
}

}  // namespace zo_tool
