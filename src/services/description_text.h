// How the text of an event description is made from a string resource. The resource is data: no C format function ever
// sees it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace services {

/// Bytes of the longest description, with its terminating zero.
inline constexpr std::size_t kDescriptionSize = 512;

/// The description that a resource text gives. One without "%s" stays as it stands. In one that contains it, the first
/// "%s" becomes `insert`, "%%" one percent sign, and everything else stays. Cut at `kDescriptionSize` less the zero.
std::string DescriptionText(std::string_view resource, std::string_view insert);

}  // namespace services
