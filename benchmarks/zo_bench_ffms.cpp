#include <ffms.h>

#include <cstddef>
#include <stdexcept>

#include "zo_bench_bare.h"
#include "zo_bench_peers.h"

namespace zo {
namespace bench {
namespace {

class FfmsReader : public PeerReader {
 public:
  explicit FfmsReader(const std::string& path) {
    _error.Buffer = _message;
    _error.BufferSize = sizeof(_message);
    FFMS_Init(0, 0);
    FFMS_SetLogLevel(FFMS_LOG_QUIET);
    FFMS_Indexer* const p_indexer = FFMS_CreateIndexer(path.c_str(), &_error);
    require(p_indexer != nullptr);
    FFMS_Index* const p_index = FFMS_DoIndexing2(p_indexer, FFMS_IEH_ABORT, &_error);
    require(p_index != nullptr);
    const int track = FFMS_GetFirstTrackOfType(p_index, FFMS_TYPE_VIDEO, &_error);
    _p_source = FFMS_CreateVideoSource(path.c_str(), track, p_index, 1, FFMS_SEEK_NORMAL, &_error);
    FFMS_DestroyIndex(p_index);
    require(_p_source != nullptr);
    _count = FFMS_GetVideoProperties(_p_source)->NumFrames;
  }
  ~FfmsReader() override { FFMS_DestroyVideoSource(_p_source); }
  FfmsReader(const FfmsReader&) = delete;
  FfmsReader& operator=(const FfmsReader&) = delete;

  bool next() override {
    if (_next >= _count) {
      return false;
    }
    get(_next++);
    return true;
  }
  void get(long long frame_index) override {
    _p_frame = FFMS_GetFrame(_p_source, static_cast<int>(frame_index), &_error);
    require(_p_frame != nullptr);
  }
  uint64_t pictureHash() const override {
    uint8_t* planes[4];
    for (int i = 0; i < 4; ++i) {
      planes[i] = const_cast<uint8_t*>(_p_frame->Data[i]);
    }
    return hashPicture(planes, _p_frame->Linesize, _p_frame->ConvertedPixelFormat, _p_frame->EncodedWidth,
                       _p_frame->EncodedHeight);
  }

 private:
  void require(bool ok) {
    if (!ok) {
      throw std::runtime_error(std::string("FFMS2: ") + _message);
    }
  }

  char _message[512] = {};
  FFMS_ErrorInfo _error = {};
  FFMS_VideoSource* _p_source = nullptr;
  const FFMS_Frame* _p_frame = nullptr;
  int _count = 0;
  int _next = 0;
};

}  // namespace

bool haveFfms() {
  return true;
}

std::unique_ptr<PeerReader> openFfms(const std::string& path) {
  return std::unique_ptr<PeerReader>(new FfmsReader(path));
}

}  // namespace bench
}  // namespace zo
