// The file that a script runs.
#pragma once

#include <optional>
#include <string>

#include "gpscripts/policy_places.h"

namespace gpscripts {

/// The full path of the program that is `written` in a script of the local policy, without "." and ".."; a program
/// without a folder of its own lies in the policy's folder for the kind. Quotes around it do not count, and its
/// environment variables are looked up. None when it has no such path.
std::optional<std::wstring> ProgramPath(const PolicyPlaces& places, ScriptKind kind, const std::wstring& written);

/// True when the full path lies below the policy's folder for the kind.
bool LiesInScriptsFolder(const PolicyPlaces& places, ScriptKind kind, const std::wstring& path) noexcept;

/// True when both full paths name the same file, as far as their letters say so.
bool SamePath(const std::wstring& left, const std::wstring& right) noexcept;

}  // namespace gpscripts
