// The commands of kelctl, and what they work with.
#pragma once

#include <CLI/CLI.hpp>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "library.h"

namespace kelctl {

/// What a command works with. Everything outlives the commands.
struct Session {
  std::ostream& out;
  std::ostream& err;
  bool colours = false;          // the output is a console that shows them, and the user allows them
  std::string libraryPath = {};  // of the option --dll
  bool json = false;             // of the option --json
  int exitCode = 0;              // of a command that ends normally

  std::unique_ptr<Library> OpenTheLibrary() const { return std::make_unique<Library>(libraryPath); }

  /// Prints the result of a command: the text, which ends in a line end, or with --json the document. Every command
  /// prints its result through this, once; docs/operations.md lists the members.
  void Show(const std::string& text, const nlohmann::ordered_json& document) const;
};

/// Runs one command line, given without the program's name, and returns the exit code. The session has the streams and
/// what is known of the console.
int RunCommandLine(std::vector<std::string> arguments, Session session);

// Each adds its commands, whose callbacks do the work and may throw the errors of errors.h.

void AddStoreCommands(CLI::App& kelctl, Session& session);      // get, set, show, setting
void AddDiagnosisCommands(CLI::App& kelctl, Session& session);  // status, doctor, diagnostics, os
void AddLogCommand(CLI::App& kelctl, Session& session);
void AddRepairCommand(CLI::App& kelctl, Session& session);
void AddExportCommands(CLI::App& kelctl, Session& session);  // those of export_table.h
void AddJobCommands(CLI::App& kelctl, Session& session);  // after them: the commands below jobs that ask the scheduler
void AddPolicyCommand(CLI::App& kelctl, Session& session);

}  // namespace kelctl
