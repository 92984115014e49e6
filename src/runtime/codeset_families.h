#pragma once
// The converters behind ZnCodesetConverter's table, one function a family of encodings.

#include "runtime/codeset_converter.h"

const ZnConverter& ZnAsciiConverter();
const ZnConverter& ZnLatin1Converter();
// Null for an encoding that has no single-byte table.
const ZnConverter* ZnSingleByteConverter(ZnEncoding encoding);
const ZnConverter& ZnBig5Converter();
const ZnConverter& ZnGb18030Converter();
const ZnConverter& ZnShiftJisConverter();
const ZnConverter& ZnEucJpConverter();
const ZnConverter& ZnIso2022JpConverter();
const ZnConverter& ZnUtf8Converter();
const ZnConverter& ZnUtf16MsbConverter();
const ZnConverter& ZnUtf16LsbConverter();
const ZnConverter& ZnUtf16LocalConverter();  // the order of this host
