// How ZkValue reaches the colour code without depending on it: the colour file installs two
// functions at start-up; until it does, colours print as #RRGGBB and compare by text.
#ifndef ZKCOMMON_SRC_VALUES_COLORHOOKS_H
#define ZKCOMMON_SRC_VALUES_COLORHOOKS_H

#include "zkcommon/core/unicode.h"

namespace ZkCommonNS {

class ZkValue;

namespace detail {

struct ColorValueHooks {
    /// The text of a colour value (an Integer or a Compound of unit 24), all flags false.
    UnicodeString (*toString)(const ZkValue& value);
    /// Equality of two colour values of the same type.
    bool (*equal)(const ZkValue& a, const ZkValue& b);
};

/// Installs the colour functions; a null member keeps the built-in fallback. Call it from a
/// static initialiser of the colour file.
void setColorValueHooks(const ColorValueHooks& hooks);
const ColorValueHooks& getColorValueHooks();

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_VALUES_COLORHOOKS_H
