#include "zo_fuzz.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zo {
namespace fuzz {
namespace {

class ScratchDirectory {
 public:
  ScratchDirectory() {
    const char* p_parent = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    std::string pattern = std::string(p_parent) + "/zo-fuzz-XXXXXX";
    require(mkdtemp(&pattern[0]) != nullptr, "a scratch directory can be made");
    path = pattern;
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  std::string path;
};

}  // namespace

void require(bool holds, const char* p_rule) {
  if (!holds) {
    std::fprintf(stderr, "finding: %s\n", p_rule);
    std::abort();
  }
}

int Arguments::coordinate() {
  switch (byte() % 8) {
    case 0:
      return number<int32_t>();
    case 1:
      return number<int16_t>();
    default:
      return static_cast<int>(number<uint8_t>()) - 64;
  }
}

std::string Arguments::text(size_t length) {
  length = std::min(length, _size);
  const std::string bytes(reinterpret_cast<const char*>(_p_data), length);
  _p_data += length;
  _size -= length;
  return bytes;
}

const std::string& scratchDirectory() {
  static const ScratchDirectory DIRECTORY;
  return DIRECTORY.path;
}

void writeScratchFile(const std::string& path, const uint8_t* p_data, size_t size) {
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(p_data), static_cast<std::streamsize>(size));
  stream.close();
  require(!stream.fail(), "the scratch file can be written");
}

uint64_t digest(const Frame& frame) {
  uint64_t hash = 14695981039346656037U;
  const auto add = [&hash](uint64_t value) { hash = (hash ^ value) * 1099511628211U; };
  add(static_cast<uint64_t>(frame.format()));
  add(static_cast<uint64_t>(frame.size().width));
  add(static_cast<uint64_t>(frame.size().height));
  for (unsigned p = 0; p < frame.planeCount(); ++p) {
    for (unsigned y = 0; y < frame.planeRows(p); ++y) {
      const unsigned char* p_row = frame.planeData(p) + static_cast<size_t>(y) * frame.planeStride(p);
      for (unsigned x = 0; x < frame.planeRowBytes(p); ++x) {
        add(p_row[x]);
      }
    }
  }
  return hash;
}

GuardedFrame::GuardedFrame(FrameFormat format, Size size, unsigned padding)
    : _format(format), _size(size), _padding(padding) {
  Frame shape;
  shape.reuse(format, size, DeviceContext(), 1);
  std::array<unsigned, 4> strides{};
  size_t bytes = 0;
  for (unsigned i = 0; i < shape.planeCount(); ++i) {
    strides[i] = shape.planeRowBytes(i) + padding;
    bytes += static_cast<size_t>(strides[i]) * shape.planeRows(i);
  }
  _block.assign(GUARD_BYTES + bytes + GUARD_BYTES, GUARD);
  _frame = Frame(FrameLayout(format, size, strides), DeviceContext(), DevicePtr(_block.data() + GUARD_BYTES));
}

void GuardedFrame::requireIntact() const {
  const auto guarded = [](const uint8_t* p_begin, const uint8_t* p_end) {
    return std::all_of(p_begin, p_end, [](uint8_t byte) { return byte == GUARD; });
  };
  Frame shape;
  shape.reuse(_format, _size, DeviceContext(), 1);
  const uint8_t* p_at = _block.data() + GUARD_BYTES;
  require(guarded(_block.data(), p_at), "nothing is written before the pixels");
  for (unsigned i = 0; i < shape.planeCount(); ++i) {
    for (unsigned row = 0; row < shape.planeRows(i); ++row) {
      p_at += shape.planeRowBytes(i);
      require(guarded(p_at, p_at + _padding), "nothing is written between the rows");
      p_at += _padding;
    }
  }
  require(guarded(p_at, _block.data() + _block.size()), "nothing is written behind the pixels");
}

}  // namespace fuzz
}  // namespace zo
