#include "policy/system_files.h"

#include <windows.h>

#include <cstring>
#include <string_view>

#include "win/file.h"
#include "win/gate.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/process.h"
#include "win/replace_file.h"

namespace policy {

namespace {

// Calls a function of Kernel32.dll that is missing on 32-bit Windows and before XP SP2.
template <typename Argument>
bool CallKernel32(const char* name, Argument argument) noexcept {
  BOOL(WINAPI * function)(Argument) = nullptr;
  const FARPROC found = win::FunctionOf(GetModuleHandleW(L"Kernel32.dll"), name);
  if (found == nullptr) {
    SetLastError(ERROR_INVALID_FUNCTION);
    return false;
  }
  std::memcpy(&function, &found, sizeof function);
  return function(argument) != FALSE;
}

// Returns `call()`, run without the redirection. For file calls only: a DLL that is loaded meanwhile may be the wrong
// one. Keeps the last-error value of the call.
template <typename Call>
auto WithoutWow64Redirection(Call call) {
  struct Scope {
    void* old = nullptr;
    const bool off = DisableFsRedirection(&old);
    ~Scope() {
      const win::KeptLastError keep;
      if (off) RevertFsRedirection(old);
    }
  } const scope;
  return call();
}

constexpr DWORD kPauses[] = {1, 5, 10, 20, 40, 80};  // milliseconds between two attempts; 156 in all

// True for the errors caused by another process that is using the file.
bool IsHeld(DWORD error) noexcept {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_ACCESS_DENIED ||
         error == ERROR_USER_MAPPED_FILE || error == ERROR_READ_FAULT;
}

template <typename Attempt>
DWORD WithRetries(Attempt attempt) {
  for (const DWORD pause : kPauses) {
    if (const DWORD error = attempt(); !IsHeld(error)) return error;
    win::Pause(pause);
  }
  return attempt();
}

void CreateFolderOf(const std::wstring& path) {
  const auto end = path.find_last_of(L'\\');
  if (end == std::wstring::npos) return;
  const std::wstring folder = path.substr(0, end);
  const auto create = [&] {
    return (win::Passes(win::Call::kFolder) && CreateDirectoryW(folder.c_str(), nullptr)) ||
           GetLastError() != ERROR_PATH_NOT_FOUND;
  };
  if (WithoutWow64Redirection(create)) return;
  CreateFolderOf(folder);
  WithoutWow64Redirection(create);
}

DWORD AttributesOf(const std::wstring& path) noexcept {
  if (!win::Passes(win::Call::kStatus)) return INVALID_FILE_ATTRIBUTES;
  return WithoutWow64Redirection([&] { return GetFileAttributesW(path.c_str()); });
}

DWORD CheckOnce(const std::wstring& path) noexcept {
  if (!win::Passes(win::Call::kOpen)) return GetLastError();
  const win::FileHandle file(WithoutWow64Redirection([&] {
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
  }));
  return file || IsMissing(GetLastError()) ? DWORD{ERROR_SUCCESS} : GetLastError();
}

DWORD ReadOnce(const std::wstring& path, std::size_t limit, std::string& bytes) {
  bytes.clear();
  const win::FileHandle file = WithoutWow64Redirection([&] { return win::OpenForReading(path); });
  if (!file) return GetLastError();
  const auto size = win::SizeOf(file);
  if (!size) return GetLastError();
  if (*size > limit) return ERROR_FILE_TOO_LARGE;
  bytes.resize(static_cast<std::size_t>(*size));
  return win::Read(file, bytes.data(), bytes.size()) == bytes.size() ? ERROR_SUCCESS : ERROR_READ_FAULT;
}

DWORD DeleteOnce(const std::wstring& path) noexcept {
  const DWORD attributes = AttributesOf(path);
  const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
  const auto setAttributes = [&](DWORD set) {
    WithoutWow64Redirection([&] { return SetFileAttributesW(path.c_str(), set); });
  };
  if (readOnly) setAttributes(attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  if (WithoutWow64Redirection([&] { return win::Passes(win::Call::kDelete) && DeleteFileW(path.c_str()); }))
    return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  if (readOnly) setAttributes(attributes);
  return IsMissing(error) ? DWORD{ERROR_SUCCESS} : error;
}

// One scope for the whole replacement, which makes file calls and pauses only.
win::Replaced Replace(const std::wstring& path, const std::string& bytes, const win::FileStatus& like) noexcept {
  return WithoutWow64Redirection([&] { return win::ReplaceContent(path, bytes, like); });
}

KE_RESULT DeleteAtReboot(ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  const bool left = WithoutWow64Redirection(
      [&] { return win::Passes(win::Call::kMove) && MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT); });
  return call.Finish(KE_STORE_UNUSABLE, left ? ERROR_SUCCESS : GetLastError(), L"Error deleting at reboot",
                     path.c_str());
}

KE_RESULT DeleteEntry(ILogSink* sink, const std::wstring& path, DWORD attributes);

// Deletes the content of the folder; the first failure counts.
KE_RESULT DeleteContent(ILogSink* sink, const std::wstring& folder) {
  KE_RESULT result = KE_SUCCESS;
  WIN32_FIND_DATAW found{};
  const std::wstring pattern = folder + L"\\*";
  const win::FindHandle search(WithoutWow64Redirection([&] { return FindFirstFileW(pattern.c_str(), &found); }));
  if (!search) return KE_RESULT{IsMissing(GetLastError()) ? KE_SUCCESS : KE_STORE_UNUSABLE};
  do {
    const std::wstring_view name = found.cFileName;
    if (name == L"." || name == L"..") continue;
    const KE_RESULT deleted = DeleteEntry(sink, folder + L"\\" + found.cFileName, found.dwFileAttributes);
    if (result == KE_SUCCESS) result = deleted;
  } while (FindNextFileW(search.Get(), &found));
  if (GetLastError() != ERROR_NO_MORE_FILES && result == KE_SUCCESS) result = KE_STORE_UNUSABLE;
  return result;
}

KE_RESULT DeleteEntry(ILogSink* sink, const std::wstring& path, DWORD attributes) {
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return DeleteFileNowOrAtReboot(sink, path);
  const bool link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  const KE_RESULT content = link ? KE_RESULT{KE_SUCCESS} : DeleteContent(sink, path);
  if (WithoutWow64Redirection([&] { return RemoveDirectoryW(path.c_str()); })) return content;
  const KE_RESULT later = DeleteAtReboot(sink, path);  // Windows deletes in the order of the requests
  return content == KE_SUCCESS ? later : content;
}

}  // namespace

bool DisableFsRedirection(void** old) noexcept { return CallKernel32("Wow64DisableWow64FsRedirection", old); }

bool RevertFsRedirection(void* old) noexcept { return CallKernel32("Wow64RevertWow64FsRedirection", old); }

DWORD CheckWritable(const std::wstring& path) {
  return WithRetries([&] { return CheckOnce(path); });
}

DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes) {
  return WithRetries([&] { return ReadOnce(path, limit, bytes); });
}

