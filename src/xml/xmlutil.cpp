// ZkXmlUtil: qualified names.
#include "zkcommon/xml/xmlutil.h"

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

} // namespace ZkCommonNS
