// A program in place of another one: it only tells that it was started.
#pragma once

namespace standin {

/// Logs the command line beside the program, as `<exit code>;<command line>`, and returns the exit code after the
/// delay that the settings ask for. README.md tells the settings; results.h lists the codes.
int NoteAndWait() noexcept;

}  // namespace standin
