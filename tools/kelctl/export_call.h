// One export as the table of commands sees it: its name, how to call it, and the letters of its parameter list, against
// which every row of the table is checked when it is compiled.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "library.h"

namespace kelctl {

/// One argument. Texts are in the code page unless the export takes UTF-8.
struct Argument {
  bool null = false;
  std::string text = {};
  std::int64_t number = 0;
};

/// The arguments of one call, in the order of the export's parameters, and what the export filled in.
struct CallData {
  std::vector<Argument> arguments = {};
  std::size_t next = 0;
  std::uint32_t answer = 0;
  char* buffer = nullptr;
  std::int32_t size = 0;
  KE_TIME now{};
  KE_PROXY proxy{};
};

// How each type of parameter gets its value. A letter names the type in a row's signature.

template <typename Type>
struct Passing;

template <>
struct Passing<const char*> {
  static constexpr char kLetter = 't';
  static const char* Take(CallData& data) {
    const Argument& argument = data.arguments[data.next++];
    return argument.null ? nullptr : argument.text.c_str();
  }
};

template <>
struct Passing<std::int32_t> {
  static constexpr char kLetter = 'n';
  static std::int32_t Take(CallData& data) { return static_cast<std::int32_t>(data.arguments[data.next++].number); }
};

template <>
struct Passing<std::uint32_t> {
  static constexpr char kLetter = 'u';
  static std::uint32_t Take(CallData& data) { return static_cast<std::uint32_t>(data.arguments[data.next++].number); }
};

template <>
struct Passing<char*> {
  static constexpr char kLetter = 'b';
  static char* Take(CallData& data) {
    data.arguments[data.next + 1].number = data.size;
    ++data.next;
    return data.buffer;
  }
};

template <>
struct Passing<std::uint32_t*> {
  static constexpr char kLetter = 'a';
  static std::uint32_t* Take(CallData& data) { return ++data.next, &data.answer; }
};

template <>
struct Passing<const KE_TIME*> {
  static constexpr char kLetter = 'T';
  static const KE_TIME* Take(CallData& data) { return ++data.next, &data.now; }
};

template <>
struct Passing<KE_PROXY*> {
  static constexpr char kLetter = 'p';
  static KE_PROXY* Take(CallData& data) { return ++data.next, &data.proxy; }
};

/// An export: its name, the letters of its parameters, and the call. No name: no export.
struct ExportCall {
  const char* name = nullptr;
  const char* signature = "";
  std::uint32_t (*call)(AnyFunction function, CallData& data) = nullptr;
  bool yesOrNo = false;  // returns 1 or 0 in place of a result code
};

template <typename Function>
struct Calling;

template <typename Result, typename... Types>
struct Calling<Result(KE_API*)(Types...)> {
  static constexpr char kSignature[] = {Passing<Types>::kLetter..., '\0'};
  static constexpr bool kYesOrNo = std::is_signed_v<Result>;
  static std::uint32_t Call(AnyFunction function, CallData& data) {
    data.next = 0;
    const std::tuple<Types...> arguments{Passing<Types>::Take(data)...};  // in braces: from left to right
    return static_cast<std::uint32_t>(std::apply(reinterpret_cast<Result(KE_API*)(Types...)>(function), arguments));
  }
};

template <typename Function>
constexpr ExportCall CallOf(const char* name) {
  return {name, Calling<Function>::kSignature, &Calling<Function>::Call, Calling<Function>::kYesOrNo};
}

/// The export `name` with the type of its prototype in KELUtils.h.
#define KELCTL_CALL(name) ::kelctl::CallOf<decltype(&::name)>(#name)

}  // namespace kelctl
