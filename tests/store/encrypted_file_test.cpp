// The crypto module stays bound once it is, so the cases without it come first; this is the only file of its test
// program that needs it unbound, and cases of one file run in their order.
#include "store/encrypted_file.h"

#include <doctest/doctest.h>

#include <string>

#include "siblings/modules.h"
#include "store/codec.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"
#include "win/file.h"

using store::IniStore;
using store::ReadEncryptedFile;
using store::WriteEncryptedFile;

namespace {

// A tree whose install path is set, as the codec wants it, and that has a fake crypto module when asked.
struct CodecTree {
  explicit CodecTree(bool withCrypto)
      : module(tree), installPath("VOSK_TESTING_INSTALLPATH", (tree.Path("").string()).c_str()) {
    std::filesystem::remove(tree.Path("Common/ApiCr.dll"));
    if (withCrypto) tree.AddFake("FakeApiCr", "Common/ApiCr.dll");
  }
  std::string File() const { return tree.Path("values.dat").string(); }
  std::string Content() const { return support::ReadFile(File()); }
  void SetContent(const std::string& content) const { support::WriteFile(File(), content); }
  std::int32_t Read(IniStore& store) const { return ReadEncryptedFile(File().c_str(), &store); }
  std::int32_t Write(const IniStore& store) const { return WriteEncryptedFile(File().c_str(), &store); }

  support::ProductTree tree;
  support::InnerModule module;
  support::EnvironmentVariable installPath;
};

IniStore Parsed(const char* text) {
  IniStore store;
  store::ParseIni(text, store);
  return store;
}

}  // namespace

TEST_CASE("encrypted file, no crypto module: text is written plain and read again; marked files stay as they are") {
  const CodecTree codec(false);
  char data[16] = {};
  CHECK(store::DecryptBufferInPlace(data, sizeof data, store::kFileKeyBlob) == 4);
  CHECK(store::EncryptBufferInPlace(data, sizeof data, store::kFileKeyBlob) == 99999999);

  CHECK(codec.Write(Parsed("[A]\r\nk=v\r\n")) == store::kFileDone);
  CHECK(codec.Content() == "[A]\r\nk=v\r\n");
  IniStore store;
  CHECK(codec.Read(store) == store::kFileDone);
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\n");

  codec.SetContent("TVKE0123456789abcdef");
  CHECK(codec.Read(store) == store::kFileCryptoNotLoaded);
  CHECK(codec.Content() == "TVKE0123456789abcdef");
  CHECK(store::Serialise(store) == "[A]\r\nk=v\r\n");
  // Without an install path nothing is looked for below the current directory.
  const support::EnvironmentVariable none("VOSK_TESTING_INSTALLPATH", nullptr);
  codec.tree.AddFake("FakeApiCr", "Common/ApiCr.dll");
  SetCurrentDirectoryA(codec.tree.Path("").string().c_str());
  CHECK(codec.Read(store) == store::kFileCryptoNotLoaded);
  SetCurrentDirectoryA("C:\\");
}

TEST_CASE("crypto module: one that lacks a name is not bound, and does not stand in the way of a complete one") {
  support::ProductTree tree;
  const std::string folder = tree.Path("Common").string() + "\\";
  tree.AddFake("FakeKERegister", "Common/ApiCr.dll");
  CHECK_FALSE(siblings::LoadCrypto(folder.c_str()));
  CHECK_FALSE(siblings::LoadCrypto(nullptr));
  CHECK(siblings::Crypto() == nullptr);
}

