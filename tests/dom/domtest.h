// Helpers shared by the tree tests: a document that loads from a script of events, and builders.
#ifndef ZKCOMMON_TESTS_DOM_DOMTEST_H
#define ZKCOMMON_TESTS_DOM_DOMTEST_H

#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/text.h>

#include <string>
#include <vector>

namespace domtest {

using namespace ZkCommonNS;

inline std::string utf8(const UnicodeString& text) {
    std::string out;
    return text.toUTF8String(out);
}

inline std::string nameOf(const ZkNode* node) {
    if (!node)
        return "(null)";
    if (node->isText())
        return "'" + utf8(node->getText()) + "'";
    return utf8(node->getNodeName().toString());
}

/// One event of the scripted input.
struct Event {
    enum Kind { Start, Text, End, EndDocument } kind;
    const char16_t* text;
};

/// A document whose loader reads a fixed script of parser-like events, one node per step, the
/// way the parser-driven loader does: an end tag finishes the open node and reading goes on
/// until a node is added.
class ScriptedDocument : public ZkDocument {
public:
    explicit ScriptedDocument(std::vector<Event> events) : m_events(std::move(events)) {}

    ZkNode* loadNextNode() override {
        ++m_calls;
        ZkNode* last = getLastLoadingNode();
        if (!last)
            return nullptr;
        ZkNode* open = last;
        if (last->isText() && !last->isLoading())
            open = last->getParentNodeFast();
        while (m_position < m_events.size()) {
            if (!open) {
                setLastLoadingNode(nullptr);
                return nullptr;
            }
            const Event& event = m_events[m_position++];
            switch (event.kind) {
            case Event::Start: {
                ZkPtr<ZkElement> element = createElement(ZkName(event.text));
                element->setFlag(kLoading, true);
                open->appendChild(element);
                setLastLoadingNode(element);
                return element;
            }
            case Event::Text: {
                ZkNode* text = open->appendChildText(UnicodeString(event.text));
                setLastLoadingNode(text);
                return text;
            }
            case Event::End:
                open->setLoadDone();
                open = open->getParentNodeFast();
                break;
            case Event::EndDocument:
                open->setLoadDone();
                setLastLoadingNode(nullptr);
                return nullptr;
            }
        }
        setLastLoadingNode(nullptr);
        return nullptr;
    }

    void startPull() {
        setPullMode(true);
        beginLoad(nullptr);
    }
    void startFull() {
        setPullMode(false);
        beginLoad(nullptr);
    }
    int calls() const { return m_calls; }
    size_t position() const { return m_position; }

private:
    std::vector<Event> m_events;
    size_t m_position = 0;
    int m_calls = 0;
};

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
