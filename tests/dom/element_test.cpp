// ZkElement, the attribute map and namespace look-ups.
#include "domtest.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/documentfragment.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/values/value.h>
#include <zkcommon/xml/xmlutil.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

const ZkName kXmlns(ZKN_NS_XMLNS);

// The attribute names in ring order, read with the iteration of the map.
std::string attrNames(const ZkElement* element) {
    std::string out;
    const ZkNamedNodeMap* map = element->getAttributes();
    for (ZkNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr)) {
        if (!out.empty())
            out += ",";
        out += utf8(attr->getNodeName().toString());
    }
    return out;
}

struct Fixture {
    ZkPtr<ZkDocument> doc{new ZkDocument()};
    ZkElement* e = nullptr;
    Fixture() { e = addElement(doc, doc, u"e"); }
};

} // namespace

TEST(Element, AttrValueCarriesNoName) {
    Fixture f;
    f.e->setAttribute(ZkName(u"w"), ZkValue(u"x"));
    ZkAttr* attr = f.e->getAttributeNode(ZkName(u"w"));
    // A named value given in does not rename the attribute.
    attr->setValue(ZkNamedValue(ZkValue(7), ZkName(u"other")));
    EXPECT_EQ(utf8(attr->getLocalName().toString()), "w");
    EXPECT_EQ(attr->getValue().getIntegerValue(0), 7);
    attr->setText(u"z");
    EXPECT_EQ(utf8(attr->getNodeValue().toString()), "z");
    attr->setNodeValue(ZkValue(u"y"));
    EXPECT_EQ(utf8(attr->getText()), "y");
    EXPECT_EQ(attr->getParentNode(), nullptr);
    EXPECT_EQ(attr->getNextSibling(), nullptr);
}

TEST(Element, AttributeMapItems) {
    Fixture f;
    for (const char16_t* name : {u"a", u"b", u"c", u"d"})
        f.e->setAttribute(ZkName(name), ZkValue(name));
    AttrNodeMap* map = static_cast<AttrNodeMap*>(f.e->getAttributes());
    EXPECT_EQ(nameOf(map->item(3)), "d");
    EXPECT_EQ(map->item(4), nullptr);
    EXPECT_EQ(map->item(-1), nullptr);
    EXPECT_EQ(nameOf(map->getPreviousNode(map->getLastNode())), "c");
    EXPECT_TRUE(f.e->getAttribute(ZkName(u"nothing")).isNull()) << "empty, not an error";
}

TEST(Element, SetAttributeNSRefusesAndSplits) {
    Fixture f;
    f.e->setAttributeNS(ZkName(u"urn:x"), ZkName(u"p"), ZkName(), ZkValue(1));
    f.e->setAttributeNS(ZkName(), ZkName(u"p"), ZkName(u"local"), ZkValue(1));
    EXPECT_FALSE(f.e->hasAttributes()) << "no local name, or a prefix without a URI";
    const ZkName uri(u"urn:example");
    f.e->setAttributeNS(uri, ZkName(u"q"), ZkName(u"one"), ZkValue(3));
    f.e->setAttribute(ZkName(u"two"), ZkValue(2));
    f.e->setAttributeNS(uri, ZkName(u"r:one"), ZkValue(4)); // a qualified name is split
    EXPECT_EQ(attrNames(f.e), "r:one,two");
    EXPECT_FALSE(f.e->hasAttribute(ZkName(u"q:one")));
    EXPECT_TRUE(f.e->hasAttribute(ZkName(u"r:one")));
    EXPECT_EQ(f.e->getAttributeNS(uri, ZkName(u"one")).getIntegerValue(0), 4);
}

