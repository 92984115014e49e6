#include "runtime/codeset_names.h"

namespace {

// clang-format off
constexpr ZnCodesetName kNames[] = {
    {0, "BIG5"}, {0, "CSBIG5"}, {0, "CN-BIG5"},
    {1, "US-ASCII"}, {1, "ANSI_X3.4-1968"}, {1, "ISO-IR-6"}, {1, "ANSI_X3.4-1986"}, {1, "ISO_646.IRV:1991"},
    {1, "ASCII"}, {1, "ISO646-US"}, {1, "US"}, {1, "IBM367"}, {1, "CP367"},
    {2, "IBM869"}, {2, "CP869"}, {2, "CODEPAGE869"}, {2, "869"},
    {3, "IBM874"}, {3, "CP874"}, {3, "CODEPAGE874"}, {3, "874"},
    {4, "IBM875"}, {4, "CP875"}, {4, "CODEPAGE875"}, {4, "875"},
    {5, "IBM037"}, {5, "CP037"}, {5, "CODEPAGE037"}, {5, "037"},
    {6, "IBM1026"}, {6, "CP1026"}, {6, "CODEPAGE1026"}, {6, "1026"},
    {7, "WINDOWS-1250"}, {7, "CP1250"}, {7, "CODEPAGE1250"}, {7, "1250"},
    {8, "WINDOWS-1251"}, {8, "CP1251"}, {8, "CODEPAGE1251"}, {8, "1251"},
    {9, "WINDOWS-1252"}, {9, "CP1252"}, {9, "CODEPAGE1252"}, {9, "1252"},
    {10, "WINDOWS-1253"}, {10, "CP1253"}, {10, "CODEPAGE1253"}, {10, "1253"},
    {11, "WINDOWS-1254"}, {11, "CP1254"}, {11, "CODEPAGE1254"}, {11, "1254"},
    {12, "WINDOWS-1255"}, {12, "CP1255"}, {12, "CODEPAGE1255"}, {12, "1255"},
    {13, "WINDOWS-1256"}, {13, "CP1256"}, {13, "CODEPAGE1256"}, {13, "1256"},
    {14, "WINDOWS-1257"}, {14, "CP1257"}, {14, "CODEPAGE1257"}, {14, "1257"},
    {15, "WINDOWS-1258"}, {15, "CP1258"}, {15, "CODEPAGE1258"}, {15, "1258"},
    {16, "IBM437"}, {16, "CP437"}, {16, "CODEPAGE437"}, {16, "437"},
    {17, "IBM500"}, {17, "CP500"}, {17, "CODEPAGE500"}, {17, "500"},
    {18, "IBM737"}, {18, "CP737"}, {18, "CODEPAGE737"}, {18, "737"},
    {19, "IBM775"}, {19, "CP775"}, {19, "CODEPAGE775"}, {19, "775"},
    {20, "IBM850"}, {20, "CP850"}, {20, "CODEPAGE850"}, {20, "850"},
    {21, "IBM852"}, {21, "CP852"}, {21, "CODEPAGE852"}, {21, "852"},
    {22, "IBM855"}, {22, "CP855"}, {22, "CODEPAGE855"}, {22, "855"},
    {23, "IBM857"}, {23, "CP857"}, {23, "CODEPAGE857"}, {23, "857"},
    {24, "IBM860"}, {24, "CP860"}, {24, "CODEPAGE860"}, {24, "860"},
    {25, "IBM861"}, {25, "CP861"}, {25, "CODEPAGE861"}, {25, "861"},
    {26, "IBM862"}, {26, "CP862"}, {26, "CODEPAGE862"}, {26, "862"},
    {27, "IBM863"}, {27, "CP863"}, {27, "CODEPAGE863"}, {27, "863"},
    {28, "IBM864"}, {28, "CP864"}, {28, "CODEPAGE864"}, {28, "864"},
    {29, "IBM865"}, {29, "CP865"}, {29, "CODEPAGE865"}, {29, "865"},
    {30, "IBM866"}, {30, "CP866"}, {30, "CODEPAGE866"}, {30, "866"},
    {31, "GB18030"}, {31, "ZH_CN.GB18030"},
    {32, "GB2312"}, {32, "ISO-IR-58"}, {32, "CHINESE"}, {32, "CSISO58GB231280"}, {32, "ZH_CN"}, {32, "ZH"},
    {33, "ISO-8859-1"}, {33, "ISO88591"}, {33, "ISO8859-1"}, {33, "ISO_8859-1:1987"}, {33, "ISO-IR-100"},
    {33, "ISO_8859-1"}, {33, "ISO 8859-1"}, {33, "LATIN1"}, {33, "L1"}, {33, "IBM819"}, {33, "CP819"},
    {33, "CSISOLATIN1"}, {33, "EN_US"}, {33, "EN-US"}, {33, "EN"},
    {34, "SHIFT_JIS"}, {34, "SJIS"}, {34, "MS_KANJI"}, {34, "CSSHIFTJIS"}, {34, "JA_JP.SJIS"}, {34, "X-SJIS"},
    {35, "EUC-JP"}, {35, "CSEUCPKDFMTJAPANESE"}, {35, "EUC"}, {35, "JA_JP.EUC"}, {35, "JA_JP"}, {35, "JA-JP"},
    {35, "JA"}, {35, "JP"},
    {36, "ISO-2022-JP"},
    {37, "KOI8-R"}, {37, "KOI8"}, {37, "KOI8_R"}, {37, "CSKOI8R"},
    {38, "TIS-620"}, {38, "TIS620.2533"}, {38, "TIS620"},
    {39, "UNICODE MSB"}, {39, "UNICODEMSB"}, {39, "UNICODE-MSB"},
    {40, "UNICODE LSB"}, {40, "UNICODELSB"}, {40, "UNICODE-LSB"},
    {41, "UNICODE LOCAL"}, {41, "UNICODELOCAL"}, {41, "UNICODE-LOCAL"},
    {42, "UTF-8"}, {42, "UNICODE-1-1-UTF-8"}, {42, "UTF8"},
};
// clang-format on

constexpr ZnCodesetName kOptions[] = {
    {ZnCodeset::AddByteOrderMarker, "ADDBYTEORDERMARKER"},
    {ZnCodeset::Recoverable, "RECOVERABLE"},
};

}  // namespace

constinit const std::span<const ZnCodesetName> kZnCodesetNames(kNames);
constinit const std::span<const ZnCodesetName> kZnCodesetOptions(kOptions);
