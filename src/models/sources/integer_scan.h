// Reading of 16-bit integers from a pattern file: decimal, octal with a leading 0, hexadecimal with
// a leading 0x, each with an optional sign. Knows no locale.
#pragma once

#include <cstdint>
#include <string_view>

namespace photrak {

/// Takes the next integer off the front of `text`, leading white space included. Without one it
/// gives false and leaves `text` and `value` alone, so that every later call fails likewise. A
/// number beyond 16 bits keeps its low 16 bits; one beyond 64 bits saturates before that.
bool ScanShort(std::string_view& text, std::int16_t& value);

}  // namespace photrak
