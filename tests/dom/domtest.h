// Helpers shared by the tree tests: a document that loads from a script of events, and builders.
#ifndef ZKCOMMON_TESTS_DOM_DOMTEST_H
#define ZKCOMMON_TESTS_DOM_DOMTEST_H

#include "support.h"

#include <array>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/loadsource.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>
#include <zkcommon/xml/xmlutil.h>

namespace domtest {

using namespace ZkCommonNS;

inline std::string nameOf(const ZkNode* node) {
    if (!node)
        return "(null)";
    if (node->isText())
        return "'" + utf8(node->getText()) + "'";
    return utf8(node->getNodeName().toString());
}

/// The tree below `root` as text: elements as name(...), texts quoted (adjacent ones joined),
/// instructions as <?target>. The `full` form names elements {namespace}local with their
/// attributes sorted (namespace declarations left out), and instructions carry their data.
inline std::string treeText(const ZkNode* root, bool full = false) {
    std::string out, text;
    auto qualified = [](const ZkNode* node) {
        return "{" + utf8(node->getNamespaceUri().toString()) + "}" +
               utf8(node->getLocalName().toString());
    };
    ZkTreeIterator walk(root, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        if (node->isText()) {
            text += utf8(node->getText());
            continue;
        }
        out += text.empty() ? "" : "'" + text + "'";
        text.clear();
        if (node->isProcessingInstruction()) {
            out += "<?" + utf8(node->getLocalName().toString()) +
                   (full ? " " + utf8(node->getText()) : "") + ">";
        } else if (node->isElementNode() && walk.atPostVisit()) {
            out += ")";
        } else if (node->isElementNode()) {
            out += (full ? qualified(node) : nameOf(node)) + "(";
            std::set<std::string> attributes;
            ZkNamedNodeMap* map = node->getAttributes();
            for (ZkNode* attr = map->getFirstNode(); full && attr; attr = map->getNextNode(attr)) {
                if (attr->getNamespaceUri() != ZKN_NS_XMLNS)
                    attributes.insert(qualified(attr) + "=" +
                                      utf8(attr->getNodeValue().toString()));
            }
            for (const std::string& attribute : attributes)
                out += " " + attribute;
        }
    }
    return out + (text.empty() ? "" : "'" + text + "'");
}

/// One event of the scripted input. A start tag's `text` is its qualified name.
struct Event {
    enum Kind { Start, Text, End, EndDocument, Instruction, Other } kind;
    const char16_t* text = nullptr;
    const char16_t* ns = nullptr;
    /// Attributes of a start tag: namespace URI (or null), qualified name, value.
    std::vector<std::array<const char16_t*, 3>> attributes = {};
    int line = -1;
};

/// A load source reading a fixed script of events, with the depth a parser would report. It
/// records what the loader reports to it, and an include pushes `included` in front of the rest.
class ScriptedSource : public ZkLoadEventSource {
public:
    explicit ScriptedSource(std::vector<Event> events) : m_events(std::move(events)) {}

