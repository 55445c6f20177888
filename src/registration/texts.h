// The texts of the token files: the paths of plug-in modules, programs and services below the installation folder.
// Lines end in CR LF; folders and names are spelt as their readers expect them. No call of Windows.
//
// A `root` is an installation folder as returned by `InstallRoot`.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "text/paths.h"

namespace registration {

/// The first state of a complete installation.
inline constexpr std::int32_t kInstallComplete = 200;

/// The installation folder without one trailing backslash; empty when `folder` is null, empty or a lone backslash.
std::string InstallRoot(const char* folder, text::LeadByteTest isLeadByte);

/// A program or library below the installation folder, with its name in the token files.
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

// The commands that may run before the installation is complete.

/// True when the command may run in an installation state: from the complete installation on any command, also an
/// unknown or null one; before, only the listed ones in their states. Ignores letter case.
bool IsCommandAllowed(const char* command, std::int32_t state) noexcept;

}  // namespace registration
