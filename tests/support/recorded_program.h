// A recording program (recorder.cpp) put into a product tree in place of one of the agent's.
#pragma once

#include <algorithm>
#include <sstream>
#include <string>

#include "support/product_tree.h"

namespace support {

class RecordedProgram {
 public:
  RecordedProgram(const Folder& tree, const std::string& relative) : path_(tree.Path(relative)) {
    std::filesystem::create_directories(path_.parent_path());
    std::filesystem::copy_file(TestFolder() / "recorder.exe", path_);
  }

  void EndWith(int exitCode) const {
    WriteFile(path_.string() + ".ini", "[recorder]\r\nExitCode=" + std::to_string(exitCode) + "\r\n");
  }

  /// The command lines noted since the last call, each without the quoted path of the program and the blank behind it,
  /// and ended by LF.
  std::string Lines() const {
    // Taken away before it is read, so that no program can append in between. That fails while one has it open.
    const std::string noted = path_.string() + ".txt", taken = path_.string() + ".taken";
    std::error_code inUse;
    std::filesystem::rename(noted, taken, inUse);
    if (inUse) return "";
    std::istringstream content(ReadFile(taken));
    std::string lines;
    for (std::string line; std::getline(content, line);) {
      if (line.ends_with('\r')) line.pop_back();
      const size_t end = line.find("\" ");
      lines += (end == std::string::npos ? line : line.substr(end + 2)) + "\n";
    }
    return lines;
  }

  /// The same, waited for until there are `count` of them: a program that nobody waits for may start late.
  std::string LateLines(int count = 1) const {
    std::string lines;
    for (int i = 0; i < 1000 && std::ranges::count(lines, '\n') < count; ++i) {
      Sleep(10);
      lines += Lines();
    }
    return lines;
  }

  /// Takes the program away, once it has ended.
  void Remove() const {
    std::error_code error;
    for (int i = 0; i < 1000 && !std::filesystem::remove(path_, error); ++i) Sleep(10);
  }

 private:
  std::filesystem::path path_;
};

}  // namespace support
