// What the token files tell the agent's other programs: where plug-in modules, programs and services lie below the
// installation folder. Lines end in CR LF; folders and names are spelt as their readers expect them.
//
// A `root` is an installation folder as `InstallRoot` gives it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "text/paths.h"

namespace registration {

/// The states from here on are those of a complete installation.
inline constexpr std::int32_t kInstallComplete = 200;

/// The installation folder without one trailing backslash; empty when `folder` is null, empty or a lone backslash.
std::string InstallRoot(const char* folder, text::LeadByteTest isLeadByte);

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

// Which commands of the agent may run while its installation is not complete.

/// True when the command may run in an installation state. From the complete installation on every command may, known
/// or not, also a null one; before, only the listed ones in their states. Letter case does not count.
bool IsCommandAllowed(const char* command, std::int32_t state) noexcept;

}  // namespace registration
