/* Calls one function of the installed video library and nothing else: it has to find the core library itself.
 */
#include <stdio.h>

#include "zo_video_c/zo_video_c.h"

int main(void) {
  if (zoVideoReader_release(NULL) != ZO_STATUS_NULL_POINTER) {
    return 1;
  }
  puts("consumer_one_call: ok");
  return 0;
}