DWORD WritePolicyFile(const SinkCall& call, const std::wstring& path, const std::string& bytes, const std::string& old,
                      DWORD attributes) {
  win::FileStatus status = WithoutWow64Redirection([&] { return win::StatusOf(path); });
  if (!status.exists) {
    if (!win::LastErrorIsNotFound()) return GetLastError();
    status.attributes = attributes;
    CreateFolderOf(path);
  }
  const win::Replaced replaced = Replace(path, bytes, status);
  const DWORD error = GetLastError();
  if (replaced.inPlace && replaced.opened) call.Fail(KE_SUCCESS, replaced.error, L"Overwritten in place", path.c_str());
  if (replaced.inPlace && !status.exists)
    WithoutWow64Redirection([&] { return SetFileAttributesW(path.c_str(), attributes); });
  if (replaced.complete) return ERROR_SUCCESS;
  if (status.exists && replaced.written > 0) Replace(path, old, status);
  return error == ERROR_SUCCESS ? DWORD{ERROR_WRITE_FAULT} : error;
}

void RemovePolicyLeftovers(const std::wstring& path) noexcept {
  WithoutWow64Redirection([&] { win::RemoveLeftovers(path); });
}

DWORD DeletePolicyFile(const std::wstring& path) {
  return WithRetries([&] { return DeleteOnce(path); });
}

KE_RESULT DeleteFileNowOrAtReboot(ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  const DWORD attributes = AttributesOf(path);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return call.Finish(KE_STORE_UNUSABLE, ERROR_DIRECTORY, L"A folder is not deleted", path.c_str());
  if (DeleteOnce(path) == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  SinkTrace(sink, kSinkInfo, kSinkFlag, call.Name(), L"Left to the next start of the machine: %ls", path.c_str());
  return call.End(DeleteAtReboot(sink, path));
}

KE_RESULT DeleteDirectoryTree(ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  const DWORD attributes = AttributesOf(path);
  if (attributes != INVALID_FILE_ATTRIBUTES) return call.End(DeleteEntry(sink, path, attributes));
  const DWORD error = GetLastError();
  return call.Finish(KE_STORE_UNUSABLE, IsMissing(error) ? ERROR_SUCCESS : error, L"Error deleting folder",
                     path.c_str());
}

}  // namespace policy
