// zk parse: loads a document into a tree and writes it back through the serializer, with the
// parser's errors as the XML error log on standard error.
#include "command.h"

#include <fstream>
#include <iostream>
#include <zkcommon/core/errorxml.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/io/uri.h>
#include <zkcommon/xml/xmlparser.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

struct ErrorSink {
    ZkErrorXML* log;
    bool fatal;
};

void logError(const ZkError& error, void* data) {
    ErrorSink* sink = static_cast<ErrorSink*>(data);
    sink->log->errorMessage(error);
    // After a fatal error the parser ends the document early, without a throw.
    if (getErrorLevel(error.getErrorCode()) == ZK_ERROR_LEVEL_FATAL)
        sink->fatal = true;
}

// Reads the whole tree through the loading getters, so that a pull-mode load is driven to its
// end one node at a time, as an application reading the tree would drive it.
void pullAll(ZkDocument& document) {
    ZkTreeIterator walk(&document, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (walk.nextNode()) {
    }
}

int parseCommand(const Args& args) {
    std::string input, output;
    bool pull = false;
    ZkName syntax; // empty: chosen by the extension, the DOCTYPE and the first element
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--pull")
            pull = true;
        else if (args[i] == "--html")
            syntax = ZKN_html;
        else if (args[i] == "--xml")
            syntax = ZKN_xml;
        else if (args[i] == "-o" && i + 1 < args.size())
            output = args[++i];
        else if (input.empty())
            input = args[i];
        else
            return usage("parse");
    }
    if (input.empty())
        return usage("parse");
    ZkErrorXML log(std::cerr, u"zk parse", u"2.5", UnicodeString(), UnicodeString());
    ZkPtr<ZkDocument> document(new ZkDocument());
    document->setPullMode(pull);
    ErrorSink sink{&log, false};
    ZkXmlParser* parser = document->getParser();
    parser->setCallbackError(logError, &sink);
    // Instructions become nodes, so that the tree keeps them.
    parser->setFeature(ZkXmlParser::FEATURE_REPORT_PI, true);
    if (!syntax.isEmpty())
        parser->setParserType(syntax, ZkName(ZKN_html));
    int status = 0;
    try {
        ZkUri uri(UnicodeString::fromUTF8(input), ZkUri::URISTR_FILEPATH_OR_URI);
        document->load(uri);
        if (pull)
            pullAll(*document);
        if (sink.fatal)
            return 1;
        if (output.empty()) {
            document->save(std::cout);
            std::cout << '\n';
        } else {
            document->save(UnicodeString::fromUTF8(output));
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

const Registration s_parse({"parse", "parse FILE|URI [--html|--xml] [--pull] [-o OUT]",
                            "loads a document (in pull mode with --pull) and writes it back "
                            "through the serializer, to OUT or standard output; errors go to "
                            "standard error as the XML error log, and a fatal one exits with 1. "
                            "--html reads HTML and --xml XML; with neither the syntax follows "
                            "the extension, the DOCTYPE and the first element",
                            parseCommand});

} // namespace
} // namespace zktool
