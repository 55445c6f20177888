// The log that a small development module keeps of its calls.
#pragma once

namespace logfile {

/// Appends a line, `<local time>;<process>;<path of the module>;<text>`, to the log beside the DLL that this is linked
/// into: its path, with the extension ".log". The file is bounded, with one older file, and shared between processes,
/// as `Append` tells. False when the line could not be written. Keeps the last-error value.
bool LogBesideModule(const char* text) noexcept;

}  // namespace logfile