TEST(Element, SameQualifiedNameDifferentUris) {
    // Both sit on the ring and in the namespace map; only the first is found by name.
    Fixture f;
    const ZkName u1(u"urn:one"), u2(u"urn:two"), local(u"x");
    f.e->setAttributeNS(u1, ZkName(u"p"), local, ZkValue(1));
    f.e->setAttributeNS(u2, ZkName(u"p"), local, ZkValue(2));
    EXPECT_EQ(attrNames(f.e), "p:x,p:x");
    EXPECT_EQ(f.e->getAttributes()->getCount(), 1);
    EXPECT_EQ(f.e->getAttribute(ZkName(u"p:x")).getIntegerValue(0), 1);
    EXPECT_EQ(f.e->getAttributeNS(u2, local).getIntegerValue(0), 2);
    std::vector<ZkPtr<ZkAttr>> all;
    f.e->getAttributeNodeLocal(local, &all);
    ASSERT_EQ(all.size(), 2u);
    std::vector<ZkValue> values;
    f.e->getAttributeLocal(local, &values);
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[1].getIntegerValue(0), 2);
    f.e->getAttributeLocal(local, nullptr);
    f.e->getAttributeNodeLocal(local, nullptr);
    EXPECT_TRUE(f.e->hasAttributeLocal(local));

    // Removing the one found by name leaves the other reachable by namespace only.
    f.e->removeAttribute(ZkName(u"p:x"));
    EXPECT_EQ(attrNames(f.e), "p:x");
    EXPECT_FALSE(f.e->hasAttribute(ZkName(u"p:x")));
    EXPECT_TRUE(f.e->hasAttributeNS(u2, local));
    EXPECT_FALSE(f.e->hasAttributes()) << "the count is that of the by-name map";
    f.e->removeAttributeNS(u2, local);
    EXPECT_EQ(attrNames(f.e), "");
}

TEST(Element, RemoveAttributeNode) {
    Fixture f;
    EXPECT_EQ(errorOf([&] { f.e->removeAttributeNode(nullptr); }),
              "3 SYSTEM ERROR: oldAttr is null.");
    ZkPtr<ZkAttr> stranger = f.doc->createAttribute(ZkName(u"a"));
    EXPECT_FALSE(f.e->removeAttributeNode(stranger)) << "empty map";
    f.e->setAttribute(ZkName(u"a"), ZkValue(1));
    f.e->setAttribute(ZkName(u"b"), ZkValue(2));
    ZkPtr<ZkAttr> b(f.e->getAttributeNode(ZkName(u"b")));
    ZkPtr<ZkAttr> removed = f.e->removeAttributeNode(b);
    EXPECT_EQ(removed.get(), b.get());
    EXPECT_EQ(b->getOwnerElement(), nullptr);
    EXPECT_EQ(attrNames(f.e), "a");
    // A foreign attribute of the same name removes the one of the map; the result is the given.
    removed = f.e->removeAttributeNode(stranger);
    EXPECT_EQ(removed.get(), stranger.get());
    EXPECT_FALSE(f.e->hasAttributes());
    ZkPtr<ZkAttr> unknown = f.doc->createAttribute(ZkName(u"zz"));
    f.e->setAttribute(ZkName(u"a"), ZkValue(1));
    EXPECT_FALSE(f.e->removeAttributeNode(unknown));
}

