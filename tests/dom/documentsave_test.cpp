// The document's save forms: whole documents and subtrees, attribute values by type, elements
// that stand for text, the streaming save and what a failure leaves behind.
#include "domtest.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/values/color.h>
#include <zkcommon/values/length.h>
#include <zkcommon/values/value.h>
#include <zkcommon/xml/xmlserializer.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

const char16_t* const kFo = u"http://www.w3.org/1999/XSL/Format";

// An element of an application that stands for a text, written bare or as a tagged element.
class TextElement : public ElementNS {
public:
    TextElement(ZkDocument* doc, bool tagged)
        : ElementNS(doc, ZkName(), ZkName(), ZkName(ZKN_H_text)), m_tagged(tagged) {}
    bool isText() const override { return true; }
    UnicodeString getText() const override { return UnicodeString(u"a<b"); }
    bool saveTextTag() const override { return m_tagged; }

private:
    bool m_tagged;
};

// <fo:root xmlns:fo="..."><fo:block id="b1">text<?pi data?></fo:block><fo:block/></fo:root>
ZkPtr<ZkDocument> sample() {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    const ZkName fo(kFo);
    ZkPtr<ZkElement> root = doc->createElementNS(fo, ZkName(u"fo"), ZkName(ZKN_root));
    doc->appendChild(root);
    root->setAttributeNS(ZkName(ZKN_NS_XMLNS), ZkName(ZKN_xmlns), ZkName(u"fo"), ZkValue(kFo));
    ZkPtr<ZkElement> block = doc->createElementNS(fo, ZkName(u"fo"), ZkName(u"block"));
    root->appendChild(block);
    block->setAttribute(ZkName(u"id"), ZkValue(u"b1"));
    addText(doc, block, u"text");
    ZkPtr<ZkProcessingInstruction> pi =
        doc->createProcessingInstruction(ZkName(u"pi"), UnicodeString(u"data"));
    block->appendChild(pi);
    root->appendChild(doc->createElementNS(fo, ZkName(u"fo"), ZkName(u"block")));
    return doc;
}

const char* const kSampleBody = "<fo:root xmlns:fo=\"http://www.w3.org/1999/XSL/Format\">"
                                "<fo:block id=\"b1\">text<?pi data?></fo:block><fo:block/>"
                                "</fo:root>";

} // namespace

TEST(DocumentSave, WholeDocumentAndSubtree) {
    ZkPtr<ZkDocument> doc = sample();
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    EXPECT_EQ(utf8(doc->saveXml()), declaration + kSampleBody);
    EXPECT_EQ(utf8(doc->saveXml(doc)), declaration + kSampleBody);
    // A subtree gets no declaration, and its prefix is declared on its own top.
    ZkNode* block = doc->getDocumentElement()->getFirstChild();
    EXPECT_EQ(utf8(doc->saveXml(block)),
              "<fo:block id=\"b1\" xmlns:fo=\"http://www.w3.org/1999/XSL/Format\">"
              "text<?pi data?></fo:block>");
    std::ostringstream out;
    doc->save(UnicodeString(u"made by a test"), UnicodeString(u"fo:root"), out);
    EXPECT_EQ(out.str(), declaration + "<!--made by a test--><!DOCTYPE fo:root>" + kSampleBody);
}

