// The input is JPEG data for zo::JpegDecoder.
#include "zo_fuzz.h"
#include "zo_video/zo_jpeg_decoder.h"
#include "zo_video/zo_jpeg_plausibility.h"
#include "zo_video/zo_turbojpeg_handles.h"

namespace {

// Larger pictures take memory and time by right.
constexpr long long MAX_PIXELS = 1LL << 20;

enum class Claim { SMALL, LARGE, IMPOSSIBLE };

// What the header says about the picture. Very large ones that the data cannot hold are to be refused before
// they take anything.
Claim claimOf(const uint8_t* p_data, size_t size) {
  const zo::TurboJpegDecompressorPtr p_decoder(tjInitDecompress());
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colour_space = 0;
  if (tjDecompressHeader3(p_decoder.get(), p_data, size, &width, &height, &subsampling, &colour_space) != 0 ||
      static_cast<long long>(width) * height <= MAX_PIXELS) {
    return Claim::SMALL;
  }
  return zo::jpegDataCanHold(p_data, static_cast<unsigned>(size), zo::Size(width, height))
             ? Claim::LARGE
             : Claim::IMPOSSIBLE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* p_data, size_t size) {
  using namespace zo::fuzz;
  const Claim claim = claimOf(p_data, size);
  if (claim == Claim::LARGE) {
    return 0;
  }
  zo::JpegDecoder decoder;
  const auto decode = [&](zo::Frame& frame) {
    return outcomeOf([&] {
      decoder.decode(p_data, static_cast<unsigned>(size), frame);
      require(frame.initialized(), "a decoded frame has pixels");
    });
  };
  zo::Frame frame;
  const Outcome outcome = decode(frame);
  require(claim != Claim::IMPOSSIBLE || (outcome.status != zo::ZO_STATUS_OK && !frame.initialized()),
          "data that cannot hold its picture is refused before anything is allocated");
  if (outcome.status != zo::ZO_STATUS_OK) {
    require(outcome.status == zo::ZO_STATUS_CODEC_ERROR || outcome.status == zo::ZO_STATUS_NOT_SUPPORTED,
            "bad data is a codec error or not supported");
    return 0;
  }
  for (unsigned padding : {0U, 5U}) {
    GuardedFrame outside(frame.format(), frame.size(), padding);
    require(decode(outside.frame()) == outcome, "the same data ends alike twice");
    require(digest(frame) == digest(outside.frame()), "the same data gives the same pixels twice");
    outside.requireIntact();
  }
  return 0;
}
