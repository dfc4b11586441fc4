// The unit words behind numbers as the tokenizer meets them: any case, built-in names only.
#include "values/parserinternal.h"
#include "zkcommon/text/util.h"

namespace ZkCommonNS {

ZkUnitType detail::unitOfWord(const UnicodeString& word) {
    // Unit words are short ASCII; anything longer or wider is no unit and is not looked up.
    constexpr int32_t kLongestUnit = 5;
    int32_t length = word.length();
    if (length == 0 || length > kLongestUnit)
        return UnitNone;
    char16_t lower[kLongestUnit];
    for (int32_t i = 0; i < length; ++i) {
        char16_t c = word.charAt(i);
        if (c >= u'A' && c <= u'Z')
            c = static_cast<char16_t>(c + 32);
        else if (c > 0x7F)
            return UnitNone;
        lower[i] = c;
    }
    UnicodeString text(lower, length);
    // The frequencies are the two units spelt with a capital; their lower-case words are no
    // built-in names.
    if (text == u"hz")
        return UnitHz;
    if (text == u"khz")
        return UnitKHz;
    ZkNameEnum name = ZkNameTable::getBuiltinNameEnum(text);
    if (name == ZKN_EMPTY)
        return UnitNone;
    return ZkUtil::toUnitType(ZkName(name), /*typeWords=*/false);
}

} // namespace ZkCommonNS
