#include "gpscripts/directory_tree.h"

#include <windows.h>

#include <string_view>

#include "frame/fs_redirection.h"
#include "gpscripts/delete_at_reboot.h"
#include "gpscripts/policy_file.h"
#include "gpscripts/sink_call.h"
#include "win/owner.h"

namespace gpscripts {
namespace {

KE_RESULT DeleteEntry(frame::ILogSink* sink, const std::wstring& path, DWORD attributes);

// Deletes what is in the folder; the first failure counts.
KE_RESULT DeleteContent(frame::ILogSink* sink, const std::wstring& folder) {
  KE_RESULT result = KE_SUCCESS;
  WIN32_FIND_DATAW found{};
  const std::wstring pattern = folder + L"\\*";
  const win::FindHandle search(frame::Unredirected([&] { return FindFirstFileW(pattern.c_str(), &found); }));
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

KE_RESULT DeleteEntry(frame::ILogSink* sink, const std::wstring& path, DWORD attributes) {
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return DeleteFileNowOrAtReboot(sink, path);
  const bool link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  const KE_RESULT content = link ? KE_RESULT{KE_SUCCESS} : DeleteContent(sink, path);
  if (frame::Unredirected([&] { return RemoveDirectoryW(path.c_str()); })) return content;
  const KE_RESULT later = DeleteAtReboot(sink, path);  // the platform deletes in the order of the requests
  return content == KE_SUCCESS ? later : content;
}

}  // namespace

KE_RESULT DeleteDirectoryTree(frame::ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  const DWORD attributes = AttributesOf(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const DWORD error = GetLastError();
    if (IsMissing(error)) return call.End(KE_SUCCESS);
    return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error deleting folder", path.c_str()));
  }
  return call.End(DeleteEntry(sink, path, attributes));
}

}  // namespace gpscripts
