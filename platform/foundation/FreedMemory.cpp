#include "platform/foundation/FreedMemory.h"

#include <malloc.h>

namespace quenlet {

void returnFreedMemory() {
#ifdef __GLIBC__
  ::malloc_trim(0);
#endif
}

}  // namespace quenlet
