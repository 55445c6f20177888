#include "bench/ini_text.h"

#include <cstdio>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace bench {

std::string MakeIniText(std::size_t count, std::size_t perSection) {
  std::string text;
  text.reserve(count * 41 + 64);
  char line[64];
  for (std::size_t i = 0; i < count; ++i) {
    const auto number = static_cast<unsigned>(i);
    if (i % perSection == 0) {
      std::snprintf(line, sizeof line, "[SECTION%06u]\r\n", number);
      text += line;
    }
    std::snprintf(line, sizeof line, "key%07u=value of the entry %08x.\r\n", number, number * 2654435761u);
    text += line;
  }
  return text;
}

void KeepMemory() {
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 2000 << 20);
#endif
}

}  // namespace bench
