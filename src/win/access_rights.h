// The access rights of a file, to be given to another one.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "win/owner.h"

namespace win {

/// The discretionary access list of a file or folder.
class AccessRights {
 public:
  AccessRights() noexcept = default;
  AccessRights(const AccessRights&) = delete;  // the attributes point to the block
  AccessRights& operator=(const AccessRights&) = delete;

  /// False, with the last-error value set, when the rights cannot be read.
  bool Read(const std::string& path) noexcept;
  bool Read(const std::wstring& path) noexcept;

  /// Leaves the rights only to those who may write the file, or create files in the folder: they may read and write,
  /// and nobody else may open it. False, with the last-error value set, when that fails.
  bool KeepWriters() noexcept;

  /// The attributes for the creation of a file with these rights; null, for the rights that its folder gives it, when
  /// none were read. The new file gets no further rights from its folder.
  SECURITY_ATTRIBUTES* ForNewFile() noexcept;

  /// Lets a file created with `ForNewFile` follow later changes of its folder's rights, if the original does. The
  /// handle needs WRITE_DAC. False, with the last-error value set, when that fails.
  bool RestoreInheritance(const FileHandle& file) noexcept;

 private:
  template <typename Function, typename Path>
  bool ReadWith(Function function, const Path& path) noexcept;
  SECURITY_DESCRIPTOR_CONTROL& Control() noexcept {
    return reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(block_.get())->Control;
  }

  std::unique_ptr<char[]> block_;  // a self-relative security descriptor; null before it was read
  SECURITY_ATTRIBUTES attributes_{
      .nLength = sizeof attributes_, .lpSecurityDescriptor = nullptr, .bInheritHandle = FALSE};
  bool inherits_ = false;
};

}  // namespace win