TEST_CASE("encrypted file: the marker, then the text enciphered in whole blocks with the file key blob") {
  const CodecTree codec(true);
  // The first fake stays bound as long as the process lives, and is the one to talk to.
  static const support::LoadedDll fake(codec.tree.Path("Common/ApiCr.dll"));
  FakeCipherState& cipher = *CALL(fake, FakeCipher)();

  const std::string text = "[A]\r\nk=value 0123456789\r\n";
  CHECK(codec.Write(Parsed(text.c_str())) == store::kFileDone);
  CHECK(codec.Content() == FakeEnciphered(text));
  CHECK(cipher.lastLength == 32);
  CHECK(std::string(cipher.lastKeyBlob) == store::kFileKeyBlob);

  IniStore store = Parsed("[Before]\r\n");
  CHECK(codec.Read(store) == store::kFileDone);
  CHECK(store::Serialise(store) == "[Before]\r\n" + text);

  const std::string lowerCase = "tvke" + FakeEnciphered(text).substr(4);
  codec.SetContent(lowerCase);
  store = {};
  CHECK(codec.Read(store) == store::kFileDone);
  CHECK(store::Serialise(store) == text);

  // A failing module leaves the text plain, and a marked file as it is.
  cipher.error = 77;
  CHECK(codec.Read(store) == store::kFileCipherFailed);
  CHECK(codec.Content() == lowerCase);
  CHECK(codec.Write(store) == store::kFileCipherFailed);
  CHECK(codec.Content() == text);
  cipher.error = 0;
  // A first byte of zero would be read as plain text. A module that gives nothing else cannot be used.
  cipher.zeroFirst = true;
  CHECK(codec.Write(store) == store::kFileCipherFailed);
  CHECK(codec.Content() == text);
  cipher.zeroFirst = false;
  CHECK(codec.Write(Parsed("[\x55]\r\n")) == store::kFileDone);
  // An empty store enciphers no block and leaves the marker alone; a first enciphered byte of zero makes the file
  // plain.
  CHECK(codec.Write({}) == store::kFileDone);
  CHECK(codec.Content() == "TVKE");
  codec.SetContent(std::string("TVKE\0", 5) + "[A]\r\n");
  store = {};
  CHECK(codec.Read(store) == store::kFileDone);
  CHECK(store.sections.empty());
}

TEST_CASE("encrypted file: missing files are created empty; folders, locked files and no store are refused") {
  const CodecTree codec(true);
  IniStore store;
  CHECK(codec.Read(store) == store::kFileDone);
  CHECK(store.sections.empty());
  CHECK(std::filesystem::exists(codec.File()));
  CHECK(ReadEncryptedFile(codec.File().c_str(), nullptr) == store::kFileNoStore);
  CHECK(WriteEncryptedFile(codec.File().c_str(), nullptr) == store::kFileNoStore);
  const std::string folder = codec.tree.Path("Common").string();
  CHECK(ReadEncryptedFile(folder.c_str(), &store) == store::kFileNotOpened);
  CHECK(WriteEncryptedFile(folder.c_str(), &store) == store::kFileNotOpened);
  SetFileAttributesA(codec.File().c_str(), FILE_ATTRIBUTE_HIDDEN);
  CHECK(codec.Write(store) == store::kFileDone);
  // A full disk keeps the old content, whatever it is.
  codec.SetContent("[A]\r\nold=content that is long enough\r\n");
  win::g_fileGate = [](win::FileCall call, unsigned long&) { return call != win::FileCall::kWrite; };
  CHECK(codec.Write(store) == store::kFileDone);
  win::g_fileGate = nullptr;
  CHECK(codec.Content() == "[A]\r\nold=content that is long enough\r\n");
  // Only temporary files that killed processes left are removed; the caller's own files stay, whatever their names.
  const char* neighbours[] = {".NEW", ".KE~", ".KE~0000012C000", ".KE~0000012C0001x", ".KE~0000012C0001"};
  for (const char* end : neighbours) support::WriteFile(codec.File() + end, "mine");
  CHECK(codec.Write(store) == store::kFileDone);
  for (const char* end : neighbours)
    CHECK(std::filesystem::exists(codec.File() + end) == (end != std::end(neighbours)[-1]));
  for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
    const support::LockedFile locked(codec.File(), share);
    CHECK(codec.Read(store) == store::kFileNotOpened);
    CHECK(codec.Write(store) == store::kFileNotOpened);
  }
}
