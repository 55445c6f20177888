// The findings of an examination: what was looked at, its state with a stable code, and what helps.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelctl {

/// In ascending order of weight. kUnknown: could not be examined.
enum class Health { kOk, kUnknown, kWarning, kFailure };

/// A stable code of a finding, its meaning, and the step that helps.
struct FindingCode {
  const char* code;
  const char* meaning;
  const char* remedy;
};

/// All codes, in alphabetical order.
std::span<const FindingCode> FindingCodes();

/// One thing that was examined. Texts are UTF-8.
struct Finding {
  std::string kind;     // module, program, store, settings or machine
  std::string subject;  // its name
  std::string path;     // where it is, or should be
  Health health = Health::kOk;
  std::string code = "OK";                // of FindingCodes, or "OK"
  std::string detail;                     // the finding in a few words
  std::vector<std::string> missing = {};  // functions that a module lacks
  std::vector<std::string> holders = {};  // programs that hold the file open
};

using Findings = std::vector<Finding>;

/// True without failures. Warnings and unknown findings are no failures.
bool IsHealthy(const Findings& findings);

/// A line for each finding, in colours when asked, with the remedy below a line that is not ok; then the sum.
std::string RenderFindings(const Findings& findings, bool colours);

nlohmann::ordered_json JsonOf(const Findings& findings);

/// True when this process has the rights of an administrator.
bool IsElevated();

/// The names of the programs that hold a file open (path in the code page), as Windows knows them.
std::vector<std::string> HoldersOf(const std::string& path);

/// Sets health, code and detail for a file that could not be opened or read: denied is unknown, all else a failure with
/// the code `failure`. Names the programs that hold a locked file.
void SetUnreadable(Finding& finding, const std::string& path, unsigned long error, const char* failure);

}  // namespace kelctl
