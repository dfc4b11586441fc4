// The tag-soup corpus (made at build time by scripts/gen_tagsoup.py): every document is loaded
// as HTML, whole and in pull mode. Nothing but ZkError may escape; a document that loads saves
// as XML, both modes save the same text, and the saved text loads again as well-formed XML, by
// our parser and by libxml2, with the same text content as the HTML load.
#include "support.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <sstream>
#include <string>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

struct Load {
    ZkPtr<ZkDocument> doc{new ZkDocument()};
    bool fatal = false;
    std::string escaped; // the text of anything but ZkError that left the load

    static void noteError(const ZkError& error, void* load) {
        if (getErrorLevel(error.getErrorCode()) == ZK_ERROR_LEVEL_FATAL)
            static_cast<Load*>(load)->fatal = true;
    }

    // The syntax is fixed, never guessed; nothing outside the document is read.
    explicit Load(bool html, bool pull = false) {
        ZkXmlParser* parser = doc->getParser();
        parser->setCallbackError(noteError, this);
        parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
        parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, true);
        parser->setParserType(html ? ZKN_html : ZKN_xml, ZKN_html);
        doc->setPullMode(pull);
    }

    // Loads and, in pull mode, drives the load to its end through the loading getters.
    template <class Source> void run(Source&& source) {
        try {
            source(*doc);
            ZkTreeIterator walk(doc.get(), nullptr, false, ZkTreeIterator::PRE_ORDER);
            while (walk.nextNode()) {
            }
        } catch (const ZkError&) {
            fatal = true;
        } catch (const std::exception& e) {
            escaped = e.what();
        } catch (...) {
            escaped = "unknown exception";
        }
    }
};

// The text of every text node in document order.
std::string textOf(ZkDocument& doc) {
    UnicodeString text;
    ZkTreeIterator walk(&doc, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (ZkNode* node = walk.nextNode())
        if (node->getNodeType() == ZkNode::TEXT_NODE)
            text += node->getText();
    return utf8(text);
}

std::string textOf(xmlNodePtr node) {
    std::string text;
    // A loop, as the trees are deep.
    while (node) {
        if ((node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) && node->content)
            text += reinterpret_cast<const char*>(node->content);
        if (node->children && node->type != XML_ENTITY_REF_NODE) {
            node = node->children;
            continue;
        }
        while (node && !node->next)
            node = node->parent;
        if (node)
            node = node->next;
    }
    return text;
}

struct Entry {
    std::string file;
    bool deep; // deeper than libxml2's nesting limit
};

std::vector<Entry> corpus() {
    std::vector<Entry> entries;
    for (const auto& row : readTable(ZK_TAGSOUP_CORPUS "/manifest.txt"))
        entries.push_back(
            Entry{row[0], row.size() > 1 && row[1].find("deep") != std::string::npos});
    return entries;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return readAll(in);
}

} // namespace

TEST(HtmlSoup, EveryDocumentLoadsSavesAndReloads) {
    std::vector<Entry> entries = corpus();
    ASSERT_GT(entries.size(), 200u);
    int loaded = 0, comparedWithLibxml2 = 0;
    for (const Entry& entry : entries) {
        SCOPED_TRACE(entry.file);
        const std::string bytes = readFile(ZK_TAGSOUP_CORPUS "/" + entry.file);
        const UnicodeString uri = UnicodeString::fromUTF8("file:///soup/" + entry.file);
        auto fromBytes = [&](std::istringstream& in) {
            return [&](ZkDocument& doc) { doc.load(in, nullptr, uri); };
        };

        std::istringstream wholeIn(bytes), pullIn(bytes);
        Load whole(/*html=*/true), pull(/*html=*/true, /*pull=*/true);
        whole.run(fromBytes(wholeIn));
        pull.run(fromBytes(pullIn));
        EXPECT_EQ("", whole.escaped);
        EXPECT_EQ("", pull.escaped);
        EXPECT_EQ(whole.fatal, pull.fatal);
        // With no element (only comments, say) there is nothing to save as a document.
        if (whole.fatal || pull.fatal || !whole.doc->getDocumentElement())
            continue;
        ++loaded;

        UnicodeString saved;
        try {
            saved = whole.doc->saveXml();
            EXPECT_EQ(utf8(saved), utf8(pull.doc->saveXml()));
        } catch (const ZkError& error) {
            ADD_FAILURE() << "save: " << utf8(error.getMessage());
            continue;
        }
        const std::string text = textOf(*whole.doc);

        Load again(/*html=*/false);
        again.run([&](ZkDocument& doc) { doc.loadXml(saved); });
        EXPECT_FALSE(again.fatal) << utf8(saved).substr(0, 2000);
        EXPECT_EQ(text, textOf(*again.doc));

        if (entry.deep)
            continue;
        const std::string savedBytes = utf8(saved);
        xmlDocPtr peer =
            xmlReadMemory(savedBytes.data(), int(savedBytes.size()), "saved.xml", "UTF-8",
                          XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_NOERROR |
                              XML_PARSE_NOWARNING);
        EXPECT_NE(nullptr, peer) << savedBytes.substr(0, 2000);
        if (peer) {
            EXPECT_EQ(text, textOf(peer->children));
            ++comparedWithLibxml2;
        }
        xmlFreeDoc(peer);
    }
    // A reader that rejects most of the corpus would pass the loop above: read as XML, fewer
    // than a tenth of the documents load.
    EXPECT_GT(loaded * 3, int(entries.size()));
    std::printf("[ soup     ] %d of %zu documents loaded, %d compared with libxml2\n", loaded,
                entries.size(), comparedWithLibxml2);
}