TEST(DocumentSave, AttributeValuesByType) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* a = addElement(doc, doc, u"a");
    ZkValue compound(ZkValue(1.5f, UnitPt));
    compound.makeCompound();
    compound.setNamedItem(ZkName(u"minimum"), ZkValue(1, UnitPt));
    ZkValue literal(UnicodeString(u"it's"));
    literal.setUnitType(UnitLiteral);
    ZkPtr<ZkDocument> other(new ZkDocument());
    // A null or object value is left out; nullptr: the attribute is not written.
    // clang-format off
    const struct { const char16_t* name; ZkValue value; const char* written; } cases[] = {
        {u"null", ZkValue(), nullptr}, {u"object", ZkValue(static_cast<ZkRCObject*>(other.get())), nullptr},
        {u"int", ZkValue(12), " int=\"12\""}, {u"length", ZkValue(2.5f, UnitPt), " length=\"2.5pt\""},
        {u"name", ZkValue(ZkName(u"bold")), " name=\"bold\""}, {u"string", ZkValue(u"x \"y\" <z>"), " string=\"x &quot;y&quot; &lt;z&gt;\""},
        {u"literal", literal, " literal=\"&quot;it's&quot;\""}, {u"space", compound, " space=\"1.5pt\" space.minimum=\"1pt\""},
        {u"color", ZkValue(0xFF0000, UnitColor), " color=\"#FF0000\""},
    };
    // clang-format on
    for (const auto& k : cases)
        a->setAttribute(ZkName(k.name), k.value);
    const std::string saved = utf8(doc->saveXml(a));
    for (const auto& k : cases) {
        const std::string name = " " + utf8(k.name) + "=";
        EXPECT_EQ(saved.find(k.written ? k.written : name) != std::string::npos, bool(k.written))
            << utf8(k.name) << " in " << saved;
    }
}

TEST(DocumentSave, ColoursTakeCssFormUnderAnSvgRoot) {
    struct Row {
        ZkColor color;
        const char* plain; ///< under any other document element
        const char* svg;   ///< under an SVG document element
    };
    // clang-format off
    const Row rows[] = {
        {ZkColor(0xFF0000u), "#FF0000", "red"},
        {ZkColor(0x123456u), "#123456", "#123456"},
        {ZkColor(0.5f), "rgb-icc(#GRAYSCALE,0.5)", "#808080"},
        {ZkColor(UnicodeString(u"Gold"), 0.5f), "rgb-icc(#SEPARATION,&quot;Gold&quot;,0.5)", "#808080"},
        {ZkColor::getTransparent(), "transparent", "transparent"},
    };
    // clang-format on
    for (bool svg : {false, true}) {
        ZkPtr<ZkDocument> doc(new ZkDocument());
        ZkPtr<ZkElement> root =
            doc->createElementNS(ZkName(svg ? ZKN_NS_SVG : ZKN_EMPTY), ZkName(u"r"));
        doc->appendChild(root);
        ZkElement* child = addElement(doc, root, u"c");
        for (const Row& row : rows) {
            child->setAttribute(ZkName(u"fill"), ZkValue(row.color));
            const std::string expected = svg ? row.svg : row.plain;
            const std::string saved = utf8(doc->saveXml(child));
            EXPECT_EQ(saved.substr(0, saved.find("\"", 9) + 1), "<c fill=\"" + expected + "\"");
        }
    }
}

TEST(DocumentSave, ElementsStandingForText) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* a = addElement(doc, doc, u"a");
    ZkPtr<TextElement> bare(new TextElement(doc, false));
    a->appendChild(bare);
    addText(doc, bare, u"children are not written");
    ZkPtr<TextElement> tagged(new TextElement(doc, true));
    a->appendChild(tagged);
    tagged->setAttribute(ZkName(u"k"), ZkValue(u"v"));
    EXPECT_EQ(utf8(doc->saveXml(a)), "<a>a&lt;b<qtf:text k=\"v\" xmlns:qtf=\""
                                     "http://www.velmora.com/names/XSL/Extensions\">"
                                     "a&lt;b</qtf:text></a>");
}

