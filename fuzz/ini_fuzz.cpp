// Parses any bytes as a store. What is written of it must read as the same store again.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "store/ini_store.h"

using namespace store;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  IniStore parsed;
  ParseIni({reinterpret_cast<const char*>(data), size}, parsed);
  for (auto& section : parsed.sections) {
    const IniSection* first = FindSection(parsed, section.name.c_str());
    // A name with a zero byte inside is looked up by its beginning.
    if (first == nullptr && section.name.find('\0') == std::string::npos) std::abort();
    for (auto& entry : section.entries) {
      if (FindEntry(section, entry.key.c_str()) == nullptr && entry.key.find('\0') == std::string::npos) std::abort();
    }
  }
  const std::string text = Serialise(parsed);
  IniStore again;
  ParseIni(text, again);
  if (Serialise(again) != text) std::abort();
  return 0;
}
