// Space handling of ZkUtil: collapsing and removing the XML white space characters.
#include "zkcommon/text/util.h"

namespace ZkCommonNS {

namespace {

// TAB, LF, CR and SPACE: the white space of XML attribute normalisation.
bool isXmlSpace(char16_t c) noexcept {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

} // namespace

UnicodeString ZkUtil::normalizeSpaces(const UnicodeString& text) {
    UnicodeString result;
    int length = text.length();
    const char16_t* p = text.getBuffer();
    if (!p)
        return result;
    bool pendingBlank = false;
    for (int i = 0; i < length; ++i) {
        char16_t c = p[i];
        if (isXmlSpace(c)) {
            pendingBlank = !result.isEmpty();
            continue;
        }
        if (pendingBlank) {
            result.append(u' ');
            pendingBlank = false;
        }
        result.append(c);
    }
    return result;
}

UnicodeString ZkUtil::omitSpace(const UnicodeString& text) {
    UnicodeString result;
    int length = text.length();
    const char16_t* p = text.getBuffer();
    if (!p)
        return result;
    for (int i = 0; i < length; ++i) {
        if (!isXmlSpace(p[i]))
            result.append(p[i]);
    }
    return result;
}

} // namespace ZkCommonNS
