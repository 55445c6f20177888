// What stands for a secret.
#pragma once

namespace kelctl {

/// What is shown in place of a secret.
inline constexpr char kMask[] = "********";

}  // namespace kelctl
