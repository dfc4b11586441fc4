// Fuzzes loading and saving: the input is loaded as a document, whole and in pull mode with a
// streaming save that drops each finished child, then saved and the saved text loaded again.
// Whatever loads without a fatal error must save, and what is saved must load again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

// Fatal errors end the document quietly; the flag tells the target the load failed.
void noteError(const ZkError& error, void* fatal) {
    if (getErrorLevel(error.getErrorCode()) == ZK_ERROR_LEVEL_FATAL)
        *static_cast<bool*>(fatal) = true;
}

ZkPtr<ZkDocument> newDocument(bool* fatal) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkXmlParser* parser = doc->getParser();
    parser->setCallbackError(noteError, fatal);
    // Nothing outside the input is read.
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, true);
    parser->setFeature(ZkXmlParser::FEATURE_REPORT_PI, true);
    return doc;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    bool fatal = false;
    UnicodeString saved;
    try {
        ZkPtr<ZkDocument> doc = newDocument(&fatal);
        std::istringstream in(bytes);
        doc->load(in, nullptr, UnicodeString(u"file:///fuzz/input.xml"));
        if (fatal)
            return 0;
        saved = doc->saveXml();
    } catch (const ZkError&) {
        return 0;
    }

    // A streaming save of a pull load, each finished child written and dropped.
    try {
        bool pullFatal = false;
        ZkPtr<ZkDocument> doc = newDocument(&pullFatal);
        doc->setPullMode(true);
        std::istringstream in(bytes);
        doc->load(in, nullptr, UnicodeString(u"file:///fuzz/input.xml"));
        std::ostringstream out;
        if (ZkElement* root = doc->getDocumentElement()) {
            doc->saveDocumentElement(out);
            while (ZkNode* child = root->getFirstChild()) {
                child->getLastChild();
                doc->saveChildElement(child);
                root->removeChild(child);
            }
            doc->closeDocumentElement();
        }
    } catch (const ZkError&) {
    }

    // What was saved loads again.
    bool again = false;
    ZkPtr<ZkDocument> reloaded = newDocument(&again);
    try {
        reloaded->loadXml(saved);
    } catch (const ZkError&) {
        again = true;
    }
    if (again)
        std::abort();
    return 0;
}
