#include "source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "failure.h"
#include "progress.h"
#include "text.h"

namespace zo_tool {

namespace {

/// The index file that an opening may leave beside a video. One that was not there before is taken away again
/// when a signal ended the opening: it may hold a part of the index, and would be trusted.
class NewIndexFile {
 public:
  explicit NewIndexFile(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) == 0 && status.st_size > 0) {
      return;
    }
    _path = path;
    _was_there = lstat(path.c_str(), &status) == 0;
    if (!_was_there) {
      setDoomedFile(_path.c_str());
    }
  }
  ~NewIndexFile() {
    if (!_path.empty() && stopSignal() != 0) {
      discard();
    }
    setDoomedFile(nullptr);
  }
  NewIndexFile(const NewIndexFile&) = delete;
  NewIndexFile& operator=(const NewIndexFile&) = delete;

  void keep() { _path.clear(); }

 private:
  void discard() const {
    const int result = _was_there ? truncate(_path.c_str(), 0) : unlink(_path.c_str());
    static_cast<void>(result);  // then there is none
  }

  std::string _path;  // empty: nothing to discard
  bool _was_there = false;
};

std::string withoutFileScheme(const std::string& url) {
  return url.compare(0, 5, "file:") == 0 ? url.substr(5) : url;
}

/// True for what can only be read once from its start to its end, though it is no network stream.
bool isPipe(const std::string& url) {
  struct stat status;
  if (stat(withoutFileScheme(url).c_str(), &status) != 0) {
    return url.compare(0, 5, "pipe:") == 0;
  }
  return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || S_ISCHR(status.st_mode);
}

/// The URL of a file: a name with a colon would be taken for a protocol.
std::string urlOf(const std::string& file) {
  const std::size_t colon = file.find(':');
  struct stat status;
  const bool looks_like_a_protocol =
      colon != std::string::npos && file.find('/') > colon && file.find("://") == std::string::npos;
  return looks_like_a_protocol && stat(file.c_str(), &status) == 0 ? "./" + file : file;
}

}  // namespace

Source::Source(const SourceOptions& options)
    : _options(options), _url(urlOf(options.url)), _is_pipe(isPipe(_url)) {}

void Source::failOutOfRange(long long index, long long count) const {
  fail(zo::ZO_STATUS_OUT_OF_RANGE, "there is no frame %lld: '%s' has %lld, counted from 0", index,
       _options.url.c_str(), count);
}

void Source::openReader(bool navigation, bool cached) {
  std::unique_ptr<NewIndexFile> p_index_file;
  if (cached) {
    p_index_file = std::make_unique<NewIndexFile>(_url + zo::VideoReader::NAVIGATION_FILE_EXTENSION);
  }
  try {
    Progress progress("opening", 0);
    StopRequest stop_request(&progress);
    if (_reader.open(_url.c_str(), _options.timeoutMs(), &stop_request, navigation, _options.skip_errors,
                     cached) != 0) {
      throw Stopped();
    }
  } catch (const zo::Exception& e) {
    // The library's text for this one names neither the file nor what is wrong with it.
    if (e.status() == zo::ZO_STATUS_DECODER_ERROR) {
      fail(e.status(), "'%s' has no video that can be decoded: %s", _options.url.c_str(), e.what());
    }
    throw;
  }
  checkStop();
  if (p_index_file) {
    p_index_file->keep();
  }
  _numbered = navigation && _reader.frameCount() > 0;
}

void Source::open(Access access) {
  if (_is_pipe) {
    access = Access::IN_ORDER;
  }
  _index_failure = zo::Exception();
  _may_reopen = access != Access::IN_ORDER && !isNetworkUrl(_options.url);
  try {
    openReader(access != Access::IN_ORDER, access == Access::NUMBERED_CACHED);
    return;
  } catch (const zo::Exception& e) {
    checkStop();
    const bool index_failed =
        e.status() == zo::ZO_STATUS_SEEK_ERROR || e.status() == zo::ZO_STATUS_READ_ERROR;
    if (access == Access::IN_ORDER || !index_failed) {
      throw;
    }
    _index_failure = e;
  }
  openReader(false, false);
}

bool Source::readFrame(zo::Frame& frame) {
  bool got_frame = false;
  const int result = _reader.read(frame, got_frame, &_stop_request);
  if (result != 0) {
    throw Stopped();
  }
  checkStop();
  return got_frame;
}

bool Source::read(zo::Frame& frame) {
  bool got_frame = readFrame(frame);
  if (!got_frame && _may_reopen && !_numbered && _reader.frameIndex() < 0) {
    _may_reopen = false;
    openReader(false, false);
    got_frame = readFrame(frame);
  }
  return got_frame;
}

void Source::goTo(long long index) {
  if (_numbered) {
    if (index >= _reader.frameCount()) {
      failOutOfRange(index, _reader.frameCount());
    }
    _reader.moveByIndex(index);
    checkStop();
    return;
  }
  Progress progress("frames passed", index);
  zo::Frame frame;
  while (_reader.frameIndex() < index - 1) {
    if (!read(frame)) {
      failOutOfRange(index, _reader.frameIndex() + 1);
    }
    progress.update(_reader.frameIndex() + 1);
  }
}

void Source::requireRestart() const {
  if (_is_pipe) {
    fail(zo::ZO_STATUS_NOT_ALLOWED, "'%s' can be read only once, in order: save it as a file first",
         _options.url.c_str());
  }
}

void Source::requireNumbers() const {
  if (_numbered) {
    return;
  }
  if (_index_failure.status() != zo::ZO_STATUS_OK) {
    throw zo::Exception(_index_failure);
  }
  fail(zo::ZO_STATUS_NOT_ALLOWED, "the frames of '%s' cannot be numbered: its container reports no duration",
       _options.url.c_str());
}

}  // namespace zo_tool
