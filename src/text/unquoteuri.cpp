// ZkUtil::unquoteUri: the URI inside url(...) text.
#include "zkcommon/text/util.h"

namespace ZkCommonNS {

UnicodeString ZkUtil::unquoteUri(const UnicodeString& text) {
    UnicodeString inner = text;
    inner.trim();
    if (inner.length() >= 4 &&
        inner.caseCompare(0, 4, UnicodeString(u"url("), U_FOLD_CASE_DEFAULT) == 0) {
        inner.remove(0, 4);
        if (inner.endsWith(u")"))
            inner.truncate(inner.length() - 1);
        inner.trim();
    }
    if (inner.startsWith(u"\"") || inner.startsWith(u"'")) {
        const char16_t* start = inner.getTerminatedBuffer();
        const char16_t* end = nullptr;
        UnicodeString content = parseString(start, &end, QUOTE_CSS_STRING);
        if (!content.isBogus() && end == start + inner.length())
            return content;
    }
    return inner;
}

} // namespace ZkCommonNS
