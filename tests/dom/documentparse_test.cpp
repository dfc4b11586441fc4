// The document's load forms over the pull parser: pull mode, loads into an element, loadXml,
// XInclude and what an error leaves behind.
#include "domtest.h"

#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/io/uri.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

const std::string kData = ZK_TEST_DATA_DIR "/dom/";

std::string saved(ZkDocument* doc, ZkNode* root = nullptr) {
    return utf8(doc->saveXml(root));
}

} // namespace

TEST(DocumentParse, PullModeLoadsOnDemand) {
    std::istringstream in("<a><b>one</b><c/>two</a>");
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->setPullMode(true);
    doc->load(in, nullptr, UnicodeString(u"file:///data/a.xml"));
    EXPECT_EQ(utf8(doc->getDocumentUri()), "file:///data/a.xml");
    EXPECT_EQ(doc->getFirstChildFast(), nullptr);
    ZkNode* a = doc->getFirstChild();
    EXPECT_EQ(a->getFirstChildFast(), nullptr); // one step loads one node
    EXPECT_EQ(nameOf(a->getLastChild()), "'two'");
    EXPECT_EQ(childNames(a), "b,c,'two'");
    EXPECT_FALSE(doc->isLoading());
}

TEST(DocumentParse, LoadIntoAnElementAndFromText) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->loadXml(UnicodeString(u"  <?pi x?><a><old/></a>"));
    EXPECT_EQ(utf8(doc->getDocumentUri()), "");
    ZkNode* a = doc->getDocumentElement();
    std::istringstream in("<new x='1'>t</new>");
    doc->load(in, a, UnicodeString(u"file:///data/part.xml"));
    EXPECT_EQ(utf8(doc->getDocumentUri()), ""); // a load into an element leaves it alone
    EXPECT_EQ(saved(doc, a), "<a><new x=\"1\">t</new></a>");
    // loadXml runs to the end in pull mode too, and replaces the target's children.
    doc->setPullMode(true);
    doc->loadXml(UnicodeString(u"<b>\u00E9\U0001F600</b>"), a);
    EXPECT_EQ(childNames(a), "b");
    EXPECT_EQ(saved(doc, a), "<a><b>\xC3\xA9\xF0\x9F\x98\x80</b></a>");
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
}

TEST(DocumentParse, XInclude) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->load(UnicodeString::fromUTF8(kData + "include.xml"));
    EXPECT_TRUE(doc->hasXInclude());
    // The included document and text take the places of their include elements; the fallback
    // is never used and an include without href vanishes.
    EXPECT_EQ(saved(doc, doc->getDocumentElement()),
              "<doc xmlns:xi=\"http://www.w3.org/2001/XInclude\"><part n=\"1\">p</part>"
              "a &lt; b &amp; c<tail/></doc>");
}

TEST(DocumentParse, ErrorsLeaveWhatWasBuilt) {
    std::istringstream in("<a><b>text</a>");
    ZkPtr<ZkDocument> doc(new ZkDocument());
    try {
        doc->load(in, nullptr, UnicodeString(u"file:///data/bad.xml"));
        FAIL() << "a mismatched end tag loaded";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), 134);
        EXPECT_EQ(e.getLineNumber(), 1);
    }
    ZkNode* a = doc->getDocumentElement();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(childNames(a->getFirstChildFast()), "'text'");
    EXPECT_TRUE(a->isLoading());
    // A missing file raises 67 from the load itself.
    EXPECT_EQ(errorOf([&] { doc->load(UnicodeString::fromUTF8(kData + "missing.xml")); }),
              "67 SYSTEM ERROR: Cannot open file.");
    // loadXml lets go of its stream after an error: the next load starts clean.
    EXPECT_THROW(doc->loadXml(UnicodeString(u"<a><b></a>")), ZkError);
    EXPECT_EQ(doc->loadNextNode(), nullptr);
    doc->loadXml(UnicodeString(u"<ok/>"));
    EXPECT_EQ(saved(doc), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ok/>");
}

TEST(DocumentParse, ParserAndSourceReplaceEachOther) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    EXPECT_EQ(static_cast<const ZkDocument*>(doc.get())->getParser(), nullptr) << "made on use";
    EXPECT_NE(doc->getParser(), nullptr);
    // A parser given with its input set loads through load().
    ZkPtr<ZkXmlParser> mine = ZkXmlParser::createXmlParser();
    std::istringstream in("<mine/>");
    mine->setInput(in, UnicodeString(), UnicodeString());
    doc->setParser(mine);
    doc->load();
    EXPECT_EQ(nameOf(doc->getDocumentElement()), "mine");
    doc->setParser(nullptr);
    EXPECT_EQ(doc->getLoadSource(), nullptr);
}

