// The base64 form of enciphered settings: standard alphabet, lines of 76 characters.
#pragma once

#include <cstdint>

namespace text {

/// Flags of the text form; without any it has "=" padding and a CR LF pair after every full line of 76 characters.
enum Base64Flags : std::uint32_t {
  kBase64NoPadding = 1,
  kBase64NoLineBreaks = 2,
};

/// The size in characters that `Base64EncodeText` asks for, for `sourceLength` bytes. A generous estimate: it counts
/// one line break more than is written. Throws std::bad_array_new_length for a negative length, and for one whose
/// estimate does not fit 32 bits: four times the length must.
std::int32_t Base64RequiredLength(std::int32_t sourceLength, std::uint32_t flags);

/// Encodes `sourceLength` bytes. `*destinationLength` is the size of the destination on entry and receives the number
/// of characters written; no terminating zero is among them. Whole groups that fill their last line exactly (57 bytes,
/// 114, ...) are followed by a CR LF pair.
///
/// False, with nothing written, when a pointer is null or the destination is smaller than the required length. Throws
/// as `Base64RequiredLength` does.
bool Base64EncodeText(const void* source, std::int32_t sourceLength, char* destination, std::int32_t* destinationLength,
                      std::uint32_t flags);

/// Decodes up to `sourceLength` characters, ending at a zero byte. Characters outside the alphabet are skipped, "="
/// among them; the last two or three characters of an unfinished group give one or two bytes.
///
/// `*destinationLength` is the size of the destination on entry and always receives the number of decoded bytes of the
/// whole text. Once a group does not fit, and for a null destination, nothing more is written and the result is
/// false. False, with nothing counted, for a null source or length pointer.
bool Base64DecodeText(const char* source, std::int32_t sourceLength, void* destination,
                      std::int32_t* destinationLength) noexcept;

}  // namespace text
