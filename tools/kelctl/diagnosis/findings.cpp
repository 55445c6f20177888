#include "diagnosis/findings.h"

#include <algorithm>

#include "texts.h"

namespace kelctl {
namespace {

struct HealthForm {
  const char* name;
  const char* colour;  // escape sequence of a console
};

HealthForm FormOf(Health health) {
  constexpr HealthForm kForms[] = {{"ok", "\x1b[32m"}, {"warn", "\x1b[33m"}, {"fail", "\x1b[31m"}};
  return kForms[static_cast<int>(health)];
}

std::string Line(const Finding& finding, std::size_t width, bool colours) {
  const HealthForm form = FormOf(finding.health);
  const std::string state = Padded(form.name, 6);
  std::string line = colours ? form.colour + state + "\x1b[0m" : state;
  line += Padded(finding.subject, width + 2) + WithoutControlCharacters(finding.detail);
  for (const std::string& name : finding.missing) line += " " + name;
  return line + (finding.path.empty() ? "" : "  " + finding.path) + "\n";
}

auto CountOf(const Findings& findings, Health health) { return std::ranges::count(findings, health, &Finding::health); }

}  // namespace

bool IsHealthy(const Findings& findings) { return CountOf(findings, Health::kFailure) == 0; }

std::string RenderFindings(const Findings& findings, bool colours) {
  std::size_t width = 0;
  for (const Finding& finding : findings) width = std::max(width, finding.subject.size());
  std::string text;
  for (const Finding& finding : findings) text += Line(finding, width, colours);
  return text + (IsHealthy(findings) ? "healthy" : "not healthy") + ": " +
         std::to_string(CountOf(findings, Health::kOk)) + " ok, " +
         std::to_string(CountOf(findings, Health::kWarning)) + " warn, " +
         std::to_string(CountOf(findings, Health::kFailure)) + " fail\n";
}

nlohmann::ordered_json JsonOf(const Findings& findings) {
  auto checks = nlohmann::ordered_json::array();
  for (const Finding& finding : findings) {
    checks.push_back({{"kind", finding.kind},
                      {"subject", finding.subject},
                      {"state", FormOf(finding.health).name},
                      {"detail", finding.detail},
                      {"path", finding.path},
                      {"missing", finding.missing}});
  }
  return {{"healthy", IsHealthy(findings)}, {"checks", std::move(checks)}};
}

}  // namespace kelctl
