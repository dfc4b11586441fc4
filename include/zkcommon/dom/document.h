// ZkDocument: the root node of a tree, the factory of its nodes and the pull-mode loader state.
#ifndef ZKCOMMON_DOM_DOCUMENT_H
#define ZKCOMMON_DOM_DOCUMENT_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/node.h"

#include <iosfwd>
#include <memory>

namespace ZkCommonNS {

class ZkUri;
class ZkXmlParser;
class ZkXmlSerializer;

/// The document node. Its owner-document field points to itself, so that its children and its
/// loading getters work as on any node; getOwnerDocument nevertheless answers null. It holds one
/// reference on the shared name table for its whole life.
///
/// Loading is incremental: loadNextNode turns the next event of the load source into a node and
/// returns it, and in pull mode nothing else adds nodes, so that reading the tree through the
/// loading getters pulls the loader along. The factories are virtual so that a derived document
/// makes its own node kinds; one that refuses an element (a null createElementNS) makes the
/// loader skip it with its whole subtree.
class ZKCOMMON_API ZkDocument : public ZkNode {
    ZK_DECLARE_TYPE(ZkDocument, ZkNode, ZkTypeID::kDocument, "ZkDocument")

public:
    ZkDocument();

    /// "#document".
    ZkName getLocalName() const override;
    int getNodeType() const override;
    /// Always null: a document has no owner.
    ZkDocument* getOwnerDocument() const override;
    /// The base URI, or the document URI when no base URI is set.
    UnicodeString getBaseUri() const override;

    // --- factories: each returns a new detached node, null when memory fails ------------------

    /// The first child that is an element; the search may load. Null when there is none.
    virtual ZkElement* getDocumentElement() const;
    /// An Element; prefix and local part are split from `qname` at its first colon.
    virtual ZkPtr<ZkElement> createElement(ZkName qname);
    /// An ElementNS. An empty local name is accepted as it is.
    virtual ZkPtr<ZkElement> createElementNS(ZkName uri, ZkName prefix, ZkName local);
    /// Splits `qname` and calls the three-name form.
    virtual ZkPtr<ZkElement> createElementNS(ZkName uri, ZkName qname);
    virtual ZkPtr<ZkTextNode> createTextNode(const UnicodeString& text);
    virtual ZkPtr<ZkProcessingInstruction> createProcessingInstruction(ZkName target,
                                                                       const UnicodeString& data);
    virtual ZkPtr<ZkDocumentFragment> createDocumentFragment();
    /// An Attr, or an AttrNS for a prefixed name whose prefix is "xml", "xlink", "xmlns" or
    /// declared on the document element. Null for an undeclared prefix or an empty local part.
    virtual ZkPtr<ZkAttr> createAttribute(ZkName qname);
    /// An Attr when `uri` and `prefix` are both empty, otherwise an AttrNS; the value is Null.
    virtual ZkPtr<ZkAttr> createAttributeNS(ZkName uri, ZkName prefix, ZkName local);
    /// Splits `qname` and calls the three-name form.
    virtual ZkPtr<ZkAttr> createAttributeNS(ZkName uri, ZkName qname);
    /// The node that stands for `text` under `parent`; by default createTextNode(text).
    virtual ZkPtr<ZkNode> createTextNodeElement(const UnicodeString& text, ZkNode* parent);

    // --- loading ------------------------------------------------------------------------------

