// ZkDocument: the incremental loader, which turns one source event after another into nodes.
#include "core/stdguard.h"
#include "zkcommon/core/error.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/loadsource.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/dom/processinginstruction.h"
#include "zkcommon/dom/text.h"
#include "zkcommon/values/value.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlutil.h"

#include <new>
#include <typeinfo>
#include <utility>

namespace ZkCommonNS {

namespace {
constexpr int kSiteLoadNextNode = 40;
// Codes the source reports XInclude problems with: an unknown element of the namespace, and a
// parse attribute other than "xml" or "text".
constexpr unsigned short kErrorXIncludeElement = 186;
constexpr unsigned short kErrorXIncludeParse = 187;

// The parser's strings are built to grow, with room to spare; a node keeps its text for as long
// as the tree stands, so a long one moves into a buffer of its own length. The copy also leaves
// the parser's buffer unshared, to be reused for the next text.
void fitToLength(UnicodeString& text) {
    constexpr int32_t kSlack = 32; // units; below this a copy costs more than it saves
    const int32_t length = text.length();
    if (text.getCapacity() - length > kSlack && text.getCapacity() - length > length / 8) {
        UnicodeString exact(length, UChar32(0), 0); // an empty string with room for length
        exact.append(text);
        text = std::move(exact);
    }
}
} // namespace

ZkLoadEventSource::~ZkLoadEventSource() = default;

bool ZkLoadEventSource::lendAttribute(int, LentAttribute&) const {
    return false;
}

UnicodeString ZkLoadEventSource::getNodeText() const {
    UnicodeString text = getText();
    fitToLength(text);
    return text;
}

void ZkDocument::setLoadSource(std::unique_ptr<ZkLoadEventSource> source) {
    ZkMutex guard(m_lock);
    m_source = std::move(source);
    m_parser = nullptr;
}

void ZkDocument::abort() {
    ZkMutex guard(m_lock);
    setLastLoadingNode(nullptr);
}

void ZkDocument::setLastLoadingNode(ZkNode* node) {
    m_lastLoadingNode = node;
    // Holding the document itself would keep it alive for ever.
    if (node != m_lastLoadingHold.get())
        m_lastLoadingHold = ZkPtr<ZkNode>(node == this ? nullptr : node);
}

ZkNode* ZkDocument::beginLoad(ZkNode* target, bool pull) {
    if (!target)
        target = this;
    {
        ZkMutex guard(m_lock);
        m_skipDepth = 0;
        setLastLoadingNode(target);
        target->setFlag(kLoading, true);
        target->removeAllChildNodes(); // a load replaces the subtree
    }
    if (!pull) {
        while (loadNextNode()) {
        }
    }
    return target;
}

void ZkDocument::load() {
    beginLoad(this);
}

bool ZkDocument::isFinishedLeaf(const ZkNode* node) {
    return (node->isText() && !node->isLoading()) || node->isProcessingInstruction();
}

ZkNode* ZkDocument::openParent() const {
    // A finished leaf (a text without the loading bit, an instruction) hands the role of the open
    // node to its parent.
    ZkNode* last = m_lastLoadingNode;
    if (isFinishedLeaf(last))
        return last->getParentNodeFast();
    return last;
}

ZkNode* ZkDocument::loadNextNode() {
    ZkMutex guard(m_lock);
    return detail::guardStandardExceptions([this] { return loadNextNodeLocked(); });
}

ZkNode* ZkDocument::loadNextNodeLocked() {
    if (!m_lastLoadingNode)
        return nullptr;
    ZkNode* open = openParent();
    if (!m_source) {
        // Nothing to read: the input ends here, as at the end of a document.
        if (open)
            open->setLoadDone();
        setLastLoadingNode(nullptr);
        return nullptr;
    }
    int event = m_source->next();
    for (;;) {
        // A refused element is skipped with everything inside it, its own end tag included.
        while (m_skipDepth != 0) {
            if (event == ZkLoadEventSource::END_DOCUMENT) {
                m_skipDepth = 0;
                break;
            }
            if (event == ZkLoadEventSource::END_TAG && m_source->getDepth() == m_skipDepth)
                m_skipDepth = 0;
            event = m_source->next();
        }
        if (!open) {
            setLastLoadingNode(nullptr);
            return nullptr;
        }
        switch (event) {
        case ZkLoadEventSource::END_TAG:
            // A step doesn't stop at an end tag: it goes on until a node is added.
            open->setLoadDone();
            open = open->getParentNodeUncomplemental();
            event = m_source->next();
            continue;
        case ZkLoadEventSource::END_DOCUMENT:
            open->setLoadDone();
            setLastLoadingNode(nullptr);
            return nullptr;
        case ZkLoadEventSource::START_TAG:
            if (ZkNode* element = loadStartTag(open)) {
                setLastLoadingNode(element);
                return element;
            }
            break;
        case ZkLoadEventSource::TEXT: {
            // The parent's override may choose to make no node for the text.
            if (ZkNode* text = loadText(open)) {
                setLastLoadingNode(text);
                return text;
            }
            break;
        }
        case ZkLoadEventSource::PROCESSING_INSTRUCTION: {
            ZkPtr<ZkProcessingInstruction> pi =
                createProcessingInstruction(m_source->getTarget(), m_source->getText());
            if (pi) {
                open->appendChild(pi);
                setLastLoadingNode(pi.get());
                return pi;
            }
            break;
        }
        default:
            throwCommonError(ZK_ERROR_WRONG_STATE, kSiteLoadNextNode);
        }
        event = m_source->next();
    }
}

// An element and a document of this library's own classes make their text nodes here, the text
// moved in; those of an application see each text through appendChildText and
// createTextNodeElement. The identity of the type records is enough: a miss only takes the
// longer way.
ZkNode* ZkDocument::loadText(ZkNode* open) {
    if (&typeid(*open) != &typeid(ElementNS) || &typeid(*this) != &typeid(ZkDocument))
        return open->appendChildText(m_source->getNodeText());
    ZkTextNode* text = new (std::nothrow) ZkTextNode(this, m_source->getNodeText());
    if (!text)
        return nullptr;
    text->addRef();
    open->linkAsLastChild(text);
    return text;
}

ZkNode* ZkDocument::loadStartTag(ZkNode* open) {
    ZkPtr<ZkElement> element =
        createElementNS(m_source->getNamespace(), m_source->getPrefix(), m_source->getName());
    if (!element) {
        m_skipDepth = m_source->getDepth();
        return nullptr;
    }
    element->setFlag(kLoading, true);
    element->setSourceLineNumber(m_source->getLineNumber());
    element->setSourceColumnNumber(m_source->getColumnNumber());
    const int count = m_source->getAttributeCount();
    ZkNamedNodeMap* attributes = element->getAttributes();
    if (count > 0 && attributes && attributes->isA(ZkTypeID::kAttrNodeMap))
        static_cast<AttrNodeMap*>(attributes)->reserve(count);
    // As for texts: an element and a document of this library's own classes take each value
    // straight from the source's buffer; others see every attribute through setAttributeEx.
    const bool plain =
        &typeid(*element.get()) == &typeid(ElementNS) && &typeid(*this) == &typeid(ZkDocument);
    ZkLoadEventSource::LentAttribute lent;
    for (int i = 0; i < count; ++i) {
        if (m_source->lendAttribute(i, lent)) {
            if (plain)
                element->loadAttribute(lent.ns, lent.prefix, lent.local, lent.chars, lent.length);
            else
                element->setAttributeEx(lent.ns, lent.prefix, lent.local,
                                        UnicodeString(lent.chars, lent.length));
            continue;
        }
        UnicodeString value = m_source->getAttributeValue(i);
        fitToLength(value);
        element->setAttributeEx(m_source->getAttributeNamespace(i), m_source->getAttributePrefix(i),
                                m_source->getAttributeName(i), value);
    }
    element->finishAttributes();
    if (element->getNamespaceUri() == ZKN_NS_XINCLUDE) {
        loadXInclude(element);
        return nullptr;
    }
    ZkNode* placed = open->appendChildEx(element);
    if (!placed || !placed->isElementNode()) {
        m_skipDepth = m_source->getDepth();
        return nullptr;
    }
    return placed;
}

void ZkDocument::loadXInclude(ZkElement* element) {
    // The include element itself never joins the tree; what it names takes its place.
    if (element->getLocalName() != ZKN_include) {
        m_source->throwError(kErrorXIncludeElement,
                             ZkXmlUtil::makeQNameStr(element->getPrefix().toString(),
                                                     element->getLocalName().toString()),
                             UnicodeString());
        return;
    }
    m_xincludeSeen = true;
    const UnicodeString href = element->getAttribute(ZKN_href).toString();
    UnicodeString parse = element->getAttribute(ZKN_parse).toString();
    const UnicodeString encoding = element->getAttribute(ZKN_encoding).toString();
    // Fallback content is never used: the whole element is read past.
    for (int open = 1; open > 0;) {
        const int event = m_source->next();
        if (event == ZkLoadEventSource::START_TAG)
            ++open;
        else if (event == ZkLoadEventSource::END_TAG)
            --open;
        else if (event == ZkLoadEventSource::END_DOCUMENT)
            break;
    }
    if (href.isEmpty())
        return;
    if (parse.isEmpty())
        parse = ZkName(ZKN_xml).toString();
    if (parse != ZkName(ZKN_xml).toString() && parse != ZkName(ZKN_text).toString()) {
        m_source->throwError(kErrorXIncludeParse, ZkName(ZKN_parse).toString(), parse);
        return;
    }
    m_source->pushStream(href, ZkName(parse), encoding);
}

} // namespace ZkCommonNS
