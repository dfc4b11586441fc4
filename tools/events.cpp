// zk events: the pull parser's event stream of a document, one event a line, with errors as
// the XML error log on standard error.
#include "command.h"

#include <iostream>
#include <zkcommon/core/errorxml.h>
#include <zkcommon/xml/xmlparser.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

/// Text with the characters that would break the one-line form escaped.
std::string quoted(const UnicodeString& text) {
    UnicodeString out(u'"');
    for (int32_t i = 0; i < text.length(); ++i) {
        char16_t c = text[i];
        switch (c) {
        case '\n':
            out.append(u"\\n");
            break;
        case '\r':
            out.append(u"\\r");
            break;
        case '\t':
            out.append(u"\\t");
            break;
        case '"':
            out.append(u"\\\"");
            break;
        case '\\':
            out.append(u"\\\\");
            break;
        default:
            out.append(c);
        }
    }
    out.append(u'"');
    return utf8(out);
}

std::string qname(ZkName ns, ZkName prefix, ZkName local) {
    std::string out;
    if (!ns.isEmpty())
        out += "{" + utf8(ns.toString()) + "}";
    if (!prefix.isEmpty())
        out += utf8(prefix.toString()) + ":";
    return out + utf8(local.toString());
}

void logError(const ZkError& error, void* log) {
    static_cast<ZkErrorXML*>(log)->errorMessage(error);
}

int eventsCommand(const Args& args) {
    std::string file;
    bool tokens = false;
    for (const std::string& arg : args) {
        if (arg == "--tokens")
            tokens = true;
        else if (file.empty())
            file = arg;
        else
            return usage("events");
    }
    if (file.empty())
        return usage("events");
    ZkErrorXML log(std::cerr, u"zk events", u"2.5", UnicodeString(), UnicodeString());
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setCallbackError(logError, &log);
    int status = 0;
    try {
        ZkUri uri(UnicodeString::fromUTF8(file), ZkUri::URISTR_FILEPATH_OR_URI);
        parser->setInput(uri, UnicodeString(), UnicodeString());
        for (;;) {
            int event = tokens ? parser->nextToken() : parser->next();
            std::string line = utf8(ZkXmlParser::getEventName(event));
            switch (event) {
            case ZkXmlParser::START_TAG:
                line += " " + qname(parser->getNamespace(), parser->getPrefix(), parser->getName());
                for (int i = 0; i < parser->getAttributeCount(); ++i)
                    line += " " +
                            qname(parser->getAttributeNamespace(i), parser->getAttributePrefix(i),
                                  parser->getAttributeName(i)) +
                            "=" + quoted(parser->getAttributeValue(i));
                if (parser->isEmptyElementTag())
                    line += " /";
                break;
            case ZkXmlParser::END_TAG:
                line += " " + qname(parser->getNamespace(), parser->getPrefix(), parser->getName());
                break;
            case ZkXmlParser::PROCESSING_INSTRUCTION:
                line +=
                    " " + utf8(parser->getTarget().toString()) + " " + quoted(parser->getText());
                break;
            case ZkXmlParser::ENTITY_REF:
                line += " " + utf8(parser->getName().toString()) + " " + quoted(parser->getText());
                break;
            case ZkXmlParser::END_DOCUMENT:
                break;
            default:
                line += " " + quoted(parser->getText());
                break;
            }
            std::cout << line << '\n';
            if (event == ZkXmlParser::END_DOCUMENT)
                break;
        }
    } catch (const ZkError& error) {
        // Code 128 says a fatal error went to the log already.
        if (error.getErrorCode() != 128)
            log.errorMessage(error);
        status = 1;
    }
    std::cout.flush();
    return status;
}

const Registration s_events({"events", "events FILE [--tokens]",
                             "prints the parser's events (next(), or nextToken() with --tokens) "
                             "one a line; errors go to standard error as the XML error log",
                             eventsCommand});

} // namespace
} // namespace zktool
