#include "endurance/exported_functions.h"

#include <doctest/doctest.h>

#include <climits>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>

namespace endurance {
namespace {

Kind KindOf(const std::string& type) {
  const bool in = type.find("const ") != std::string::npos;
  if (type.find("char*") != std::string::npos) return in ? Kind::kText : Kind::kBuffer;
  if (type.find("KE_TIME*") != std::string::npos) return Kind::kTime;
  if (type.find("KE_PROXY*") != std::string::npos) return Kind::kProxy;
  if (type.find('*') == std::string::npos) return Kind::kNumber;
  return in ? Kind::kNumberIn : Kind::kNumberOut;
}

std::vector<ExportedFunction> ReadInterface() {
  const auto described = nlohmann::json::parse(support::ReadFile(support::BuildFolder() / "interface/KELUtils.json"));
  std::vector<ExportedFunction> functions;
  for (const auto& function : described["functions"]) {
    ExportedFunction read{function["name"], {}, {0}, function["otherResults"]};
    if (function["returns"] != "KE_RESULT") read.results.insert(1);
    for (const auto& [code, cause] : function["results"].items())
      read.results.insert(described["codes"][code]["value"].get<std::uint32_t>());
    for (const auto& parameter : function["parameters"])
      read.parameters.push_back({KindOf(parameter["type"]), parameter["name"]});
    functions.push_back(read);
  }
  return functions;
}

// Memory of `size` bytes that ends before a page that cannot be touched. Kept to the end: there are few kinds of it.
char* AtPageEnd(std::size_t size) {
  const std::size_t reach = (size + 16 + 4095) / 4096 * 4096;
  char* const pages = static_cast<char*>(VirtualAlloc(nullptr, reach + 4096, MEM_RESERVE, PAGE_NOACCESS));
  REQUIRE(VirtualAlloc(pages, reach, MEM_COMMIT, PAGE_READWRITE) != nullptr);
  return pages + reach - size;
}

std::uint32_t Word(const void* address) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address));
}

// A text that can only be read.
Value Text(const std::string& shown, const std::string& text, bool terminated = true) {
  static std::map<std::string, char*> texts;
  char*& at = texts[text + (terminated ? "z" : "")];
  if (at == nullptr) {
    at = AtPageEnd(text.size() + terminated);
    std::memcpy(at, text.c_str(), text.size() + terminated);
    DWORD before;
    REQUIRE(VirtualProtect(at - 1, text.size() + terminated + 1, PAGE_READONLY, &before));
  }
  return {shown, {Word(at)}, {}};
}

// Something of `size` bytes that is filled before each call; `room` bytes are there, before the page that cannot be
// touched.
Value Memory(const std::string& shown, const std::string& content, std::size_t room = 0) {
  static std::map<std::size_t, char*> memory[8];
  static int turn = 0;  // so that the arguments of one call have memory of their own
  char*& at = memory[++turn % 8][std::max(room, content.size())];
  if (at == nullptr) at = AtPageEnd(std::max(room, content.size()));
  return {shown, {Word(at)}, {{at - 16, std::string(16, '#') + content}}};
}

Value Number(std::int32_t number) { return {std::to_string(number), {static_cast<std::uint32_t>(number)}, {}}; }
Value Null() { return {"null", {0}, {}}; }
Value Pair(Value first, const Value& second) {
  first.shown += ", " + second.shown;
  first.words.push_back(second.words[0]);
  first.fills.insert(first.fills.end(), second.fills.begin(), second.fills.end());
  return first;
}
std::string Bytes(std::int32_t number) { return {reinterpret_cast<const char*>(&number), sizeof number}; }

std::vector<Value> Texts(const std::string& name, const std::string& folder) {
  const bool file = name == "filePath", root = name == "root" || name == "installDir";
  std::string other;
  for (int c = 128; c < 256; ++c) other += static_cast<char>(c);
  return {Text("good", root                ? folder
                       : file              ? folder + "values.dat"
                       : name == "command" ? "KELUpd"
                       : name == "user"    ? ""
                                           : "5"),
          Null(),
          Text("empty", ""),
          Text("one", "\\"),
          Text("254", std::string(254, 'a')),
          Text("2048", std::string(2048, 'b')),
          Text("32767", std::string(32767, 'd')),
          Text("70000", std::string(70000, 'c')),
          Text("formats", "%s%n%d\"]=[;\r\n\t%"),
          Text("not ASCII", other)};
}

// A buffer and its size, which is a number or, for `pointer`, what a pointer leads to.
std::vector<Value> Buffers(bool pointer, const std::string& settingText) {
  const auto pair = [&](const char* shown, std::size_t room, std::int32_t size) {
    std::string content = settingText;  // what one of them takes; ends in a zero
    content.resize(room);
    if (room > 0) content.back() = '\0';
    const Value number = pointer ? Memory("*" + std::to_string(size), Bytes(size)) : Number(size);
    return Pair(room ? Memory(shown, content) : Null(), number);
  };
  // A huge size, which a negative one is where it counts as unsigned, has room for the longest text of all.
  constexpr std::size_t kRoom = 1 << 17;
  std::vector<Value> values{pair("good", 1024, 1024),      pair("null", 0, 0),        pair("null", 0, 1024),
                            pair("1024", 1024, 0),         pair("131072", kRoom, -1), pair("131072", kRoom, INT_MIN),
                            pair("131072", kRoom, INT_MAX)};
  for (const int size : {1, 2, 3, 4, 5, 6, 16, 30, 36, 37, 38, 354})
    values.push_back(pair("exactly", static_cast<std::size_t>(size), size));
  if (pointer) values.push_back(Pair(Memory("1024", std::string(1024, 'A')), Null()));
  return values;
}

