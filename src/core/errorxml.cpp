// The XML error log: a head, one element per record, and an end.
#include "zkcommon/core/errorxml.h"

#include "zkcommon/core/error.h"
#include "zkcommon/core/name.h"

#include <string>

namespace ZkCommonNS {

namespace {

/// "&" first, then "<" and ">"; in attributes also `"`, last. The result goes out as UTF-8.
std::string escaped(const UnicodeString& text, bool attribute) {
    std::string out;
    std::string utf8;
    text.toUTF8String(utf8);
    out.reserve(utf8.size());
    for (char c : utf8) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += attribute ? "&quot;" : "\"";
            break;
        default:
            out += c;
        }
    }
    return out;
}

int levelNumber(unsigned short code) {
    switch (getErrorLevel(code)) {
    case ZK_ERROR_LEVEL_FATAL:
        return 4;
    case ZK_ERROR_LEVEL_WARNING:
        return 2;
    case ZK_ERROR_LEVEL_ERROR:
        return 3;
    default:
        return 1;
    }
}

} // namespace

ZkErrorXML::ZkErrorXML(std::ostream& out, const UnicodeString& application,
                       const UnicodeString& version, const UnicodeString& copyright,
                       const UnicodeString& prefix)
    : m_out(&out), m_prefix(prefix) {
    *m_out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" << std::endl;
    *m_out << "<";
    writeName("errors");
    *m_out << " xmlns";
    if (!m_prefix.isEmpty())
        *m_out << ":" << escaped(m_prefix, false);
    *m_out << "=\"" << escaped(ZkName(ZKN_NS_ERROR).toString(), true) << "\"";
    if (!application.isEmpty())
        *m_out << " application=\"" << escaped(application, true) << "\"";
    if (!version.isEmpty())
        *m_out << " version=\"" << escaped(version, true) << "\"";
    if (!copyright.isEmpty())
        *m_out << " copyright=\"" << escaped(copyright, true) << "\"";
    *m_out << ">" << std::endl;
}

ZkErrorXML::~ZkErrorXML() {
    *m_out << "</";
    writeName("errors");
    *m_out << ">" << std::endl;
}

void ZkErrorXML::writeName(const char* name) const {
    if (!m_prefix.isEmpty())
        *m_out << escaped(m_prefix, false) << ":";
    *m_out << name;
}

void ZkErrorXML::writeRecordEnd(const UnicodeString& message) const {
    *m_out << ">" << std::endl << escaped(message, false);
    if (message.isEmpty() || message.charAt(message.length() - 1) != 0x0A)
        *m_out << std::endl;
    *m_out << "</";
    writeName("error");
    *m_out << ">" << std::endl;
}

void ZkErrorXML::errorMessage(const ZkError& error) const {
    errorMessage(error.getErrorCode(), error.getRawMessage(), error.getLineNumber(),
                 error.getColumnNumber(), error.getUri());
}

void ZkErrorXML::errorMessage(unsigned short code, const UnicodeString& message, int line,
                              int column, const UnicodeString& uri) const {
    if (code == 0)
        return;
    *m_out << "<";
    writeName("error");
    *m_out << " level=\"" << levelNumber(code) << "\" code=\"" << code << "\"";
    if (line > 0)
        *m_out << " line=\"" << line << "\"";
    if (column > 0)
        *m_out << " column=\"" << column << "\"";
    if (!uri.isEmpty())
        *m_out << " source=\"" << escaped(uri, true) << "\"";
    writeRecordEnd(message);
}

void ZkErrorXML::errorMessage(const UnicodeString& message) const {
    if (message.isEmpty())
        return;
    *m_out << "<";
    writeName("error");
    writeRecordEnd(message);
}

void ZkErrorXML::infoMessage(const UnicodeString& message) const {
    *m_out << "<";
    writeName("info");
    *m_out << ">" << escaped(message, false) << "</";
    writeName("info");
    *m_out << ">" << std::endl;
}

} // namespace ZkCommonNS
