// The commands of kelctl. A new command is one file beside this one, its declaration below and its line in
// command_line.cpp.
#pragma once

#include <CLI/CLI.hpp>
#include <iosfwd>
#include <memory>
#include <string>

#include "library.h"

namespace kelctl {

/// What a command works with. Everything outlives the commands.
struct Session {
  std::ostream& out;
  std::ostream& err;
  std::string libraryPath = {};  // of the option --dll
  int exitCode = 0;              // of a command that ends normally

  std::unique_ptr<Library> OpenTheLibrary() const { return std::make_unique<Library>(libraryPath); }
};

/// Each adds one command, whose callback does the work and may throw the errors of errors.h.
void AddShowCommand(CLI::App& kelctl, Session& session);
void AddGetCommand(CLI::App& kelctl, Session& session);
void AddSetCommand(CLI::App& kelctl, Session& session);
void AddSettingCommand(CLI::App& kelctl, Session& session);
void AddFileCommand(CLI::App& kelctl, Session& session);
void AddIntegrationCommands(CLI::App& kelctl, Session& session);
void AddPasswordCommand(CLI::App& kelctl, Session& session);
void AddProxyCommand(CLI::App& kelctl, Session& session);
void AddRegistrationCommands(CLI::App& kelctl, Session& session);
void AddJobsCommand(CLI::App& kelctl, Session& session);
void AddLauncherCommands(CLI::App& kelctl, Session& session);
void AddOsCommand(CLI::App& kelctl, Session& session);
void AddServerCommand(CLI::App& kelctl, Session& session);
void AddUpgradeCommand(CLI::App& kelctl, Session& session);
void AddEventCommand(CLI::App& kelctl, Session& session);
void AddPolicyCommand(CLI::App& kelctl, Session& session);
void AddPromptCommand(CLI::App& kelctl, Session& session);
void AddUuidCommand(CLI::App& kelctl, Session& session);

}  // namespace kelctl