TEST(Element, CreateAttributePrefixRules) {
    Fixture f;
    f.e->setAttributeXMLNS(ZkName(u"urn:declared"), ZkName(u"d"));
    // clang-format off
    const struct { const char16_t* qname; bool made; const char *uri, *prefix, *local; bool ns; } cases[] = {
        {u"plain", true, "", "", "plain", false},
        {u"xmlns", true, "http://www.w3.org/2000/xmlns/", "", "xmlns", true},
        {u"xmlns:p", true, "http://www.w3.org/2000/xmlns/", "xmlns", "p", true},
        {u"xml:lang", true, "http://www.w3.org/XML/1998/namespace", "xml", "lang", true},
        {u"xlink:href", true, "http://www.w3.org/1999/xlink", "xlink", "href", true},
        {u"d:x", true, "urn:declared", "d", "x", true},
        {u"undeclared:x", false, "", "", "", false},
        {u"xml:", false, "", "", "", false},
        {u":lead", true, "", "", ":lead", false},
    };
    // clang-format on
    for (const auto& test : cases) {
        SCOPED_TRACE(utf8(test.qname));
        ZkPtr<ZkAttr> attr = f.doc->createAttribute(ZkName(test.qname));
        ASSERT_EQ(bool(attr), test.made);
        if (!attr)
            continue;
        EXPECT_EQ(utf8(attr->getNamespaceUri().toString()), test.uri);
        EXPECT_EQ(utf8(attr->getPrefix().toString()), test.prefix);
        EXPECT_EQ(utf8(attr->getLocalName().toString()), test.local);
        EXPECT_EQ(attr->isA(ZkTypeID::kAttrNS), test.ns);
        EXPECT_TRUE(attr->getValue().isNull());
    }
    // setAttribute stores nothing for an undeclared prefix.
    f.e->setAttribute(ZkName(u"undeclared:x"), ZkValue(1));
    EXPECT_FALSE(f.e->hasAttribute(ZkName(u"undeclared:x")));
    // createAttributeNS makes a namespaced kind only with a URI, and splits a qualified name.
    EXPECT_FALSE(
        f.doc->createAttributeNS(ZkName(), ZkName(), ZkName(u"a"))->isA(ZkTypeID::kAttrNS));
    EXPECT_TRUE(
        f.doc->createAttributeNS(ZkName(u"u"), ZkName(), ZkName(u"a"))->isA(ZkTypeID::kAttrNS));
    ZkPtr<ZkAttr> split = f.doc->createAttributeNS(ZkName(u"u"), ZkName(u"p:a"));
    EXPECT_EQ(utf8(split->getNodeName().toString()), "p:a");
    EXPECT_EQ(utf8(split->getLocalName().toString()), "a");
    // A namespaced attribute without a URI takes it from its prefix once it has an owner.
    f.e->setAttributeXMLNS(ZkName(u"urn:p"), ZkName(u"p"));
    ZkPtr<ZkAttr> attr = f.doc->createAttributeNS(ZkName(), ZkName(u"p"), ZkName(u"x"));
    EXPECT_TRUE(attr->getNamespaceUri().isEmpty()) << "no owner, nothing declared";
    static_cast<AttrNodeMap*>(f.e->getAttributes())->addNode(attr);
    EXPECT_EQ(attr->getNamespaceUri(), ZkName(u"urn:p"));
}

