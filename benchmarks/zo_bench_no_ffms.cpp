#include "zo_bench_peers.h"

namespace zo {
namespace bench {

bool haveFfms() {
  return false;
}

std::unique_ptr<PeerReader> openFfms(const std::string&) {
  return nullptr;
}

}  // namespace bench
}  // namespace zo
