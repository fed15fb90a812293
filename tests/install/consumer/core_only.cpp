// Uses the installed core library alone.
#include <cstdio>
#include <string>

#include "zo_core/zo_core.h"

int main() {
  const zo::Buffer buffer("abc", 3);
  if (buffer.size() != 3 || zo::fileExtension("clip.d/first.mp4") != ".mp4") {
    std::fputs("consumer_core: wrong result\n", stderr);
    return 1;
  }
  std::puts("consumer_core: ok");
  return 0;
}
