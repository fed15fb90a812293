#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <locale>
#include <nlohmann/json.hpp>

#include "command.h"
#include "source.h"
#include "text.h"

namespace zo_tool {

namespace {

constexpr uint32_t KEY_FRAME_FLAG = 0x80000000U;

/// What the file beside a video holds.
struct IndexFile {
  long long frames = 0;
  long long key_frames = 0;

  explicit IndexFile(const std::string& path) {
    std::ifstream file(path);
    file.imbue(std::locale::classic());
    for (uint32_t entry = 0; file >> entry; ++frames) {
      if ((entry & KEY_FRAME_FLAG) != 0) {
        ++key_frames;
      }
    }
  }
};

class IndexCommand : public Command {
 public:
  const char* name() const override { return "index"; }
  const char* summary() const override { return "Build or load the index that is kept beside a file"; }

  void declare(CLI::App& app) override {
    _source.declare(app);
    app.add_flag("--json", _json, "Print one JSON object");
    app.footer(
        "The index is kept in FILE.zo. Programs that open the file with the navigation\n"
        "cache then need not scan it. It is trusted as it is: delete it when the video\n"
        "changes. In a folder that cannot be written to, the index is built in memory\n"
        "only, and the number of key frames is not known. Ctrl-C leaves no new file, but\n"
        "with --skip-errors a time-out counts as an error: the index then ends there.\n"
        "\n"
        "JSON keys: url, frame_count, key_frame_count (null when not known), index_file\n"
        "(null when there is none), loaded (true: the index file was there already).\n"
        "\n"
        "Examples:\n"
        "  zo-video index clip.mp4\n"
        "  zo-video index clip.mp4 --json");
  }

  int run() override {
    const std::string path = _source.url + zo::VideoReader::NAVIGATION_FILE_EXTENSION;
    const bool loaded = IndexFile(path).frames > 0;
    Source source(_source);
    source.requireRestart();
    source.open(Access::NUMBERED_CACHED);
    source.requireNumbers();
    const IndexFile file(path);
    const bool saved = file.frames == source.frameCount();
    if (_json) {
      printJson(path, source.frameCount(), file.key_frames, loaded, saved);
    } else {
      printText(path, source.frameCount(), file.key_frames, loaded, saved);
    }
    return 0;
  }

 private:
  void printJson(const std::string& path, long long frames, long long key_frames, bool loaded,
                 bool saved) const {
    nlohmann::ordered_json json;
    json["url"] = _source.url;
    json["frame_count"] = frames;
    json["key_frame_count"] = nullptr;
    json["index_file"] = nullptr;
    if (saved) {
      json["key_frame_count"] = key_frames;
      json["index_file"] = path;
    }
    json["loaded"] = loaded;
    std::puts(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
  }

  static void printText(const std::string& path, long long frames, long long key_frames, bool loaded,
                        bool saved) {
    std::printf("Frames:      %lld\n", frames);
    if (saved) {
      std::printf("Key frames:  %lld\nIndex file:  %s (%s)\n", key_frames, oneLine(path).c_str(),
                  loaded ? "loaded" : "built");
    } else {
      std::printf("Key frames:  not known\nIndex file:  %s cannot be written\n", oneLine(path).c_str());
    }
  }

  SourceOptions _source;
  bool _json = false;
};

}  // namespace

std::unique_ptr<Command> makeIndexCommand() {
  return std::make_unique<IndexCommand>();
}

}  // namespace zo_tool