TEST(Element, NamespaceLookups) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    const ZkName fo(ZKN_NS_XSL_FO), svg(ZKN_NS_SVG), other(u"urn:other"), none, pfo(u"fo");
    ZkPtr<ZkElement> root = doc->createElementNS(fo, pfo, ZkName(u"root"));
    doc->appendChild(root);
    root->setAttributeXMLNS(fo, pfo);
    root->setAttributeXMLNS(svg, ZkName());
    ZkElement* plain = addElement(doc, root, u"fo:block");
    ZkElement* unprefixed = addElement(doc, plain, u"circle");
    ZkNode* text = addText(doc, unprefixed, u"t");
    // An inner declaration hides the outer one for the prefix search.
    ZkElement* inner = addElement(doc, unprefixed, u"inner");
    inner->setAttributeXMLNS(other, pfo);
    ZkAttr* xmlnsAttr = root->getAttributeNodeNS(ZKN_NS_XMLNS, ZkName(ZKN_xmlns));
    ZkPtr<ZkAttr> loose = doc->createAttribute(ZkName(u"loose"));
    ZkPtr<ZkNode> fragment = doc->createDocumentFragment();
    // clang-format off
    const struct { const char* what; const ZkNode* node; ZkName prefix, uri; } uris[] = {
        {"root fo", root, pfo, fo}, {"root default", root, none, svg}, {"text", text, pfo, fo}, {"document", doc, pfo, fo},
        {"undeclared", doc, ZkName(u"nope"), none}, {"inner", inner, pfo, other}, {"xmlns attribute", xmlnsAttr, none, svg},
        {"loose attribute", loose, pfo, none}, {"fragment", fragment, pfo, none},
    };
    const struct { const char* what; const ZkNode* node; ZkName uri, prefix; } prefixes[] = {
        {"fo", unprefixed, fo, pfo}, {"a default namespace has no prefix", unprefixed, svg, none}, {"text", text, fo, pfo},
        {"hidden by an inner declaration", inner, fo, none},
    };
    const struct { const char* what; const ZkNode* node; ZkName uri; bool expected; } defaults[] = {
        {"unprefixed", unprefixed, svg, true}, {"unprefixed fo", unprefixed, fo, false},
        {"a prefixed element asks its parent", plain, svg, true}, {"document", doc, svg, true}, {"fragment", fragment, svg, false},
    };
    // clang-format on
    for (const auto& k : uris)
        EXPECT_EQ(k.node->lookupNamespaceUri(k.prefix), k.uri) << k.what;
    for (const auto& k : prefixes)
        EXPECT_EQ(k.node->lookupPrefix(k.uri), k.prefix) << k.what;
    for (const auto& k : defaults)
        EXPECT_EQ(k.node->isDefaultNamespace(k.uri), k.expected) << k.what;
    EXPECT_EQ(plain->getNamespaceUri(), fo) << "a plain Element asks the tree";
    EXPECT_EQ(unprefixed->getNamespaceUri(), svg);
    EXPECT_EQ(root->getAttributeXMLNS(pfo), fo);
    EXPECT_EQ(root->getAttributeXMLNS(ZkName()), svg);
    EXPECT_TRUE(root->getAttributeXMLNS(ZkName(u"zz")).isEmpty());

    // Element follows declarations as they change; ElementNS keeps its own.
    ZkElement* mid = addElement(doc, plain, u"mid");
    ZkElement* deepPlain = addElement(doc, mid, u"fo:deep");
    ZkPtr<ZkElement> ns = doc->createElementNS(fo, pfo, ZkName(u"flow"));
    mid->appendChild(ns);
    EXPECT_EQ(deepPlain->getNamespaceUri(), fo);
    mid->setAttributeXMLNS(ZkName(u"urn:changed"), pfo);
    EXPECT_EQ(deepPlain->getNamespaceUri(), ZkName(u"urn:changed"));
    EXPECT_EQ(ns->getNamespaceUri(), fo);
    mid->removeAttributeXMLNS(pfo);
    EXPECT_EQ(deepPlain->getNamespaceUri(), fo) << "the root's own name binds the prefix";
}

TEST(Element, CloneNode) {
    Fixture f;
    f.e->setAttribute(ZkName(u"a"), ZkValue(1));
    f.e->setAttributeNS(ZkName(u"urn:x"), ZkName(u"x"), ZkName(u"b"), ZkValue(u"two"));
    f.e->setSourceLineNumber(7);
    f.e->setFlag(0x100, true);
    ZkElement* child = addElement(f.doc, f.e, u"child");
    addText(f.doc, child, u"text");
    ZkPtr<ZkProcessingInstruction> pi = f.doc->createProcessingInstruction(ZkName(u"pi"), u"d");
    f.e->appendChild(pi);

    ZkPtr<ZkNode> shallow = f.e->cloneNode(false);
    ZkElement* copy = static_cast<ZkElement*>(shallow.get());
    EXPECT_TRUE(copy->isA(ZkTypeID::kElementNS)) << "a plain Element clones to an ElementNS";
    EXPECT_EQ(attrNames(copy), "a,x:b");
    EXPECT_EQ(treeText(copy, true), "{}e( {urn:x}b=two {}a=1)");
    EXPECT_TRUE(copy->getFlag(0x100));
    EXPECT_NE(copy->getElementId(), f.e->getElementId());
    EXPECT_EQ(copy->getStoredSourceLineNumber(), -1);
    // The instruction clones to null and is skipped.
    EXPECT_EQ(treeText(f.e->cloneNode(true), true), "{}e( {urn:x}b=two {}a=1{}child('text'))");
    EXPECT_EQ(f.doc->cloneNode(true), nullptr);
    EXPECT_EQ(pi->cloneNode(true), nullptr);
}

