// ZkDocument: the parser behind the load forms, and the inputs they give it.
#include "zkcommon/dom/document.h"
#include "zkcommon/io/customstream.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/xml/xmlloadsource.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlutil.h"

#include <memory>

namespace ZkCommonNS {

namespace {
// loadXml hands the string's own UTF-16 buffer to the parser, in the byte order of this
// machine. The sized name is given, so that a text that starts with white space rather than
// "<" is still read as UTF-16.
const UnicodeString& hostUtf16() {
    static const char16_t kProbe = 0x0102;
    static const UnicodeString s_name(
        *reinterpret_cast<const unsigned char*>(&kProbe) == 0x01 ? u"UTF-16BE" : u"UTF-16LE");
    return s_name;
}
} // namespace

ZkXmlParser* ZkDocument::getParser() {
    ZkMutex guard(m_lock);
    if (!m_parser) {
        ZkPtr<ZkXmlParser> parser = ZkXmlUtil::createXmlParser(nullptr);
        m_source = std::make_unique<ZkXmlParserLoadSource>(parser);
        m_parser = parser;
    }
    return m_parser;
}

ZkXmlParser* ZkDocument::getParser() const {
    return m_parser;
}

void ZkDocument::setParser(ZkXmlParser* parser) {
    ZkMutex guard(m_lock);
    ZkPtr<ZkXmlParser> held(parser);
    m_source = parser ? std::make_unique<ZkXmlParserLoadSource>(held) : nullptr;
    m_parser = held;
    m_documentUri.remove();
}

void ZkDocument::load(const UnicodeString& uri, ZkNode* root) {
    ZkUri target(uri);
    load(target, root);
}

void ZkDocument::load(ZkUri& uri, ZkNode* root) {
    ZkXmlParser* parser = getParser();
    {
        ZkMutex guard(m_lock);
        setLastLoadingNode(nullptr); // nothing reads the old input from here on
        parser->setInput(uri, UnicodeString(), m_baseUri);
        if (!root || root == this)
            m_documentUri = uri.toString();
    }
    beginLoad(root);
}

void ZkDocument::load(std::istream& in, ZkNode* root, const UnicodeString& uri) {
    ZkXmlParser* parser = getParser();
    {
        ZkMutex guard(m_lock);
        setLastLoadingNode(nullptr);
        if (!root || root == this)
            m_documentUri = uri;
        parser->setInput(in, UnicodeString(), m_baseUri.isEmpty() ? m_documentUri : m_baseUri);
        parser->setInputUri(ZkUri(uri));
    }
    beginLoad(root);
}

void ZkDocument::loadXml(const UnicodeString& text, ZkNode* root) {
    ZkXmlParser* parser = getParser();
    // The stream lives only during this call: the load always runs to its end, and the parser
    // lets go of the stream before the call returns, also on an error.
    ZkStrStream in(reinterpret_cast<const char*>(text.getBuffer()),
                   uint64_t(text.length()) * sizeof(UChar));
    try {
        {
            ZkMutex guard(m_lock);
            setLastLoadingNode(nullptr);
            parser->setInput(in, hostUtf16(), m_baseUri);
            if (!root || root == this)
                m_documentUri.remove();
        }
        beginLoad(root, /*pull=*/false);
    } catch (...) {
        ZkMutex guard(m_lock);
        setLastLoadingNode(nullptr);
        parser->closeStream();
        throw;
    }
    ZkMutex guard(m_lock);
    parser->closeStream();
}

} // namespace ZkCommonNS
