// Any bytes as scripts.ini, as UTF-16 and as single bytes: the parsed text is written back unchanged, and adding and
// removing a script leaves all others unchanged.
#include <algorithm>
#include <span>

#include "fuzzer.h"
#include "policy/policy_texts.h"

using namespace policy;

namespace {

const Script kAdded{u"fuzz added.cmd", u"\"a\" b=\"1\" "};

ScriptsIni Parsed(const std::u16string& text) {
  const auto ini = ParseScriptsIni(text);
  Require(ini && TextOf(*ini) == text);
  return *ini;
}

void Change(const ScriptsIni& original, ScriptKind kind) {
  const auto before = ScriptsOf(original, kind);
  const auto other = kind == ScriptKind::kStartup ? ScriptKind::kShutdown : ScriptKind::kStartup;
  ScriptsIni ini = original;
  AddScript(ini, kind, kAdded);
  ini = Parsed(TextOf(ini));
  auto expected = before;
  expected.push_back(kAdded);
  Require(ScriptsOf(ini, kind) == expected && ScriptsOf(ini, other) == ScriptsOf(original, other));

  // More would make the fuzzer slow.
  for (const Script& script : std::span(before).first(std::min<std::size_t>(before.size(), 2))) {
    const ScriptMatch wanted{script.parameters, script.program};
    const auto taken = RemoveMatching(ini, kind, wanted);
    std::erase_if(expected, [&](const Script& one) { return std::ranges::find(taken, one) != taken.end(); });
    ini = Parsed(TextOf(ini));
    Require(ScriptsOf(ini, kind) == expected && ScriptsOf(ini, other) == ScriptsOf(original, other));
  }
  Require(RemoveMatching(ini, kind, {kAdded.parameters, kAdded.program}).size() == 1);
}

void Check(const std::u16string& text) {
  if (ParseScriptsIni(text)) Change(Parsed(text), kScriptKinds[text.size() % std::size(kScriptKinds)]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  if (const auto text = DecodeUtf16("\xFF\xFE" + bytes)) {
    Require(EncodeUtf16(*text) == "\xFF\xFE" + bytes);
    Check(*text);
  }
  Check(std::u16string(data, data + size));
  return 0;
}