TEST(Element, BaseUri) {
    Fixture f;
    f.doc->setBaseUri(u"http://example.com/dir/doc.xml");
    ZkElement* sub = addElement(f.doc, f.e, u"sub");
    ZkNode* text = addText(f.doc, sub, u"t");
    EXPECT_EQ(utf8(text->getBaseUri()), "http://example.com/dir/doc.xml");
    sub->setAttributeNS(ZKN_NS_XML, ZkName(ZKN_xml), ZkName(ZKN_base), ZkValue(u"images/"));
    EXPECT_EQ(utf8(text->getBaseUri()), "http://example.com/dir/images/");
    f.e->setAttribute(ZkName(u"xml:base"), ZkValue(u"http://other.org/a/"));
    EXPECT_EQ(utf8(sub->getBaseUri()), "http://other.org/a/images/");
    // An attribute answers for its owner element, a loose one for the document.
    sub->setAttribute(ZkName(u"k"), ZkValue(1));
    EXPECT_EQ(utf8(sub->getAttributeNode(ZkName(u"k"))->getBaseUri()),
              "http://other.org/a/images/");
    ZkPtr<ZkAttr> looseAttr = f.doc->createAttribute(ZkName(u"loose"));
    EXPECT_EQ(utf8(looseAttr->getBaseUri()), "http://example.com/dir/doc.xml");
    // Relative, without a parent: the attribute text as it stands.
    ZkPtr<ZkElement> loose = f.doc->createElement(ZkName(u"loose"));
    loose->setAttribute(ZkName(u"xml:base"), ZkValue(u"rel/"));
    EXPECT_EQ(utf8(loose->getBaseUri()), "rel/");
    // An attribute reports its element's position.
    f.e->setSourceLineNumber(12);
    f.e->setSourceColumnNumber(5);
    f.e->setAttribute(ZkName(u"a"), ZkValue(1));
    EXPECT_EQ(f.e->getAttributeNode(ZkName(u"a"))->getSourceColumnNumber(), 5);
    EXPECT_EQ(f.doc->createAttribute(ZkName(u"loose"))->getSourceLineNumber(), -1);
}

TEST(Element, CssDebugSlot) {
    struct Block : ZkCssDebugBlock {
        int getDeclarationCount() const override { return 1; }
        const ZkCssDeclarationDebugInfo* getDeclaration(int) const override {
            return reinterpret_cast<const ZkCssDeclarationDebugInfo*>(this);
        }
        int getVariableCount() const override { return 0; }
        const ZkCssDeclarationDebugInfo* getVariable(int) const override { return nullptr; }
    };
    Fixture f;
    EXPECT_EQ(f.e->getCssDeclaration(0), nullptr);
    f.e->setCssDebugBlock(std::make_unique<Block>());
    EXPECT_NE(f.e->getCssDeclaration(0), nullptr);
    EXPECT_EQ(f.e->getCssDeclaration(1), nullptr);
    EXPECT_EQ(f.e->getCssDeclaration(-1), nullptr);
    EXPECT_EQ(f.e->getCssVariable(0), nullptr);
}

TEST(Element, PrefixChangeRenames) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkElement> element = doc->createElement(ZkName(u"fo:block"));
    element->setPrefix(ZkName(u"x"));
    EXPECT_EQ(element->getNodeName(), ZkName(u"x:block"));
    element->setPrefix(ZkName());
    EXPECT_EQ(element->getNodeName(), ZkName(u"block"));
    EXPECT_EQ(element->getFOName(), ZkName(u"block"));
    ZkPtr<ZkAttr> attr = doc->createAttributeNS(ZkName(u"urn:u"), ZkName(u"p"), ZkName(u"a"));
    attr->setPrefix(ZkName());
    EXPECT_EQ(attr->getNodeName(), ZkName(u"a"));
    EXPECT_EQ(attr->getNamespaceUri(), ZkName(u"urn:u"));
}

