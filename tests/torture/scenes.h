// States of the store's files, and what is done there while something goes wrong.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "torture/torture.h"

namespace torture {

inline const std::string kOld = "old" + std::string(3000, 'o'), kNew = "new" + std::string(5000, 'n'), kNone = "(1782)";

/// One state of the files, one call, and the identities that a process may find whatever became of the call.
struct Scene {
  const char* name;
  std::optional<std::string> live, backup, start;  // texts; none for a missing file
  KE_RESULT (*call)();
  std::string before, after;  // the identity, when the call did nothing and when it did all
  std::string also = after;   // one more that is right

  bool Allows(const std::string& id) const { return id == before || id == after || id == also; }
};

inline KE_RESULT SetNew() { return KE_SetAgentID(kNew.c_str()); }

inline KE_RESULT GetAny() {
  static char buffer[8192];
  return KE_GetAgentID(buffer, sizeof buffer);
}

inline KE_RESULT Keep() { return store::KeepAsStartCopy("Keep"); }

inline const std::vector<Scene>& Scenes() {
  const std::string old = WholeStore(kOld), start = WholeStore("start"), cut = old.substr(0, 70);
  static const std::vector<Scene> scenes = {
      {"a value is set", old, old, {}, SetNew, kOld, kNew},
      {"a damaged store is repaired from the start copy", cut, old, start, GetAny, "start", "start", kOld},
      {"the first value is set", {}, {}, {}, SetNew, kNone, kNew},
      {"a value is set without a live file", {}, old, start, SetNew, kOld, kNew},
      {"a value is set in a damaged store, whose backup is whole", cut, old, {}, SetNew, kOld, kNew},
      {"an identity is restored from the backup", WholeStore(""), old, {}, GetAny, kOld, kOld},
      {"an identity is restored from the start copy", WholeStore(""), WholeStore(""), start, GetAny, "start", "start"},
      {"the store becomes the start copy", old, old, start, Keep, kOld, kOld},
  };
  return scenes;
}

inline void Prepare(const StoreTree& tree, const Scene& scene) {
  const auto put = [&](const char* file, const std::optional<std::string>& text) {
    std::filesystem::remove(tree.tree.Store(file));
    if (text) tree.Put(file, *text);
  };
  put("INTEGRA.DAT", scene.live);
  put("INTEGRA.BAK", scene.backup);
  put("INTEGRA.START", scene.start);
}

/// True when no file that was whole is anything but whole: with its own text, or with that of the live store.
inline bool CopiesAreWhole(const StoreTree& tree, const Scene& scene) {
  const std::pair<const char*, const std::optional<std::string>&> copies[] = {{"INTEGRA.BAK", scene.backup},
                                                                              {"INTEGRA.START", scene.start}};
  return std::ranges::all_of(copies, [&](const auto& copy) {
    const std::string text = tree.Text(copy.first);
    const std::string rights[] = {copy.second.value_or(""), WholeStore(scene.before), WholeStore(scene.after)};
    return !copy.second || std::ranges::find(rights, text) != std::end(rights);
  });
}

/// The identity that a fresh process finds, through the DLL and the tool; in the short form a fresh instance in this
/// process.
inline std::string FreshIdentity(const StoreTree& tree) {
  if (!support::IsLong()) return AgentId(tree.Load());
  const std::string tool = (support::BuildFolder() / "bin" / "kelctl.exe").string();
  const std::string dll = tree.tree.Path("KELUtils/KELUtils.dll").string();
  const auto run = support::RunProgram("\"" + tool + "\" --dll \"" + dll + "\" get agent-id");
  return run.exitCode == 0 ? run.output.substr(0, run.output.find('\n')) : kNone;
}

}  // namespace torture
