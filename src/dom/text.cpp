// ZkTextNode.
#include "zkcommon/dom/text.h"

#include "zkcommon/dom/document.h"
#include "zkcommon/values/value.h"

#include <utility>

namespace ZkCommonNS {

ZkTextNode::ZkTextNode(ZkDocument* ownerDocument, const UnicodeString& data)
    : ZkNode(ownerDocument), m_data(data), m_bidiLevel(-1) {}

ZkTextNode::ZkTextNode(ZkDocument* ownerDocument, UnicodeString&& data)
    : ZkNode(ownerDocument), m_data(std::move(data)), m_bidiLevel(-1) {}

ZkTextNode::~ZkTextNode() = default;

ZkName ZkTextNode::getLocalName() const {
    return ZkName(ZKN_H_text);
}
int ZkTextNode::getNodeType() const {
    return TEXT_NODE;
}
bool ZkTextNode::isText() const {
    return true;
}

ZkValue ZkTextNode::getNodeValue() const {
    return ZkValue(m_data);
}

void ZkTextNode::setNodeValue(const ZkValue& value) {
    m_data = value.toString();
}

ZkPtr<ZkNode> ZkTextNode::cloneNode(bool) const {
    ZkDocument* document = getOwnerDocumentField();
    if (!document)
        return ZkPtr<ZkNode>();
    ZkPtr<ZkNode> clone(document->createTextNode(m_data));
    cloneMembers(clone);
    return clone;
}

void ZkTextNode::cloneMembers(ZkNode* to) const {
    ZkNode::cloneMembers(to);
    if (to && to->isA(ZkTypeID::kTextNode))
        static_cast<ZkTextNode*>(to)->m_bidiLevel = m_bidiLevel;
}

} // namespace ZkCommonNS