// Random sets and removals, by either key, of plain and namespaced attributes against a list:
// the ring keeps the order of first setting (a replacement or a prefix change keeps its place)
// and every look-up agrees, on maps that grow past the point where the look-ups leave their small
// arrays for hash tables and shrink again. Attribute (ns, k) has local name "a<k>", no namespace
// (ns -1) or one of two, with a prefix per namespace.
TEST(Element, AttributesAgainstAModel) {
    // Dynamic names live while some document holds the shared name table.
    ZkPtr<ZkDocument> keeper(new ZkDocument());
    const ZkName uris[2] = {ZkName(u"urn:one"), ZkName(u"urn:two")};
    const ZkName prefixes[3] = {ZkName(u"p"), ZkName(u"q"), ZkName(u"r")};
    std::vector<ZkName> locals;
    for (int k = 0; k < 42; ++k)
        locals.emplace_back(UnicodeString(u"a") + UnicodeString(std::to_string(k).c_str()));
    struct Entry {
        int ns, k, prefix, value;
    };
    auto qname = [&](const Entry& a) {
        return a.ns < 0 ? locals[a.k] : ZkXmlUtil::makeQName(prefixes[a.prefix], locals[a.k]);
    };
    std::mt19937 random(20261125);
    for (int round = 0; round < 20; ++round) {
        Fixture f;
        f.e->setAttributeXMLNS(uris[0], prefixes[0]);
        f.e->setAttributeXMLNS(uris[1], prefixes[1]);
        f.e->setAttributeXMLNS(uris[1], prefixes[2]);
        const std::string declared = attrNames(f.e);
        std::vector<Entry> model; // the declarations are not modelled
        const int span = 4 + round * 2, steps = 40 + round * 20;
        for (int step = 0; step < steps; ++step) {
            const int ns = int(random() % 3) - 1, k = int(random() % span);
            const int prefix = ns <= 0 ? 0 : 1 + int(random() % 2);
            auto found = std::find_if(model.begin(), model.end(),
                                      [&](const Entry& a) { return a.ns == ns && a.k == k; });
            switch (random() % 4) {
            case 0:
            case 1:
                if (ns < 0)
                    f.e->setAttribute(locals[k], ZkValue(step));
                else
                    f.e->setAttributeNS(uris[ns], prefixes[prefix], locals[k], ZkValue(step));
                if (found != model.end())
                    *found = {ns, k, prefix, step};
                else
                    model.push_back({ns, k, prefix, step});
                break;
            case 2:
                if (ns < 0)
                    f.e->removeAttribute(locals[k]);
                else
                    f.e->removeAttributeNS(uris[ns], locals[k]);
                if (found != model.end())
                    model.erase(found);
                break;
            default:
                if (found == model.end())
                    break;
                f.e->removeAttribute(qname(*found));
                model.erase(found);
                break;
            }
            std::string expected = declared;
            for (const Entry& a : model)
                expected += "," + utf8(qname(a).toString());
            ASSERT_EQ(attrNames(f.e), expected) << "round " << round << " step " << step;
            const ZkNamedNodeMap* map = f.e->getAttributes();
            ASSERT_EQ(map->getCount(), int(model.size()) + 3);
            ASSERT_EQ(map->getLastNode()->getNextLink(), map->getFirstNode()) << "a closed ring";
            ASSERT_EQ(map->getFirstNode()->getPreviousSibling(), nullptr);
            ASSERT_EQ(static_cast<ZkAttr*>(map->getLastNode())->getOwnerElement(), f.e);
            for (int n = -1; n < 2; ++n) {
                for (int i = 0; i < span; ++i) {
                    auto it = std::find_if(model.begin(), model.end(),
                                           [&](const Entry& a) { return a.ns == n && a.k == i; });
                    const int want = it == model.end() ? -1 : it->value;
                    const ZkValue value = n < 0 ? f.e->getAttribute(locals[i])
                                                : f.e->getAttributeNS(uris[n], locals[i]);
                    ASSERT_EQ(value.getIntegerValue(-1), want) << n << " " << i << " step " << step;
                    if (it == model.end())
                        continue;
                    ASSERT_EQ(f.e->getAttribute(qname(*it)).getIntegerValue(-1), want);
                    if (n < 1)
                        continue;
                    // After a prefix change the old qualified name finds nothing.
                    const ZkName old = ZkXmlUtil::makeQName(prefixes[3 - it->prefix], locals[i]);
                    ASSERT_TRUE(f.e->getAttribute(old).isNull()) << utf8(old.toString());
                }
            }
        }
    }
}
