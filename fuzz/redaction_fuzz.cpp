// Any bytes around a planted secret, in each form that the redaction knows: no form of output holds the secret, and
// text without a secret keeps its number of lines.
#include "diagnosis/redaction.h"

#include "fuzzer.h"

namespace {

constexpr char kSecret[] = "Xq7zLw0v";

bool Holds(const std::string& text) { return text.find(kSecret) != text.npos; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string noise(reinterpret_cast<const char*>(data), size);
  for (auto at = noise.find(kSecret); at != noise.npos; at = noise.find(kSecret)) noise.erase(at, 1);
  std::string line = noise;
  for (char& c : line) c = c == '\r' || c == '\n' ? ' ' : c;
  const std::string secret = kSecret;
  const kelctl::Redactor plain;
  kelctl::Redactor redactor;
  redactor.AddSecret(secret);
  Require(!Holds(redactor.Text(line + secret + line)));
  Require(!Holds(redactor.Ini(noise + secret + noise)));
  for (const char* before : {" password=", " PIN=", " UserPw=", " https://u:", " -p ", " h:80:u:"}) {
    const bool address = std::string(before).find("://") != std::string::npos;
    const std::string text = line + before + secret + (address ? "@h" : "");
    Require(!Holds(plain.Text(text)));
    kelctl::TraceRecord record;
    record.description = text + "\n" + secret;
    Require(!Holds(plain.Record(record).description));
  }
  Require(!Holds(plain.Ini(noise + "\n [Credentials]\nx=" + secret)));
  return 0;
}
