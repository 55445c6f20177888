// What an examination found, and how it is shown.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kelctl {

enum class Health { kOk, kWarning, kFailure };

/// One thing that was examined. Texts are UTF-8.
struct Finding {
  std::string kind;     // module, program, store or settings
  std::string subject;  // its name
  std::string path;     // where it is, or should be
  Health health = Health::kOk;
  std::string detail;                     // what was found, in a few words
  std::vector<std::string> missing = {};  // required functions that a module lacks
};

using Findings = std::vector<Finding>;

/// True when nothing failed; warnings are no failures.
bool IsHealthy(const Findings& findings);

/// A line for each finding, in colours when asked, and one with the sum.
std::string RenderFindings(const Findings& findings, bool colours);

nlohmann::ordered_json JsonOf(const Findings& findings);

}  // namespace kelctl
