// A product tree for the exports, with the forms that a store's text takes in its files.
#pragma once

#include <doctest/doctest.h>

#include <memory>
#include <string>

#include "KELUtils.h"
#include "support/fake_sibling.h"
#include "support/product_tree.h"

/// A tree whose crypto module is the fake one, so that the text of the store can be seen and written.
struct StoreTree {
  StoreTree() { tree.AddFake("FakeApiCr", "KELUtils/ApiCr.dll"); }

  /// An instance with nothing cached: as another process would see the files.
  support::LoadedDll Load() const { return support::LoadedDll::Separate(tree.Path("KELUtils/KELUtils.dll")); }

  /// Puts the store's text into one of its files, enciphered.
  void Put(const char* file, const std::string& text) const {
    support::WriteFile(tree.Store(file), FakeEnciphered(text));
  }

  /// The text in one of the store's files.
  std::string Text(const char* file) const {
    std::string text = support::ReadFile(tree.Store(file));
    if (text.compare(0, 4, "TVKE") != 0) return text;
    for (char& c : text) c ^= kFakeCipherMask;
    return text.substr(4, text.find('\0', 4) - 4);
  }

  support::ProductTree tree;
};

/// A whole store with the given agent identifier. The identifier stands last, so that a file cut in the middle has lost
/// it.
inline std::string WholeStore(const std::string& agentId) {
  return "[INTEGRATION]\r\nCUSTOMER=customer\r\nCERTIFICATE=certificate of the agent\r\n[INSTALL]\r\nState=48\r\n"
         "[AGENTRCM]\r\nUSER=user\r\n[AGENT]\r\nVERSION=1.0\r\nID=" +
         agentId + "\r\n";
}

/// The agent identifier, or the result code in brackets.
inline std::string AgentId(const support::LoadedDll& dll) {
  char buffer[8192] = "untouched";
  const KE_RESULT result = CALL(dll, KE_GetAgentID)(buffer, sizeof buffer);
  return result == KE_SUCCESS ? buffer : "(" + std::to_string(result) + ")";
}

// The setting text of `text`, in the size that is asked for.
inline std::string Encrypted(const support::LoadedDll& dll, const std::string& text, int32_t length) {
  int32_t size = 0, tooSmall;
  CHECK(CALL(dll, KE_EncryptSetting)(text.c_str(), length, nullptr, &size) == KE_BUFFER_TOO_SMALL);
  std::string output(static_cast<size_t>(size), '~');
  CHECK(CALL(dll, KE_EncryptSetting)(text.c_str(), length, output.data(), &(tooSmall = size - 1)) ==
        KE_BUFFER_TOO_SMALL);
  CHECK(CALL(dll, KE_EncryptSetting)(text.c_str(), length, output.data(), &size) == KE_SUCCESS);
  CHECK(output[static_cast<size_t>(size)] == '~');  // no terminator
  return output.substr(0, static_cast<size_t>(size));
}