TEST(DocumentParse, RemovingTheLoadersPositionKeepsLoading) {
    // Each child is dropped as soon as it is read, before the next one is asked for: a text
    // just loaded hands the loader's position back to its parent.
    std::istringstream in("<a>one<b/>two<?pi x?><c><d/>three</c>four</a>");
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->getParser()->setFeature(ZkXmlParser::FEATURE_REPORT_PI, true);
    doc->setPullMode(true);
    doc->load(in, nullptr, UnicodeString());
    ZkNode* a = doc->getFirstChild();
    std::string seen;
    while (ZkNode* child = a->getFirstChild()) {
        child->getLastChild(); // an element is read to its end
        seen += nameOf(child) + ";";
        a->removeChild(child);
    }
    EXPECT_EQ(seen, "'one';b;'two';pi;c;'four';");
    EXPECT_FALSE(a->isLoading());
    // An unfinished element taken out keeps the loader inside it; the load ends with it.
    std::istringstream again("<a><b><c/><d/></b><e/></a>");
    doc->load(again, nullptr, UnicodeString());
    doc->setPullMode(false);
    EXPECT_EQ(saved(doc, doc->getDocumentElement()), "<a><b><c/><d/></b><e/></a>");
    doc->setPullMode(true);
    std::istringstream third("<a><b><c/><d/></b><e/></a>");
    doc->load(third, nullptr, UnicodeString());
    ZkNode* b = doc->getFirstChild()->getFirstChild();
    ZkPtr<ZkNode> taken = doc->getDocumentElement()->removeChild(b);
    EXPECT_EQ(nameOf(taken->getFirstChild()), "c");
    EXPECT_EQ(nameOf(taken->getLastChild()), "d");
    EXPECT_EQ(doc->loadNextNode(), nullptr);
}

namespace {
// Sees every attribute the loader hands over, as an application's element class would.
class RecordingElement : public ElementNS {
public:
    using ElementNS::ElementNS;
    void setAttributeEx(ZkName uri, ZkName prefix, ZkName local,
                        const UnicodeString& text) override {
        seen += utf8(uri.toString()) + "|" + utf8(prefix.toString()) + "|" +
                utf8(local.toString()) + "=" + utf8(text) + ";";
        ElementNS::setAttributeEx(uri, prefix, local, text);
    }
    std::string seen;
};

class RecordingDocument : public ZkDocument {
public:
    ZkPtr<ZkElement> createElementNS(ZkName uri, ZkName prefix, ZkName local) override {
        return ZkPtr<ZkElement>(new RecordingElement(this, uri, prefix, local));
    }
    using ZkDocument::createElementNS;
};
} // namespace

TEST(DocumentParse, AttributesReachTheTreeWhole) {
    // Values read in place and values built from references, short and long, empty, prefixed,
    // declarations, and a prefix bound twice to one URI.
    const std::string longValue(300, 'v');
    const std::string text = "<a xmlns:p='urn:p' xmlns:q='urn:p' id='x' empty='' long='" +
                             longValue + "' ref='a&amp;b&#x20AC;c' p:one='1' q:two='2'" +
                             " xml:lang='en'><b p:one='in b'/></a>";
    for (bool application : {false, true}) {
        SCOPED_TRACE(application ? "application classes" : "library classes");
        ZkPtr<ZkDocument> doc(application ? new RecordingDocument() : new ZkDocument());
        doc->loadXml(UnicodeString::fromUTF8(text));
        ZkElement* a = doc->getDocumentElement();
        ASSERT_NE(a, nullptr);
        EXPECT_EQ(saved(doc),
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a id=\"x\" empty=\"\" long=\"" +
                      longValue +
                      "\" ref=\"a&amp;b\u20ACc\" p:one=\"1\" q:two=\"2\" xml:lang=\"en\" "
                      "xmlns:q=\"urn:p\" xmlns:p=\"urn:p\"><b p:one=\"in b\"/></a>");
        EXPECT_EQ(a->getAttributes()->getCount(), 9);
        EXPECT_EQ(utf8(a->getAttribute(ZkName(u"long")).toString()), longValue);
        EXPECT_TRUE(a->getAttribute(ZkName(u"empty")).isString());
        EXPECT_EQ(utf8(a->getAttribute(ZkName(u"ref")).toString()), "a&b\u20ACc");
        EXPECT_EQ(utf8(a->getAttributeNS(ZkName(u"urn:p"), ZkName(u"two")).toString()), "2");
        ZkAttr* lang = a->getAttributeNodeNS(ZKN_NS_XML, ZkName(u"lang"));
        ASSERT_NE(lang, nullptr);
        EXPECT_EQ(utf8(lang->getNodeName().toString()), "xml:lang");
        EXPECT_EQ(lang->getOwnerElement(), a);
        if (application) {
            const std::string& seen = static_cast<RecordingElement*>(a)->seen;
            EXPECT_NE(seen.find(";||id=x;"), std::string::npos) << seen;
            EXPECT_NE(seen.find("urn:p|q|two=2;"), std::string::npos) << seen;
        }
    }
}