    int next() override {
        if (m_popPending) {
            --m_depth;
            m_popPending = false;
        }
        if (m_position >= m_events.size()) {
            m_current = Event{Event::EndDocument};
            return END_DOCUMENT;
        }
        m_current = m_events[m_position++];
        if (m_current.kind == Event::Start)
            ++m_depth;
        m_popPending = m_current.kind == Event::End; // an end tag reports its start tag's depth
        if (m_current.kind == Event::EndDocument)
            m_position = m_events.size();
        // Other stands for a comment, which the loader has no node for.
        static const int kCodes[] = {START_TAG, TEXT, END_TAG, END_DOCUMENT, PROCESSING_INSTRUCTION,
                                     9};
        return kCodes[m_current.kind];
    }
    int getDepth() const override { return m_depth; }
    ZkName getNamespace() const override { return m_current.ns ? ZkName(m_current.ns) : ZkName(); }
    ZkName getPrefix() const override {
        return ZkXmlUtil::getPrefixFromQName(ZkName(m_current.text));
    }
    ZkName getName() const override {
        return ZkXmlUtil::getLocalPartFromQName(ZkName(m_current.text));
    }
    UnicodeString getText() const override {
        if (m_current.kind == Event::Instruction) {
            UnicodeString all(m_current.text);
            int32_t space = all.indexOf(u' ');
            return space < 0 ? UnicodeString() : UnicodeString(all, space + 1);
        }
        return UnicodeString(m_current.text);
    }
    ZkName getTarget() const override {
        UnicodeString all(m_current.text);
        int32_t space = all.indexOf(u' ');
        return ZkName(space < 0 ? all : UnicodeString(all, 0, space));
    }
    int getAttributeCount() const override {
        return m_current.kind == Event::Start ? int(m_current.attributes.size()) : -1;
    }
    ZkName getAttributeNamespace(int i) const override {
        const char16_t* ns = m_current.attributes[size_t(i)][0];
        return ns ? ZkName(ns) : ZkName();
    }
    ZkName getAttributePrefix(int i) const override {
        return ZkXmlUtil::getPrefixFromQName(ZkName(m_current.attributes[size_t(i)][1]));
    }
    ZkName getAttributeName(int i) const override {
        return ZkXmlUtil::getLocalPartFromQName(ZkName(m_current.attributes[size_t(i)][1]));
    }
    UnicodeString getAttributeValue(int i) const override {
        return UnicodeString(m_current.attributes[size_t(i)][2]);
    }
    int getLineNumber() const override { return m_current.line; }
    int getColumnNumber() const override { return m_current.line < 0 ? -1 : 1; }
    void throwError(unsigned short code, const UnicodeString& arg1,
                    const UnicodeString& arg2) override {
        reported.push_back(std::to_string(code) + " " + utf8(arg1) + " " + utf8(arg2));
    }
    void pushStream(const UnicodeString& uri, ZkName parserType,
                    const UnicodeString& encoding) override {
        pushed.push_back(utf8(uri) + " " + utf8(parserType.toString()) + " " + utf8(encoding));
        m_events.insert(m_events.begin() + long(m_position), included.begin(), included.end());
    }

    size_t position() const { return m_position; }

    std::vector<std::string> reported;
    std::vector<std::string> pushed;
    std::vector<Event> included;

private:
    std::vector<Event> m_events;
    size_t m_position = 0;
    Event m_current{Event::EndDocument};
    int m_depth = 0;
    bool m_popPending = false;
};

/// A document fed by a ScriptedSource through the library's own loader; it counts the steps.
class ScriptedDocument : public ZkDocument {
public:
    explicit ScriptedDocument(std::vector<Event> events) {
        auto source = std::make_unique<ScriptedSource>(std::move(events));
        m_script = source.get();
        setLoadSource(std::move(source));
    }

    ZkNode* loadNextNode() override {
        ++m_calls;
        return ZkDocument::loadNextNode();
    }

    void startPull() {
        setPullMode(true);
        load();
    }
    void startFull() {
        setPullMode(false);
        load();
    }
    int calls() const { return m_calls; }
    size_t position() const { return m_script->position(); }
    ScriptedSource& script() { return *m_script; }

private:
    ScriptedSource* m_script;
    int m_calls = 0;
};

/// What `action` throws as "code message", or "" when it throws nothing.
inline std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ZkError& e) {
        return std::to_string(e.getErrorCode()) + " " + utf8(e.getRawMessage());
    }
    return "";
}

/// Appends an element named `name` to `parent` and returns it.
inline ZkElement* addElement(ZkDocument* document, ZkNode* parent, const char16_t* name) {
    ZkPtr<ZkElement> element = document->createElement(ZkName(name));
    parent->appendChild(element);
    return element;
}

inline ZkNode* addText(ZkDocument* document, ZkNode* parent, const char16_t* text) {
    ZkPtr<ZkTextNode> node = document->createTextNode(UnicodeString(text));
    parent->appendChild(node);
    return node;
}

/// The children of `parent` by name, read with the Fast getters.
inline std::string childNames(const ZkNode* parent) {
    std::string out;
    for (ZkNode* child = parent->getFirstChildFast(); child; child = child->getNextSiblingFast()) {
        if (!out.empty())
            out += ",";
        out += nameOf(child);
    }
    return out;
}

} // namespace domtest

#endif // ZKCOMMON_TESTS_DOM_DOMTEST_H
