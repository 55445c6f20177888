// A KELUtils library that answers from a table and records what it was told to set.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "KELUtils.h"

/// What the fake's getters answer and what its setters return, by export name without KE_Get, KE_Set or KE_.
struct FakeAnswer {
  KE_RESULT result = KE_SUCCESS;
  std::string text = {};
  int number = 0;
};

struct FakeStore {
  std::map<std::string, FakeAnswer> answers;
  std::vector<std::string> calls;  // "Container=17", "InstallState=200,1"
  std::string absentExport;
};

/// The one store behind the exports; each test begins with a fresh one.
inline FakeStore fakeStore;

struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

/// Runs kelctl on the fake. A --dll path of "absent.dll" cannot be loaded.
Outcome RunOnFake(const std::vector<std::string>& arguments);
