// The options with which FFmpeg is asked to open a source. The linker puts this program's
// avformat_open_input() in between, so nothing is connected to.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <map>
#include <string>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include "zo_core/zo_exception.h"
#include "zo_video/zo_ffmpeg_compat.h"
#include "zo_video/zo_video_reader.h"
#include "zo_video_c/zo_video_c.h"

using Options = std::map<std::string, std::string>;

namespace {

Options seen_options;  // NOLINT: what the last call was given

}  // namespace

extern "C" {

// Whether the demuxer is const depends on FFmpeg, but not for the linker.
int __wrap_avformat_open_input(AVFormatContext** pp_format, const char* url, const AVInputFormat* p_demuxer,
                               AVDictionary** pp_options);

int __wrap_avformat_open_input(AVFormatContext** pp_format, const char*, const AVInputFormat*,
                               AVDictionary** pp_options) {
  seen_options.clear();
  const AVDictionaryEntry* p_entry = nullptr;
  while ((p_entry = av_dict_get(*pp_options, "", p_entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    seen_options[p_entry->key] = p_entry->value;
  }
  avformat_free_context(*pp_format);  // as the real one does when it fails
  *pp_format = nullptr;
  return AVERROR(ECONNREFUSED);
}

}  // extern "C"

namespace zo {
namespace {

Options optionsFor(const std::string& url, int timeout_ms) {
  VideoReader reader;
  EXPECT_THROW(reader.open(url.c_str(), timeout_ms, nullptr, false, false, false), Exception);
  return seen_options;
}

// What this FFmpeg's RTSP demuxer calls the bound of its socket waits: "stimeout" as long as it knows that
// name, during which "timeout" makes it listen; afterwards "timeout".
bool knowsOldName() {
  registerFormatsAndCodecs();
  const AVInputFormat* p_rtsp = av_find_input_format("rtsp");
  const AVClass* p_class = p_rtsp == nullptr ? nullptr : p_rtsp->priv_class;
  return p_class != nullptr &&
         av_opt_find(&p_class, "stimeout", nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

struct Budget {
  const char* name;
  int ms;
  const char* us;
};

class SocketTimeout : public testing::TestWithParam<Budget> {
 protected:
  Options withoutNewName() const { return {{"rtsp_transport", "tcp"}, {"stimeout", GetParam().us}}; }
  // The new name is not given without a budget: it takes no negative number, and waits for ever by itself.
  Options withNewName() const {
    Options options = withoutNewName();
    if (!knowsOldName() && GetParam().ms >= 0) {
      options["timeout"] = GetParam().us;
    }
    return options;
  }
};

TEST_P(SocketTimeout, IsTheBudgetInMicrosecondsUnderTheNameThatTheRtspDemuxerKnows) {
  for (const char* url :
       {"rtsp://127.0.0.1:1/live", "rtsps://127.0.0.1:1/live", "satip://127.0.0.1:1/live"}) {
    EXPECT_EQ(withNewName(), optionsFor(url, GetParam().ms)) << url;
  }
}

TEST_P(SocketTimeout, KeepsItsNewNameFromRtmpWhichWouldListen) {
  for (const char* url :
       {"rtmp://127.0.0.1:1/live", "rtmps://127.0.0.1:1/live", "rtmpt://127.0.0.1:1/live"}) {
    EXPECT_EQ(withoutNewName(), optionsFor(url, GetParam().ms)) << url;
  }
}

TEST_P(SocketTimeout, KeepsItsNewNameFromOtherSourcesWhenTheyWouldRefuseSoLargeANumber) {
  const bool fits = GetParam().ms <= INT_MAX / 1000;
  for (const char* url : {"http://127.0.0.1:1/clip.ts", "udp://127.0.0.1:1", "clip.mp4", ""}) {
    EXPECT_EQ(fits ? withNewName() : withoutNewName(), optionsFor(url, GetParam().ms)) << url;
  }
}

TEST_P(SocketTimeout, IsTheOneThatThePlainFunctionWasGiven) {
  const std::string url = "rtsp://127.0.0.1:1/live";
  ZoVideoReader* p_reader = nullptr;
  seen_options.clear();
  EXPECT_EQ(::ZO_STATUS_OPEN_ERROR,
            zoVideoReader_create(nullptr, nullptr, url.c_str(), static_cast<unsigned>(url.size()),
                                 GetParam().ms, 0, 0, 0, &p_reader, nullptr, 0));
  EXPECT_EQ(withNewName(), seen_options);
}

INSTANTIATE_TEST_SUITE_P(Budgets, SocketTimeout,
                         testing::Values(Budget{"None", -1, "-1000"}, Budget{"Zero", 0, "0"},
                                         Budget{"OneMillisecond", 1, "1000"},
                                         Budget{"FiveSeconds", 5000, "5000000"},
                                         Budget{"LargestOfThirtyOneBits", 2147483, "2147483000"},
                                         Budget{"BeyondThirtyOneBits", 2147484, "2147484000"},
                                         Budget{"BeyondThirtyTwoBits", 5000000, "5000000000"},
                                         Budget{"Most", INT_MAX, "2147483647000"},
                                         Budget{"Least", INT_MIN, "-2147483648000"}),
                         [](const auto& test_case) { return std::string(test_case.param.name); });

}  // namespace
}  // namespace zo