    /// Adds the next node and returns it; null at the end, after abort, or when nothing is being
    /// loaded. Runs under the document lock. Errors of the source pass through as ZkError, and
    /// standard exceptions become ZkError 1 (out of memory) or 2; an event the loader cannot
    /// place raises ZkError 11. Without a source the load simply ends.
    virtual ZkNode* loadNextNode();
    /// Loads the whole source into the document, replacing its children; in pull mode only
    /// starts the load. Without a source the document is simply emptied. The parser's input,
    /// when a parser is the source, must have been set already.
    void load();
    /// Opens `uri` (resolved against nothing: give an absolute URI or a path) with the parser
    /// and loads it into `root`, or into the document when `root` is null; the load replaces
    /// the target's children, and a load into the document makes `uri` the document URI. In
    /// pull mode only the opening happens here. Throws the parser's ZkError: 67 when the
    /// resource can't be opened, 68 when it is empty, and any fatal error of the content.
    void load(const UnicodeString& uri, ZkNode* root = nullptr);
    void load(ZkUri& uri, ZkNode* root = nullptr);
    /// The same from `in`, which must outlive the load (all of it, in pull mode); `uri` names
    /// the input and is the base of its relative references.
    void load(std::istream& in, ZkNode* root, const UnicodeString& uri);
    /// Loads `text` (XML as UTF-16) into `root` or the document, always to its end, also in
    /// pull mode. A load into the document clears the document URI.
    void loadXml(const UnicodeString& text, ZkNode* root = nullptr);
    /// The parser behind the load forms, made on first use; it replaces a load source set
    /// with setLoadSource.
    ZkXmlParser* getParser();
    /// The parser, or null when none was made.
    ZkXmlParser* getParser() const;
    /// Replaces the parser (the document takes a reference) and clears the document URI. Null
    /// drops parser and load source.
    void setParser(ZkXmlParser* parser);
    /// Replaces the source of events (the document owns it from now on) and drops the parser;
    /// null detaches it. A load in progress goes on with the new source.
    void setLoadSource(std::unique_ptr<ZkLoadEventSource> source);
    ZkLoadEventSource* getLoadSource() const { return m_source.get(); }
    /// Ends the current load: every following loadNextNode returns null at once. Nodes that were
    /// open keep their loading bit.
    void abort();
    bool getPullMode() const { return m_pullMode; }
    /// In pull mode a load returns at once and the loading getters drive loadNextNode.
    void setPullMode(bool pull) { m_pullMode = pull; }
    bool hasXInclude() const { return m_xincludeSeen; }
    /// The node most recently added or opened by the loader; null when idle.
    ZkNode* getLastLoadingNode() const { return m_lastLoadingNode; }

    // --- URIs ---------------------------------------------------------------------------------

    /// The document URI, or the base URI when it is empty.
    UnicodeString getDocumentUri() const;
    bool isBaseUriSpecified() const { return !m_baseUri.isEmpty(); }
    /// Stores `text` as a URI; an empty text clears the base URI.
    void setBaseUri(const UnicodeString& text);

    // --- saving -------------------------------------------------------------------------------

    /// The serializer that saving writes through, made on first use.
    ZkXmlSerializer* getSerializer();
    ZkXmlSerializer* getSerializer() const;
    /// Replaces the serializer (the document takes a reference); null drops it.
    void setSerializer(ZkXmlSerializer* serializer);

    /// Writes `root` (the document when null) as a whole document into the file `path`.
    /// `encoding` and `standalone` go to the serializer's setOutput. Throws ZkError 67 when the
    /// file can't be opened, 18 for a node kind that can't be written, 69 or 71 when the output
    /// fails; after a failure the serializer is dropped.
    void save(const UnicodeString& path, ZkNode* root = nullptr,
              const UnicodeString& encoding = UnicodeString(u"UTF-8"),
              const UnicodeString& standalone = UnicodeString());
    /// The same into `out`.
    void save(std::ostream& out, ZkNode* root = nullptr,
              const UnicodeString& encoding = UnicodeString(u"UTF-8"),
              const UnicodeString& standalone = UnicodeString());
    /// The same with a comment and a document type declaration (each written when not empty)
    /// after the XML declaration.
    void save(const UnicodeString& comment, const UnicodeString& doctype, std::ostream& out,
              ZkNode* root = nullptr, const UnicodeString& encoding = UnicodeString(u"UTF-8"),
              const UnicodeString& standalone = UnicodeString());
    /// `root` (the document when null) as XML text. Only the document itself gets an XML
    /// declaration. Errors as for save.
    UnicodeString saveXml(ZkNode* root = nullptr);

