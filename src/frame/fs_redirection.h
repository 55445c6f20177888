// The file-system redirection of 32-bit processes on 64-bit Windows.
#pragma once

namespace frame {

/// Switches the redirection off for the calling thread and stores what `RevertFsRedirection` needs in `*old`. False
/// when the platform refuses, or has no redirection (last error 1).
bool DisableFsRedirection(void** old) noexcept;

/// Switches it back to what it was. False as above.
bool RevertFsRedirection(void* old) noexcept;

}  // namespace frame
