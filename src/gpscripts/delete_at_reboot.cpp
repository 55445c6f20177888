#include "gpscripts/delete_at_reboot.h"

#include <windows.h>

#include "frame/fs_redirection.h"
#include "gpscripts/policy_file.h"
#include "gpscripts/sink_call.h"

namespace gpscripts {

KE_RESULT DeleteAtReboot(frame::ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  if (frame::Unredirected([&] { return MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT); }))
    return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, GetLastError(), L"Error deleting at reboot", path.c_str()));
}

KE_RESULT DeleteFileNowOrAtReboot(frame::ILogSink* sink, const std::wstring& path) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"path", path.c_str());
  const DWORD attributes = AttributesOf(path);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return call.End(call.Fail(KE_STORE_UNUSABLE, ERROR_DIRECTORY, L"A folder is not deleted", path.c_str()));
  if (DeleteAtOnce(path) == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  call.Note(L"Left to the next start of the machine", path.c_str());
  return call.End(DeleteAtReboot(sink, path));
}

}  // namespace gpscripts
