#include "store/encrypted_file.h"

#include <doctest/doctest.h>

#include <string>

#include "siblings/modules.h"
#include "store/codec.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"
#include "win/gate.h"

using store::IniStore;
using store::ReadEncryptedFile;
using store::WriteEncryptedFile;

namespace {

// A tree with the fake crypto module in its install path. The first one of the process stays bound.
struct CodecTree : support::ProductTree {
  CodecTree() {
    AddFake("FakeApiCr", "Common/ApiCr.dll");
    static const support::LoadedDll s_fake(Path("Common/ApiCr.dll"));
    REQUIRE(siblings::LoadCrypto((*this / "Common\\").c_str()));
    cipher = CALL(s_fake, FakeCipher)();
  }
  std::string Content() const { return support::ReadFile(file); }
  std::int32_t Read(IniStore& store) const { return ReadEncryptedFile(file.c_str(), &store); }
  std::int32_t Write(const IniStore& store) const { return WriteEncryptedFile(file.c_str(), &store); }

  const support::InnerModule module{*this};
  const support::HeldTime time;
  const support::EnvironmentVariable installPath{"VOSK_TESTING_INSTALLPATH", (*this / "").c_str()};
  const std::string file = *this / "values.dat";
  FakeCipherState* cipher;
};

IniStore Parsed(const std::string& text) {
  IniStore store;
  store::ParseIni(text, store);
  return store;
}

}  // namespace

TEST_CASE("encrypted file: another form than the marker and whole blocks, or a text that a failing cipher loses") {
  const CodecTree codec;
  const std::string text = "[A]\r\nk=value 0123456789\r\n";
  CHECK(codec.Write(Parsed(text)) == store::kFileDone);
  CHECK((codec.Content() == FakeEnciphered(text) && codec.cipher->lastLength == 32));
  CHECK(std::string(codec.cipher->lastKeyBlob) == store::kFileKeyBlob);

  const std::string lowerCase = "tvke" + FakeEnciphered(text).substr(4);
  support::WriteFile(codec.file, lowerCase);
  IniStore store = Parsed("[Before]\r\n");
  CHECK((codec.Read(store) == store::kFileDone && store::Serialise(store) == "[Before]\r\n" + text));

  // A failing module leaves a marked file as it is, and the text plain.
  codec.cipher->error = 77;
  CHECK((codec.Read(store) == store::kFileCipherFailed && codec.Content() == lowerCase));
  CHECK((codec.Write(store) == store::kFileCipherFailed && codec.Content() == "[Before]\r\n" + text));
  codec.cipher->error = 0;
  // A first byte of zero would be read as plain text. A module that writes no other byte is useless.
  codec.cipher->zeroFirst = true;
  CHECK((codec.Write(store) == store::kFileCipherFailed && codec.Content() == "[Before]\r\n" + text));
  codec.cipher->zeroFirst = false;
  CHECK(codec.Write(Parsed("[\x55]\r\n")) == store::kFileDone);
  // An empty store has no block to encipher. An enciphered byte of zero ends the text of a marked file.
  CHECK((codec.Write({}) == store::kFileDone && codec.Content() == "TVKE"));
  support::WriteFile(codec.file, std::string("TVKE\0", 5) + "[A]\r\n");
  store = {};
  CHECK((codec.Read(store) == store::kFileDone && store.sections.empty()));
}

TEST_CASE("encrypted file: one that is in use or on a full disk is lost, or a file of others is removed") {
  const CodecTree codec;
  IniStore store;
  CHECK((codec.Read(store) == store::kFileDone && store.sections.empty() && std::filesystem::exists(codec.file)));
  CHECK((ReadEncryptedFile("", nullptr) == store::kFileNoStore &&
         WriteEncryptedFile("", nullptr) == store::kFileNoStore));
  const std::string folder = codec / "Common";
  CHECK(ReadEncryptedFile(folder.c_str(), &store) == store::kFileNotOpened);
  CHECK(WriteEncryptedFile(folder.c_str(), &store) == store::kFileNotOpened);
  SetFileAttributesA(codec.file.c_str(), FILE_ATTRIBUTE_HIDDEN);
  CHECK(codec.Write(store) == store::kFileDone);
  // A full disk keeps the old content, whatever it is.
  support::WriteFile(codec.file, "[A]\r\nold=content that is long enough\r\n");
  win::g_gate = [](win::Call call, unsigned long&) { return call != win::Call::kWrite; };
  CHECK(codec.Write(store) == store::kFileDone);
  win::g_gate = nullptr;
  CHECK(codec.Content() == "[A]\r\nold=content that is long enough\r\n");
  // Only temporary files that killed processes left are removed; the caller's own files stay, whatever their names.
  const char* neighbours[] = {".NEW", ".KE~", ".KE~0000012C000", ".KE~0000012C0001x", ".KE~0000012C0001"};
  for (const char* end : neighbours) support::WriteFile(codec.file + end, "mine");
  CHECK(codec.Write(store) == store::kFileDone);
  for (const char* end : neighbours)
    CHECK(std::filesystem::exists(codec.file + end) == (end != std::end(neighbours)[-1]));
  for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
    const support::LockedFile locked(codec.file, share);
    CHECK((codec.Read(store) == store::kFileNotOpened && codec.Write(store) == store::kFileNotOpened));
  }
}

TEST_CASE("value files: one that cannot be read is overwritten, or a missing value changes the buffer") {
  const CodecTree codec;
  const std::pair<std::string, KE_RESULT> files[] = {
      {"TVKE\xA7=", 1782}, {"", 1782}, {"[S]\nK=", 1782}, {"[S]\nK=1234", 1778}, {FakeEnciphered("[s]\nk=v=w"), 0}};
  for (const auto& [content, result] : files) {
    char buffer[8] = "kept";
    support::WriteFile(codec.file, content);
    CHECK(store::GetFileValue("S", "K", buffer, 4, codec.file.c_str()) == result);
    CHECK(std::string(buffer) == (result == 0 ? "v=w" : "kept"));
    codec.cipher->error = 9;
    CHECK(store::SetFileValue("S", "K", "new", codec.file.c_str()) == KE_CRYPTO_FAILED);
    if (content.starts_with("TVKE")) CHECK(codec.Content() == content);
    codec.cipher->error = 0;
  }
  std::filesystem::remove(codec.file);
  CHECK(store::SetFileValue("S", std::string(300, 'k').c_str(), "v", codec.file.c_str()) == KE_SUCCESS);
  CHECK(codec.Content() == FakeEnciphered("[S]\r\n" + std::string(255, 'k') + "=v\r\n"));
}