    /// Streaming save: opens the output and writes the document element's start tag with its
    /// attributes. Throws ZkError 3 when there is no document element; errors of the output
    /// leave the serializer in place.
    void saveDocumentElement(const UnicodeString& path);
    void saveDocumentElement(std::ostream& out);
    /// Writes the whole element `node` into the open streaming save; null writes nothing.
    void saveChildElement(ZkNode* node);
    /// Closes the document element and the output of the streaming save.
    void closeDocumentElement();

    /// Walks `root` under the document lock and drives the serializer. With `startTagOnly` the
    /// walk ends after the first start tag. A `callback` writes the attributes of each element
    /// in place of saveAttributes. Throws ZkError 18 for a node kind that can't be written.
    void doSave(ZkNode* root, bool startTagOnly, void (*callback)(ZkNode*, const void*),
                const void* data);
    /// Writes the attributes of `node` by the type of their values: Null and object values are
    /// left out, a compound writes one attribute per entry ("name.entry"), a colour its colour
    /// text, everything else its value text.
    void saveAttributes(ZkNode* node);

    /// The shared name table on which the document holds a reference.
    ZkNameTable* getNameTable() const { return m_nameTable; }

protected:
    /// Releases the name table first, then the tree goes down without recursion.
    ~ZkDocument() override;

    /// Starts a load into `target` (the document when null): the loader's position becomes the
    /// target, which gets the loading bit and loses its children. Unless `pull`, the load then
    /// runs to its end. Returns the target.
    ZkNode* beginLoad(ZkNode* target, bool pull);
    ZkNode* beginLoad(ZkNode* target) { return beginLoad(target, m_pullMode); }
    /// Moves the loader's position; a derived loader calls it for each node it opens or adds.
    /// The document holds the node while it is the position, so that a caller who cuts it out
    /// of the tree and drops it does not leave the loader on a freed node.
    void setLastLoadingNode(ZkNode* node);
    void setDocumentUri(const UnicodeString& uri) { m_documentUri = uri; }
    void setXIncludeSeen(bool seen) { m_xincludeSeen = seen; }
    int getSkipDepth() const { return m_skipDepth; }
    void setSkipDepth(int depth) { m_skipDepth = depth; }
    /// The lock around loadNextNode and saving.
    ZkLock& getLock() { return m_lock; }

private:
    friend class ZkElement;
    friend class ZkNode;

    /// Called when `child` leaves `parent`: a finished leaf that was the loader's position
    /// hands it to the parent, so that the load goes on in the parent. (An unfinished element
    /// taken out keeps the position; the load then ends with that element.)
    void childRemoved(ZkNode* parent, ZkNode* child) {
        if (m_lastLoadingNode == child && isFinishedLeaf(child))
            setLastLoadingNode(parent);
    }
    static bool isFinishedLeaf(const ZkNode* node);

    ZkNode* openParent() const;
    ZkNode* loadNextNodeLocked();
    ZkNode* loadStartTag(ZkNode* open);
    ZkNode* loadText(ZkNode* open);
    void loadXInclude(ZkElement* element);
    template <class Steps> void saveGuarded(Steps steps);

    ZkLock m_lock;
    ZkNameTable* m_nameTable;
    std::unique_ptr<ZkLoadEventSource> m_source;
    ZkPtr<ZkXmlParser> m_parser;
    ZkPtr<ZkXmlSerializer> m_serializer;
    UnicodeString m_baseUri;
    UnicodeString m_documentUri;
    // Held by a reference (except the document itself), so that a node the application removes
    // while it is the loader's position stays valid for the loader.
    ZkNode* m_lastLoadingNode;
    ZkPtr<ZkNode> m_lastLoadingHold; // m_lastLoadingNode unless it is the document itself
    int m_skipDepth;
    unsigned int m_nextElementId;
    // Counts taken on the link shared with the nodes, not yet handed to a node: the nodes made
    // for this document take theirs from here, without an atomic step each.
    int m_linkReserve;
    bool m_pullMode;
    bool m_xincludeSeen;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_DOCUMENT_H
