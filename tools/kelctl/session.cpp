#include <nlohmann/json.hpp>
#include <ostream>

#include "commands.h"
#include "rendering.h"

namespace kelctl {

void Session::Show(const std::string& text, const nlohmann::ordered_json& document) const {
  out << (json ? DumpJson(document) : text);
}

}  // namespace kelctl
