#include "zo_bench_peers.h"

namespace zo {
namespace bench {

bool haveOpenCv() {
  return false;
}

std::unique_ptr<PeerReader> openOpenCv(const std::string&) {
  return nullptr;
}

std::unique_ptr<PeerImages> makeOpenCvImages(const unsigned char*, const unsigned char*, int, int) {
  return nullptr;
}

}  // namespace bench
}  // namespace zo
