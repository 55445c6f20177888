// Trees of registry keys: deleting, copying, and numbering the subkeys 0, 1, 2, ... of a key.
//
// A `parent` needs no more access than KEY_READ: the platform checks the rights to create and delete subkeys by the
// keys themselves. Results are the platform's; a failure is written to the sink, which may be null.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "policy/log_sink.h"

namespace policy {

/// Deletes the subkey with all below it. A missing one is a success; what cannot be deleted stays with what is above
/// it.
LSTATUS DeleteRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& name);

/// Copies the subkey `from` over `to`, with all below it; values keep their types and bytes.
LSTATUS CopyRegistryTree(ILogSink* sink, HKEY parent, const std::wstring& from, const std::wstring& to);

/// Stores the numbers of the subkeys whose names are plain decimals, in numeric order.
LSTATUS NumberedSubkeys(HKEY parent, std::vector<std::uint32_t>& numbers);

/// Deletes numbered subkeys from the highest number down. `CloseGaps` has to follow; until it has ended,
/// `HasOpenGaps(parent)` is true, even after the end of the process: a value of `parent` says so.
LSTATUS DeleteNumbered(ILogSink* sink, HKEY parent, const std::vector<std::uint32_t>& numbers);
bool HasOpenGaps(HKEY parent) noexcept;

/// Moves the numbered subkeys down, in their order, until they are 0, 1, 2, ... without gaps; interrupted moves are
/// finished first.
LSTATUS CloseGaps(ILogSink* sink, HKEY parent);

/// Finishes, or takes back, the moves of `CloseGaps` that were interrupted, even by the end of the process, so that no
/// subkey is lost or there twice: while one is moved its copy says so in a value of its own.
LSTATUS FinishMoves(ILogSink* sink, HKEY parent);

}  // namespace policy
