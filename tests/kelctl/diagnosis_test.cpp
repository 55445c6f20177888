// What of kelctl's diagnosis needs no platform call.
#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "diagnosis/examination.h"
#include "diagnosis/redaction.h"
#include "diagnosis/zip_archive.h"

using kelctl::Redactor;

TEST_CASE("redaction: what is taken for a secret, and what is not") {
  const struct {
    const char* text;
    const char* shown;
  } rows[] = {
      {"Parameter Password: [x y]", "Parameter Password:********"},
      {"run [tool.exe -PassWord abc -q]", "run [tool.exe -PassWord ********"},
      {"tool /pwd:abc", "tool /pwd:********"},
      {"{\"certificate\" : \"MII\"}", "{\"certificate\" :********"},
      {"<ApiKey>abc</ApiKey>", "<ApiKey>********"},
      {"token=", "token="},
      {"The passwords do not match!", "The passwords do not match!"},
      {"Password of the day is hunter2", "Password of the day is ********"},
      {"hunter2hunter2,hunter", "****************,hunter"},
      {"block 92+KvU/hf8bMIyTzjOGWhA== end", "block ******** end"},
      {"ReRegisterOnePluginFromRegistry in C:\\Agent\\Common", "ReRegisterOnePluginFromRegistry in C:\\Agent\\Common"},
      {"{00000000-0000-0000-0000-000000000000}", "{00000000-0000-0000-0000-000000000000}"},
      {"ab", "ab"},
      {"server https://joe:pw@h.example/x", "server https://********@h.example/x"},
      {"proxy h.example:3128:joe:word next", "proxy h.example:3128:******** next"},
      {"at 12:30:45 in C:\\a:b", "at 12:30:45 in C:\\a:b"},
      {"tool -p word -q", "tool -p ******** -q"},
      {"PIN=1234", "PIN=********"},
      {"Clave: x", "Clave:********"},
      {"UserPw=x", "UserPw=********"},
      {"proxy_auth=x", "proxy_auth=********"},
      {"Psk=x", "Psk=********"},
      {"Mapping=x, Author=y, SPIN=2", "Mapping=x, Author=y, SPIN=2"},
      {"finger 3f:a2:00:11:22:33:44:55:66:77:88:99", "finger ********"},
  };
  Redactor redactor;
  redactor.AddSecret("hunter2");
  redactor.AddSecret("ab");  // too short
  for (const auto& row : rows) CHECK(redactor.Text(row.text) == row.shown);
  CHECK(
      redactor.Ini(
          "[A]\r\nPassword=p q\r\nUser=hunter2\nEmpty_Key=\r\n [Certificates]\r\nmain=a=b\r\n[TOKENS]\r\nmain=c") ==
      "[A]\r\nPassword=********\r\nUser=********\r\nEmpty_Key=\r\n [Certificates]\r\nmain=********\r\n[TOKENS]\r\nmain="
      "c\r\n");
}

TEST_CASE("trace records: forms of the log, and what is shown of a store's text") {
  const std::string date = "2024/03/05 07:08:09.010;";
  const std::string log = "the end of a store=1\r\n" + date +
                          "1;2;20;KELUtils;WriteIntegraDat;\"writing integra.dat:\n[A]\r\nError=" + date +
                          "\r\n\n\"\r\n" + date + "1;2;0;KELUtils;F;\"a;\"b\"\"\r\n" + date + "1;2;x;K;F;\"c\"\r\n" +
                          date + "1;2;10;K;G;\"cut";
  const kelctl::ParsedTrace parsed = kelctl::ParseTrace(log);
  CHECK(parsed.otherLines == 1);
  REQUIRE(parsed.records.size() == 3);
  CHECK(parsed.records[0].description == "writing integra.dat:\n[A]\nError=" + date + "\n\n");
  const Redactor redactor;
  CHECK(redactor.Record(parsed.records[0]).description == "writing integra.dat: (more lines left out)");
  CHECK(parsed.records[1].description == "a;\"b\"\"\n" + date + "1;2;x;K;F;\"c");
  CHECK(parsed.records[1].IsError());
  CHECK(kelctl::TraceLine(parsed.records[2]) == date + "1;2;10;K;G;\"cut\"");
  CHECK_FALSE(parsed.records[2].IsError());
  CHECK_FALSE(parsed.records[0].IsError());
  kelctl::TraceRecord failure = parsed.records[0];
  failure.description = "CreateProcess failed [Command = a]";
  CHECK(failure.IsError());
}

TEST_CASE("zip archive: another program's reader takes the entries out as they were put in") {
  CHECK(kelctl::Crc32("123456789") == 0xcbf43926);
  std::string binary(70000, '\0');
  for (std::size_t i = 0; i < binary.size(); ++i) binary[i] = static_cast<char>(i * 7 + i / 251);
  const std::pair<std::string, std::string> entries[] = {{"empty", ""}, {"log/a.txt", "line\r\n"}, {"b/c.bin", binary}};
  kelctl::ZipArchive archive({.date = 0x5865, .time = 0x3904});
  for (const auto& [name, content] : entries) archive.Add(name, content);
  const auto folder = std::filesystem::temp_directory_path() / "kelctl-zip-test";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "t.zip", std::ios::binary) << archive.Bytes();
  const std::string extract = "cd '" + folder.string() + "' && unzip -qqo t.zip";
  CHECK(std::system(extract.c_str()) == 0);
  for (const auto& [name, content] : entries) {
    CAPTURE(name);
    std::ifstream file(folder / name, std::ios::binary);
    CHECK(file.is_open());
    CHECK((std::string(std::istreambuf_iterator<char>(file), {}) == content));
  }
  std::string broken = archive.Bytes();
  broken[broken.find("line\r\n")] = 'L';
  std::ofstream(folder / "t.zip", std::ios::binary) << broken;
  CHECK(std::system((extract + " 2>unzip.txt").c_str()) != 0);  // the reader does look at the checksums
  std::filesystem::remove_all(folder);
}

TEST_CASE("machine UUID: placeholders in any letter case") {
  CHECK(kelctl::IsPlaceholderUuid("03000200-0400-0500-0006-000700080009"));
  CHECK(kelctl::IsPlaceholderUuid("ffffffff-ffff-ffff-ffff-ffffffffffff"));
  CHECK_FALSE(kelctl::IsPlaceholderUuid("3D1219C7-C4C5-404A-AA1F-6D2A48ADFDA4"));
}
