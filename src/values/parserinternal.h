// What the tokenizer, the value parser and the colour bridge share inside the values subsystem.
#ifndef ZKCOMMON_SRC_VALUES_PARSERINTERNAL_H
#define ZKCOMMON_SRC_VALUES_PARSERINTERNAL_H

#include "zkcommon/core/unicode.h"
#include "zkcommon/values/length.h"
#include "zkcommon/values/value.h"

namespace ZkCommonNS {

class ZkTokenizer;

namespace detail {

/// The unit of a word after a number, case-insensitively ("PX", "Hz" and "khz" included); 0 for
/// a word that is no unit. Reads built-in names only, so unknown words intern nothing.
ZkUnitType unitOfWord(const UnicodeString& word);

/// A colour and the status of its reading: bit 0 success, bit 1 a component clamped, bit 4 a
/// separation, bit 5 a tint, bit 6 CMYK values.
struct ColorParse {
    ZkValue value;
    int status = 0;
};
ColorParse parseColorCore(ZkTokenizer& tokenizer, bool allowIcc);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_VALUES_PARSERINTERNAL_H
