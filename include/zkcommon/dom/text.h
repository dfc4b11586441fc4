// ZkTextNode, a node of character data with its bidi level.
#ifndef ZKCOMMON_DOM_TEXT_H
#define ZKCOMMON_DOM_TEXT_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/dom/node.h"

namespace ZkCommonNS {

/// A text node. Besides attributes it is the one node kind on which setNodeValue works.
class ZKCOMMON_API ZkTextNode : public ZkNode {
    ZK_DECLARE_TYPE(ZkTextNode, ZkNode, ZkTypeID::kTextNode, "ZkTextNode")

public:
    ZkTextNode(ZkDocument* ownerDocument, const UnicodeString& data);
    ZkTextNode(ZkDocument* ownerDocument, UnicodeString&& data);

    /// "#text".
    ZkName getLocalName() const override;
    int getNodeType() const override;
    bool isText() const override;
    /// A string value of the data.
    ZkValue getNodeValue() const override;
    /// Stores the value's text; never throws.
    void setNodeValue(const ZkValue& value) override;
    UnicodeString getText() const override { return m_data; }
    void setText(const UnicodeString& text) override { m_data = text; }
    /// A new text node of the owner document with the same data, flags and bidi level; `deep`
    /// plays no part. Null without an owner document.
    ZkPtr<ZkNode> cloneNode(bool deep) const override;
    /// Copies the flags word and, to a text node, the bidi level.
    void cloneMembers(ZkNode* to) const override;
    /// True once a level of 0 or above was stored.
    bool isBidiDone() const override { return m_bidiLevel >= 0; }
    void bidiDone(int level) override { m_bidiLevel = level; }

    const UnicodeString& getData() const { return m_data; }
    void setData(const UnicodeString& data) { m_data = data; }
    /// In UTF-16 units.
    int32_t getLength() const { return m_data.length(); }
    /// -1 until set.
    int getBidiLevel() const { return m_bidiLevel; }

protected:
    ~ZkTextNode() override;

private:
    UnicodeString m_data;
    int32_t m_bidiLevel;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_TEXT_H
