#include "kelmnapi/update_script.h"

#include "settings/numbers.h"
#include "settings/own_settings.h"

namespace kelmnapi {

std::optional<Outcome> UpdateScript::NextAnswer() noexcept {
  using settings::Reading;
  char result[32], codes[settings::kLongestText + 1];
  const Reading hasResult = settings::ReadText(section_, "Result", result, sizeof result);
  const Reading hasCodes = settings::ReadText(section_, "ExitCodes", codes, sizeof codes);
  if (hasResult == Reading::kMissing && hasCodes == Reading::kMissing) return std::nullopt;
  const auto answer = settings::ParseNumber(hasResult == Reading::kMissing ? "0" : result);
  const auto exitCodes = settings::ParseNumbers(hasCodes == Reading::kMissing ? "0" : codes);
  if (!answer || !exitCodes) return Outcome{kBadSettings, {}};
  return Outcome{*answer, exitCodes->values[turn_++ % exitCodes->count]};
}

}  // namespace kelmnapi
