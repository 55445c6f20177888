#include "bench/bare_store.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "store/codec.h"

namespace bench {

BareStore::BareStore(const std::string& directory)
    : trace_(directory),
      live_(directory + "\\..\\Bare\\INTEGRA.DAT"),
      backup_(directory + "\\..\\Bare\\INTEGRA.BAK"),
      encrypt_(reinterpret_cast<decltype(&APIcr_EncryptBuffer)>(
          reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ApiCr.dll"), "APIcr_EncryptBuffer")))) {
  const std::string store = directory + "\\..\\KESAgent\\INTEGRA.DAT";
  std::filesystem::create_directories(directory + "\\..\\Bare");
  for (const std::string& file : {live_, backup_}) {
    std::filesystem::remove(file);  // a copy over an existing file fails with this library
    std::filesystem::copy_file(store, file);
  }
  std::ifstream file(store, std::ios::binary);
  plain_.assign(std::istreambuf_iterator<char>(file), {});
}

void BareStore::Read(const char* name) {
  trace_.Line(name, "Function start");
  trace_.Line("ReadIntegraDat", "Function start");
  WIN32_FILE_ATTRIBUTE_DATA status;
  GetFileAttributesExA(live_.c_str(), GetFileExInfoStandard, &status);
  trace_.Line("ReadIntegraDat", "Function end. Return code (0)");
}

void BareStore::GetAgentId() {
  trace_.Open();
  Read("KE_GetAgentID");
  trace_.Line("KE_GetAgentID", "Function end. Return code (0)");
  trace_.Close();
}

bool BareStore::Replace(const std::string& path, const std::string& content, bool ownTime) const {
  const std::string temporary = path + ".KE~000000000000";
  alignas(SECURITY_DESCRIPTOR) char rights[2048];
  SECURITY_ATTRIBUTES security{.nLength = sizeof security, .lpSecurityDescriptor = rights, .bInheritHandle = FALSE};
  DWORD needed = 0, written = 0;
  GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &needed);
  bool good = GetFileSecurityA(path.c_str(), DACL_SECURITY_INFORMATION, rights, sizeof rights, &needed) != 0;
  win::FileHandle file(CreateFileA(temporary.c_str(), GENERIC_READ | GENERIC_WRITE | WRITE_DAC,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &security, CREATE_NEW,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
  good = good && SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, rights);
  good = good && WriteFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
  if (ownTime) {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    good = good && SetFileTime(file.Get(), nullptr, nullptr, &now);
  }
  good = good && FlushFileBuffers(file.Get());
  return good && MoveFileExA(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

bool BareStore::SetAgentId() {
  trace_.Open();
  trace_.Line("KE_SetAgentID", "Function start");
  win::FileHandle lock(CreateFileA((live_ + ".LCK").c_str(), GENERIC_READ | GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
  for (const DWORD byte : {1, 0}) LockFile(lock.Get(), byte, 0, 1, 0);
  UnlockFile(lock.Get(), 1, 0, 1, 0);
  trace_.OpenAgain();
  Read("KE_GetCertificate");
  trace_.Line("KE_GetCertificate", "Function end. Return code (0)");
  trace_.CloseAgain();
  trace_.Line("CheckIntegrity", "CheckIntegrity ok");
  Read("KE_SetAgentID");
  trace_.Line("WriteIntegraDat", plain_.c_str());
  std::string content = plain_;
  std::int32_t error = 0;
  encrypt_(content.data() + 4, static_cast<std::uint32_t>(content.size() - 4), store::kFileKeyBlob, 0, &error);
  trace_.Line("WriteIntegraDat", "File successfully encrypted");
  const bool live = Replace(live_, content, true);
  trace_.Line("WriteIntegraDat", "Number of items to write: [352]. Number of items written to file  [352]");
  const bool backup = Replace(backup_, content, false);
  WIN32_FILE_ATTRIBUTE_DATA status;
  GetFileAttributesExA(live_.c_str(), GetFileExInfoStandard, &status);
  UnlockFile(lock.Get(), 0, 0, 1, 0);
  lock.Reset();
  trace_.Line("KE_SetAgentID", "Function end. Return code (0)");
  trace_.Close();
  return error == 0 && live && backup;
}

}  // namespace bench
