// The file-system redirection of 32-bit processes on 64-bit Windows.
#pragma once

namespace frame {

/// Switches the redirection off for the calling thread and stores what `RevertFsRedirection` needs in `*old`. False
/// when the platform refuses, or has no redirection (last error 1).
bool DisableFsRedirection(void** old) noexcept;

/// Switches it back to what it was. False as above.
bool RevertFsRedirection(void* old) noexcept;

/// Has the calling thread see the true folders of the system, in the scope of one file call: nothing that may load a
/// DLL belongs there. Keeps the last-error value at its end.
class UnredirectedFiles {
 public:
  UnredirectedFiles() noexcept : off_(DisableFsRedirection(&old_)) {}
  ~UnredirectedFiles();
  UnredirectedFiles(const UnredirectedFiles&) = delete;
  UnredirectedFiles& operator=(const UnredirectedFiles&) = delete;

 private:
  void* old_ = nullptr;
  bool off_;
};

/// What `call()` returns, made on the true folders.
template <typename Call>
auto Unredirected(Call call) {
  const UnredirectedFiles scope;
  return call();
}

}  // namespace frame
