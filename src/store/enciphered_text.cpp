#include "store/enciphered_text.h"

#include "frame/text.h"

namespace store {

std::string_view UpToZero(std::string_view bytes) noexcept { return bytes.substr(0, bytes.find('\0')); }

bool IsMarked(std::string_view content) noexcept {
  return UpToZero(content).size() > kMarker.size() && frame::SameName(content.substr(0, kMarker.size()), kMarker);
}

}  // namespace store