TEST(DocumentSave, StreamingSaveOfAPullLoad) {
    std::vector<Event> events = {{Event::Start, u"list", nullptr, {{nullptr, u"n", u"3"}}}};
    for (int i = 0; i < 3; ++i) {
        events.push_back({Event::Start, u"item"});
        events.push_back({Event::Text, u"entry"});
        events.push_back({Event::End});
    }
    events.push_back({Event::End});
    ZkPtr<ScriptedDocument> whole(new ScriptedDocument(events));
    whole->startFull();
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument(events));
    doc->startPull();
    std::ostringstream out;
    doc->saveDocumentElement(out);
    ZkNode* list = doc->getDocumentElement();
    // Each finished child is written and dropped at once: the tree never holds more than the
    // finished item and the one the loader has begun.
    while (ZkNode* item = list->getFirstChild()) {
        item->getLastChild(); // loads the item to its end
        EXPECT_EQ(childNames(list).size(), item == list->getLastChildFast() ? 4u : 9u);
        doc->saveChildElement(item);
        list->removeChild(item);
    }
    doc->closeDocumentElement();
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\"?>" + utf8(whole->saveXml(whole->getDocumentElement())));
}

TEST(DocumentSave, FailureDropsTheSerializer) {
    ZkPtr<ZkDocument> doc = sample();
    ZkPtr<ZkXmlSerializer> mine = ZkXmlSerializer::createXmlSerializer();
    doc->setSerializer(mine);
    EXPECT_EQ(static_cast<const ZkDocument*>(doc.get())->getSerializer(), mine.get());
    EXPECT_EQ(errorOf([&] { doc->save(UnicodeString(u"/nonexistent/dir/out.xml")); }),
              "67 SYSTEM ERROR: Cannot open file.");
    EXPECT_EQ(static_cast<const ZkDocument*>(doc.get())->getSerializer(), nullptr);
    // An attribute can't be saved as a tree.
    ZkPtr<ZkAttr> attr = doc->createAttribute(ZkName(u"x"));
    EXPECT_EQ(errorOf([&] { doc->saveXml(attr); }), "18 SYSTEM ERROR: Unsupported node type.");
    // The next save makes a fresh serializer.
    EXPECT_EQ(utf8(doc->saveXml(doc->getDocumentElement())), kSampleBody);
}

TEST(DocumentSave, FileRoundTripOfBytes) {
    TempDir dir;
    const std::string path = dir.path() + "/doc.xml";
    ZkPtr<ZkDocument> doc = sample();
    doc->save(UnicodeString::fromUTF8(path));
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(readAll(in), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>") + kSampleBody);
    // A document without an element has nothing to stream.
    ZkPtr<ZkDocument> empty(new ZkDocument());
    std::ostringstream out;
    EXPECT_THROW(empty->saveDocumentElement(out), ZkError);
}

TEST(DocumentSave, DeepTreesAndManyScopes) {
    // 200,000 levels: the walk is a loop, and each namespace look-up costs the same at any
    // depth (a scan down the scopes would take minutes here).
    constexpr int kDepth = 200000;
    ZkPtr<ZkDocument> doc(new ZkDocument());
    const ZkName u(u"urn:u"), v(u"urn:v"), p(u"p"), e(u"e");
    ZkNode* parent = doc;
    for (int i = 0; i < kDepth; ++i) {
        ZkPtr<ZkElement> child = i % 3 == 0   ? doc->createElementNS(u, ZkName(), e)
                                 : i % 3 == 1 ? doc->createElementNS(v, p, e)
                                              : doc->createElementNS(ZkName(), ZkName(), e);
        parent->appendChild(child);
        parent = child;
    }
    const std::string text = utf8(doc->saveXml(doc->getDocumentElement()));
    // Each level of three: the default namespace, the prefixed one, and an undeclaration.
    const std::string head = "<e xmlns=\"urn:u\"><p:e xmlns:p=\"urn:v\"><e xmlns=\"\">"
                             "<e xmlns=\"urn:u\"><p:e><e xmlns=\"\">";
    EXPECT_EQ(text.substr(0, head.size()), head);
    EXPECT_EQ(text.substr(text.size() - 28), "</e></p:e></e></e></p:e></e>");
    EXPECT_NE(text.find("<p:e/></e></e></p:e></e>"), std::string::npos);
}
