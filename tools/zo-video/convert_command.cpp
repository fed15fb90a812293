#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>

#include "command.h"
#include "failure.h"
#include "options.h"
#include "picture_file.h"
#include "stop.h"
#include "text.h"
#include "zo_video/zo_video.h"

namespace zo_tool {

namespace {

const std::map<std::string, zo::VideoConverter::ScaleAlgorithm>& algorithms() {
  static const std::map<std::string, zo::VideoConverter::ScaleAlgorithm> BY_NAME = {
      {"default", zo::VideoConverter::ZO_SCALE_ALGORITHM_DEFAULT},
      {"nearest", zo::VideoConverter::ZO_SCALE_ALGORITHM_NEAREST},
      {"bilinear", zo::VideoConverter::ZO_SCALE_ALGORITHM_BILINEAR},
      {"bicubic", zo::VideoConverter::ZO_SCALE_ALGORITHM_BICUBIC},
      {"area", zo::VideoConverter::ZO_SCALE_ALGORITHM_AREA},
      {"lanczos", zo::VideoConverter::ZO_SCALE_ALGORITHM_LANCZOS}};
  return BY_NAME;
}

class ConvertCommand : public Command {
 public:
  const char* name() const override { return "convert"; }
  const char* summary() const override { return "Convert a still image to another kind or size"; }

  void declare(CLI::App& app) override {
    app.add_option("IN", _in, "Image to read: .jpg, .jpeg, .png, .pgm or .ppm")->required()->type_name("");
    app.add_option("OUT", _out, "Image to write: .jpg, .jpeg, .png, .pgm or .ppm")->required()->type_name("");
    _size.declare(app, "Scale to that size; Wx or xH keep the shape");
    app.add_option("--algorithm", _algorithm, "nearest, bilinear, bicubic, area, lanczos, default")
        ->type_name("NAME")
        ->capture_default_str()
        ->check(CLI::IsMember(algorithms()).description(""));
    declareQuality(app, _quality);
    app.footer(
        "The kind of OUT is told by its name, the kind of IN by its content.\n"
        "Transparency is dropped; colour saved as .pgm becomes grey.\n"
        "\n"
        "Examples:\n"
        "  zo-video convert photo.png photo.jpg --quality 85\n"
        "  zo-video convert photo.jpg thumbnail.png --size 160x --algorithm area");
  }

  int run() override {
    checkPictureName(_out);
    {
      std::ifstream file(_in);
      if (!file) {
        fail(zo::ZO_STATUS_OPEN_ERROR, "cannot read '%s': %s", _in.c_str(), std::strerror(errno));
      }
    }
    const std::shared_ptr<zo::Frame> p_image = load();
    checkStop();
    const zo::Size size = _size.resolve(p_image->size());
    if (size == p_image->size()) {
      savePicture(_out, *p_image, _quality);
    } else {
      zo::VideoConverter converter;
      zo::Frame scaled;
      converter.convert(*p_image, p_image->format(), size, scaled, algorithms().at(_algorithm));
      savePicture(_out, scaled, _quality);
    }
    std::printf("%d x %d: %s\n", size.width, size.height, oneLine(_out).c_str());
    return 0;
  }

 private:
  std::shared_ptr<zo::Frame> load() const {
    try {
      return zo::imageLoad(_in);
    } catch (const zo::Exception& e) {
      if (e.status() != zo::ZO_STATUS_CODEC_ERROR) {
        throw;
      }
      fail(e.status(), "cannot read '%s': it is damaged, or no JPEG, PNG, PGM or PPM image", _in.c_str());
    }
  }

  std::string _in;
  std::string _out;
  WantedSize _size;
  std::string _algorithm = "bicubic";
  int _quality = 90;
};

}  // namespace

std::unique_ptr<Command> makeConvertCommand() {
  return std::make_unique<ConvertCommand>();
}

}  // namespace zo_tool