std::vector<Value> Proxies(bool sized) {
  const std::string whole(sizeof(KE_PROXY), '\0');
  if (!sized) return {Memory("good", whole), Null(), Memory("odd", whole.substr(1) + "??")};
  std::vector<Value> values{Pair(Memory("good", whole), Number(sizeof(KE_PROXY))), Pair(Null(), Number(776)),
                            Pair(Memory("whole", whole), Number(-1))};
  for (const int size : {0, 1, 256, 772, 773, 775}) {
    values.push_back(Pair(Memory("exactly", std::string(static_cast<std::size_t>(size), '\0')), Number(size)));
  }
  return values;
}

std::vector<Value> LimitedTexts() {
  std::vector<Value> values{Pair(Text("good", "5"), Number(1)), Pair(Null(), Number(1))};
  for (const int length : {0, 1, 2, 252, 253, 254, 255, 4096}) {
    values.push_back(
        Pair(Text("unterminated", std::string(static_cast<std::size_t>(length), 'x'), false), Number(length)));
  }
  for (const int length : {-1, INT_MIN, INT_MAX}) values.push_back(Pair(Text("text", "text"), Number(length)));
  return values;
}

std::vector<Value> Pointers(std::initializer_list<std::string> contents) {
  std::vector<Value> values;
  for (const std::string& content : contents) values.push_back(Memory("bytes", content));
  values.push_back(Null());
  values.push_back(Memory("odd", contents.begin()->substr(1) + "??"));
  return values;
}

}  // namespace

const std::vector<ExportedFunction>& ExportedFunctions() {
  static const std::vector<ExportedFunction> functions = ReadInterface();
  return functions;
}

std::vector<std::vector<Value>> ValuesOf(const ExportedFunction& function, const std::string& folder,
                                         const std::string& settingText) {
  std::vector<std::vector<Value>> all;
  const auto& parameters = function.parameters;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const std::string next = i + 1 < parameters.size() ? parameters[i + 1].name : "";
    const bool sized = next == "size" || next == "bufferSize" || next == "outputSize";
    switch (parameters[i].kind) {
      case Kind::kText:
        all.push_back(next == "textLength" ? (++i, LimitedTexts()) : Texts(parameters[i].name, folder));
        break;
      case Kind::kBuffer:
        REQUIRE(sized);
        all.push_back(Buffers(parameters[++i].kind == Kind::kNumberOut, settingText));
        break;
      case Kind::kProxy:
        all.push_back(Proxies(sized));
        i += sized;
        break;
      case Kind::kNumber:
        all.push_back({Number(parameters[i].name == "errorCode" ? 403 : 1), Number(0), Number(-1), Number(38),
                       Number(INT_MAX), Number(INT_MIN)});
        break;
      case Kind::kNumberIn:
      case Kind::kNumberOut:
        all.push_back(Pointers({Bytes(1), Bytes(-1), Bytes(INT_MAX), Bytes(INT_MIN)}));
        break;
      case Kind::kTime:
        all.push_back(Pointers({std::string(24, '\1'), std::string(24, '\x7F'), std::string(24, '\x80')}));
        break;
    }
  }
  return all;
}

Called Call(HMODULE dll, const ExportedFunction& function, const std::vector<const Value*>& values, int offset,
            void (*inside)(bool)) {
  const FARPROC address = GetProcAddress(dll, function.name.c_str());
  const bool found = address != nullptr;
  REQUIRE_MESSAGE(found, function.name);
  std::vector<std::uint32_t> words;
  for (const Value* value : values) {
    words.insert(words.end(), value->words.begin(), value->words.end());
    for (const Fill& fill : value->fills) fill.content.copy(fill.at, fill.content.size());
  }
  REQUIRE(words.size() == function.parameters.size());
  Called called{0, 0, true, true};
  auto count = static_cast<std::uint32_t>(words.size());
  const std::uint32_t* arguments = words.data();
  inside(true);
  asm volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl %[offset], %%esp\n"
      "1:\ttestl %%ecx, %%ecx\n\t"
      "jz 2f\n\t"
      "pushl -4(%%edx,%%ecx,4)\n\t"
      "decl %%ecx\n\t"
      "jmp 1b\n"
      "2:\tmovl %%esp, %%ebx\n\t"
      "call *%%eax\n\t"
      "movl %%esp, %%ecx\n\t"
      "subl %%ebx, %%ecx\n\t"
      "movl %%esi, %%esp"
      : "=a"(called.result), "+c"(count), "+d"(arguments)
      : "a"(address), [offset] "D"(offset)
      : "ebx", "esi", "memory", "cc");
  inside(false);
  called.popped = count;
  for (const Value* value : values) {
    for (const Fill& fill : value->fills) {
      called.inBounds &= std::memcmp(fill.at, fill.content.data(), 16) == 0;
      called.untouched &= std::memcmp(fill.at, fill.content.data(), fill.content.size()) == 0;
    }
  }
  return called;
}

}  // namespace endurance
