#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cinttypes>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "command.h"
#include "progress.h"
#include "source.h"
#include "text.h"

namespace zo_tool {

namespace {

/// Entries that containers are known to use. A reader gives the value of a key, it cannot list the keys.
const char* const METADATA_KEYS[] = {"title",
                                     "artist",
                                     "album",
                                     "album_artist",
                                     "composer",
                                     "author",
                                     "performer",
                                     "publisher",
                                     "show",
                                     "episode_id",
                                     "season_number",
                                     "network",
                                     "track",
                                     "disc",
                                     "genre",
                                     "language",
                                     "date",
                                     "year",
                                     "creation_time",
                                     "comment",
                                     "description",
                                     "synopsis",
                                     "keywords",
                                     "copyright",
                                     "location",
                                     "make",
                                     "model",
                                     "encoder",
                                     "encoded_by",
                                     "handler_name",
                                     "major_brand",
                                     "minor_version",
                                     "compatible_brands",
                                     "timecode",
                                     "service_name",
                                     "service_provider",
                                     "com.android.version",
                                     "com.android.capture.fps",
                                     "com.apple.quicktime.make",
                                     "com.apple.quicktime.model",
                                     "com.apple.quicktime.software",
                                     "com.apple.quicktime.creationdate",
                                     "com.apple.quicktime.location.ISO6709"};

/// After so many errors without a frame in between, nothing more is expected to come.
constexpr int ERRORS_IN_A_ROW = 1000;

struct Info {
  std::string url;
  zo::Size size;
  zo::FrameFormat format = zo::ZO_FRAME_FORMAT_UNDEFINED;
  double fps = 0;
  zo::VideoRotation rotation = zo::ZO_VIDEO_ROTATION_0;
  long long frame_count = -1;  // -1: not known
  bool has_first = false;
  long long first_ms = 0;
  bool has_last = false;
  long long last_ms = 0;
  bool is_damaged = false;
  std::vector<std::pair<std::string, std::string>> metadata;
};

/// Clockwise degrees, -1 for an angle that is no multiple of 90.
int degrees(zo::VideoRotation rotation) {
  return rotation <= zo::ZO_VIDEO_ROTATION_270 ? static_cast<int>(rotation) * 90 : -1;
}

std::string formatTimeOrUnknown(bool known, long long milliseconds) {
  return known ? formatTime(milliseconds) : "not known";
}

class InfoCommand : public Command {
 public:
  const char* name() const override { return "info"; }
  const char* summary() const override {
    return "Show size, format, frame rate, rotation, frame count, times, metadata";
  }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_flag("--json", _json, "Print one JSON object");
    app.footer(
        "The frames are counted, not guessed: from the index of the container's\n"
        "packets, or, where the container reports no duration, by reading to the end.\n"
        "A live network stream is not counted.\n"
        "\n"
        "JSON keys: url, width, height, format, fps, rotation (degrees clockwise that\n"
        "make the picture stand upright), frame_count, first_timestamp_ms,\n"
        "last_timestamp_ms, metadata (an object of texts). What is not known is null.\n"
        "\n"
        "Examples:\n"
        "  zo-video info clip.mp4\n"
        "  zo-video info clip.mp4 --json | jq .frame_count\n"
        "  zo-video info rtsp://camera/stream --timeout 5");
  }

  int run() override {
    const Info info = collect();
    if (_json) {
      printJson(info);
    } else {
      printText(info);
    }
    return 0;
  }

 private:
  Info collect() {
    Source source(_source);
    source.open(Access::NUMBERED);
    const zo::VideoReader& reader = source.reader();
    Info info;
    info.url = _source.url;
    info.size = reader.size();
    info.format = reader.format();
    info.fps = reader.fps();
    info.rotation = reader.rotation();
    for (const char* p_key : METADATA_KEYS) {
      const char* p_value = reader.getMetadataValue(p_key);
      if (p_value != nullptr) {
        info.metadata.emplace_back(p_key, p_value);
      }
    }
    addTimes(source, info);
    return info;
  }

  void addTimes(Source& source, Info& info) const {
    zo::Frame frame;
    if (!readPastDamage(source, frame, info)) {
      info.frame_count = source.frameCount();
      return;
    }
    info.has_first = isPlausibleTime(frame.timestamp());
    info.first_ms = frame.timestamp();
    if (source.isNumbered()) {
      info.frame_count = source.frameCount();
      if (info.frame_count > 1) {
        goToLast(source, frame, info);
      }
    } else if (isNetworkUrl(_source.url)) {
      return;
    } else {
      info.frame_count = countFrames(source, frame, info);
    }
    info.has_last = isPlausibleTime(source.reader().timestamp());
    info.last_ms = source.reader().timestamp();
  }

