// ZkXmlUtil: qualified names.
#include "zkcommon/xml/xmlutil.h"

#include "zkcommon/core/char.h"
#include "zkcommon/xml/xmlserializer.h"

namespace ZkCommonNS {

ZkName ZkXmlUtil::makeQName(ZkName prefix, ZkName local) {
    // The common case needs no text at all.
    if (prefix.isEmpty())
        return local;
    return ZkName(makeQNameStr(prefix.toString(), local.toString()));
}

UnicodeString ZkXmlUtil::makeQNameStr(const UnicodeString& prefix, const UnicodeString& local) {
    if (prefix.isEmpty())
        return local;
    UnicodeString result(prefix);
    result.append(u':').append(local);
    return result;
}

UnicodeString ZkXmlUtil::makeNSQNameStr(const UnicodeString& ns, const UnicodeString& local) {
    if (ns.isEmpty())
        return local;
    if (ns == ZkName(ZKN_NS_XML).toString())
        return makeQNameStr(ZkName(ZKN_xml).toString(), local);
    if (ns == ZkName(ZKN_NS_XMLNS).toString()) {
        if (local == ZkName(ZKN_xmlns).toString())
            return local;
        return makeQNameStr(ZkName(ZKN_xmlns).toString(), local);
    }
    // The colon after the brace is part of the established message format.
    UnicodeString result(u'{');
    result.append(ns).append(u"}:", 2).append(local);
    return result;
}

int32_t ZkXmlUtil::findQNameColon(const UnicodeString& qname) {
    int32_t colon = qname.indexOf(u':');
    return colon >= 1 ? colon : -1;
}

ZkName ZkXmlUtil::getPrefixFromQName(ZkName qname) {
    const UnicodeString& text = qname.toString();
    int32_t colon = findQNameColon(text);
    if (colon < 0)
        return ZkName();
    return ZkName(UnicodeString(text, 0, colon));
}

ZkName ZkXmlUtil::getLocalPartFromQName(ZkName qname) {
    const UnicodeString& text = qname.toString();
    int32_t colon = findQNameColon(text);
    if (colon < 0)
        return qname;
    return ZkName(UnicodeString(text, colon + 1));
}

ZkPtr<ZkXmlSerializer> ZkXmlUtil::createXmlSerializer() {
    return ZkXmlSerializer::createXmlSerializer();
}

namespace {

// The characters a name may hold after its first place, besides the start characters.
bool isXmpNameChar(UChar32 c) {
    return (c >= u'0' && c <= u'9') || c == u'-' || c == u'.' || c == 0x00B7 ||
           (c >= 0x0300 && c <= 0x036F) || c == 0x203F || c == 0x2040;
}

} // namespace

UnicodeString ZkXmlUtil::escapeXmpUserDefinedKey(const UnicodeString& key) {
    // U+2182 ROMAN NUMERAL TEN THOUSAND is the escape character, so it escapes itself.
    constexpr UChar kEscape = 0x2182;
    static const char16_t kHex[] = u"0123456789ABCDEF";
    UnicodeString result;
    for (int32_t i = 0; i < key.length();) {
        const UChar32 c = key.char32At(i);
        const int32_t units = U16_LENGTH(c);
        const bool keep = c != kEscape && c != u':' &&
                          (ZkChar::isNCNameStartChar(c) || (i > 0 && isXmpNameChar(c)));
        if (keep) {
            result.append(c);
        } else {
            for (int32_t k = 0; k < units && i + k < key.length(); ++k) {
                const UChar unit = key.charAt(i + k);
                const UChar escaped[] = {kEscape, kHex[(unit >> 12) & 15], kHex[(unit >> 8) & 15],
                                         kHex[(unit >> 4) & 15], kHex[unit & 15]};
                result.append(escaped, 0, 5);
            }
        }
        i += units;
    }
    return result;
}

} // namespace ZkCommonNS
