#pragma once
// Contract. The numbers of the 43 encodings that text may enter or leave in, and of the conversion options.

#include <cstdint>

using ZnEncoding = unsigned;

namespace ZnCodeset {
inline constexpr ZnEncoding Big5 = 0;
inline constexpr ZnEncoding Ascii = 1;
inline constexpr ZnEncoding Cp850 = 20;
inline constexpr ZnEncoding Gb18030 = 31;
inline constexpr ZnEncoding Gb2312 = 32;
inline constexpr ZnEncoding Latin1 = 33;
inline constexpr ZnEncoding ShiftJis = 34;
inline constexpr ZnEncoding EucJp = 35;
inline constexpr ZnEncoding Iso2022Jp = 36;
inline constexpr ZnEncoding Utf16Msb = 39;
inline constexpr ZnEncoding Utf16Lsb = 40;
inline constexpr ZnEncoding Utf16Local = 41;
inline constexpr ZnEncoding Utf8 = 42;
inline constexpr ZnEncoding Invalid = 43;

// Option mask of every conversion.
inline constexpr unsigned AddByteOrderMarker = 1;
inline constexpr unsigned Recoverable = 2;
inline constexpr unsigned UnknownOption = 4;
}  // namespace ZnCodeset