  /// Reads a frame. A packet that cannot be read or decoded does not end this: the next one may be sound.
  static bool readPastDamage(Source& source, zo::Frame& frame, Info& info) {
    for (int errors = 0;; ++errors) {
      try {
        return source.read(frame);
      } catch (const zo::Exception& e) {
        checkStop();
        const bool damaged =
            e.status() == zo::ZO_STATUS_READ_ERROR || e.status() == zo::ZO_STATUS_DECODER_ERROR;
        if (!damaged || errors == ERRORS_IN_A_ROW) {
          throw;
        }
        info.is_damaged = true;
      }
    }
  }

  static void goToLast(Source& source, zo::Frame& frame, Info& info) {
    try {
      source.goTo(info.frame_count - 1);
    } catch (const zo::Exception& e) {
      checkStop();
      if (e.status() != zo::ZO_STATUS_READ_ERROR && e.status() != zo::ZO_STATUS_DECODER_ERROR) {
        throw;
      }
      info.is_damaged = true;
    }
    bool more = true;
    while (more && source.reader().frameIndex() < info.frame_count - 1) {
      more = readPastDamage(source, frame, info);
    }
  }

  /// Reads to the end, the first frame being read already.
  static long long countFrames(Source& source, zo::Frame& frame, Info& info) {
    Progress progress("frames", 0);
    long long count = 1;
    while (readPastDamage(source, frame, info)) {
      progress.update(++count);
    }
    return count;
  }

  static void printJson(const Info& info) {
    nlohmann::ordered_json json;
    json["url"] = info.url;
    json["width"] = info.size.width;
    json["height"] = info.size.height;
    json["format"] = zo::toString(info.format);
    json["fps"] = info.fps;
    json["rotation"] = nullptr;
    if (degrees(info.rotation) >= 0) {
      json["rotation"] = degrees(info.rotation);
    }
    json["frame_count"] = nullptr;
    if (info.frame_count >= 0) {
      json["frame_count"] = info.frame_count;
    }
    json["first_timestamp_ms"] = nullptr;
    if (info.has_first) {
      json["first_timestamp_ms"] = info.first_ms;
    }
    json["last_timestamp_ms"] = nullptr;
    if (info.has_last) {
      json["last_timestamp_ms"] = info.last_ms;
    }
    json["metadata"] = nlohmann::ordered_json::object();
    for (const auto& entry : info.metadata) {
      json["metadata"][entry.first] = entry.second;
    }
    std::puts(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
  }

  static void printText(const Info& info) {
    std::printf("File:         %s\n", oneLine(info.url).c_str());
    std::printf("Size:         %d x %d\n", info.size.width, info.size.height);
    std::printf("Format:       %s\n", zo::toString(info.format));
    if (info.fps > 0) {
      std::printf("Frame rate:   %.6g frames per second\n", info.fps);
    } else {
      std::printf("Frame rate:   not known\n");
    }
    if (degrees(info.rotation) < 0) {
      std::printf("Rotation:     no multiple of 90 degrees\n");
    } else if (degrees(info.rotation) == 0) {
      std::printf("Rotation:     none\n");
    } else {
      std::printf("Rotation:     %d degrees clockwise make it stand upright\n", degrees(info.rotation));
    }
    if (info.frame_count >= 0) {
      std::printf("Frames:       %lld\n", info.frame_count);
    } else {
      std::printf("Frames:       not known\n");
    }
    std::printf("First frame:  %s\n", formatTimeOrUnknown(info.has_first, info.first_ms).c_str());
    std::printf("Last frame:   %s\n", formatTimeOrUnknown(info.has_last, info.last_ms).c_str());
    if (info.is_damaged) {
      std::printf("Damaged:      yes, not everything can be decoded\n");
    }
    if (info.metadata.empty()) {
      return;
    }
    std::printf("Metadata:\n");
    for (const auto& entry : info.metadata) {
      std::printf("  %s: %s\n", entry.first.c_str(), oneLine(entry.second).c_str());
    }
  }

  SourceOptions _source;
  bool _json = false;
};

}  // namespace

std::unique_ptr<Command> makeInfoCommand() {
  return std::make_unique<InfoCommand>();
}

}  // namespace zo_tool
