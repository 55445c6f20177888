// What the token files tell the agent's other programs: where plug-in modules, programs and services lie below the
// installation folder. Lines end in CR LF; folders and names are spelt as their readers expect them.
//
// A `root` is an installation folder as `InstallRoot` gives it.
#pragma once

#include <string>
#include <string_view>

#include "frame/paths.h"

namespace registration {

/// The installation folder without one trailing backslash; empty when `folder` is null, empty or a lone backslash.
std::string InstallRoot(const char* folder, frame::LeadByteTest isLeadByte);

/// A program or library below the installation folder, with the name that other programs know it by.
struct InstalledFile {
  const char* name;
  const char* folder;
  const char* file;
};

/// The path of an installed file in double quotes: `root` + "\" + its folder + "\" + its file.
std::string QuotedPath(std::string_view root, const InstalledFile& installed);

/// The content of plugins.tok: for each plug-in module its name and its library.
std::string PluginTokens(std::string_view root);

/// The programs that scheduler jobs may name.
inline constexpr InstalledFile kScheduledPrograms[] = {
    {"KEPLPMNG", "KESLPMNG", "KepLpMng.exe"},
    {"KEPWINST", "KEPWINST", "KEPWINST.exe"},
};

/// The content of tokens.tok: a line for each of kScheduledPrograms.
std::string SchedulerTokens(std::string_view root);

/// The services that the watchdog supervises.
inline constexpr InstalledFile kWatchedServices[] = {
    {"KesAgent", "KesAgent", "KesAgent.exe"},
    {"ZumAt3Scheduler", "Scheduler", "ZumSched.exe"},
    {"ZumKesLpMng", "KesLpMng", "KesLpMng.exe"},
};

}  // namespace registration
