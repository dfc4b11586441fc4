// Forward declarations of the document tree.
#ifndef ZKCOMMON_DOM_FWD_H
#define ZKCOMMON_DOM_FWD_H

namespace ZkCommonNS {
class ZkNode;
class ZkElement;
class Element;
class ElementNS;
class ZkAttr;
class Attr;
class AttrNS;
class ZkNamedNodeMap;
class AttrNodeMap;
class ZkTextNode;
class ZkProcessingInstruction;
class ZkDocumentFragment;
class ZkDocument;
class ZkLoadEventSource;
class ZkNodeIterable;
class ZkNodeList;
class ChildNodeList;
class TreeNodeList;
class ZkNodeIterator;
class ZkTreeIterator;
class ZkCssDeclarationDebugInfo;
class ZkCssDebugBlock;
class ZkNamespaceMap;
class ZkNamespaceManager;
} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_FWD_H
