// ZkProcessingInstruction and the reading of pseudo-attributes.
#include "zkcommon/dom/processinginstruction.h"

#include "zkcommon/core/char.h"
#include "zkcommon/core/strings.h"

namespace ZkCommonNS {

ZkProcessingInstruction::ZkProcessingInstruction(ZkDocument* ownerDocument, ZkName target,
                                                 const UnicodeString& data)
    : ZkNode(ownerDocument), m_target(target), m_data(data) {}

ZkProcessingInstruction::~ZkProcessingInstruction() = default;

int ZkProcessingInstruction::getNodeType() const {
    return PROCESSING_INSTRUCTION_NODE;
}
bool ZkProcessingInstruction::isProcessingInstruction() const {
    return true;
}

namespace {
// TAB, LINE FEED, CARRIAGE RETURN and SPACE: the white space of the XML grammar (S).
bool isPseudoAttributeSpace(UChar32 c) {
    return ZkChar::isWhitespace(c);
}
} // namespace

ZkProcessingInstruction::AttributeMap
ZkProcessingInstruction::parseAsAttribute(const UnicodeString& data) {
    AttributeMap result;
    const int32_t length = data.length();
    int32_t pos = 0;
    while (pos < length) {
        while (pos < length && isPseudoAttributeSpace(data.char32At(pos)))
            pos = data.moveIndex32(pos, 1);
        if (pos >= length)
            break;
        // The name runs up to "=", white space included: the instruction is not validated.
        const int32_t nameStart = pos;
        while (pos < length && data.char32At(pos) != u'=')
            pos = data.moveIndex32(pos, 1);
        if (pos >= length)
            break;
        UnicodeString name(data, nameStart, pos - nameStart);
        ++pos; // "="

        UnicodeString value;
        const UChar32 quote = pos < length ? data.char32At(pos) : -1;
        if (quote == u'"' || quote == u'\'') {
            const int32_t close = data.indexOf(static_cast<char16_t>(quote), pos + 1);
            if (close < 0) {
                value = ZkBogusString::getBogusString();
                pos = length;
            } else {
                value.setTo(data, pos + 1, close - pos - 1);
                pos = close + 1;
            }
        } else {
            // Unquoted: the text is read again as the start of the next name.
            value = ZkBogusString::getBogusString();
        }
        result.emplace(std::move(name), std::move(value));
    }
    return result;
}

} // namespace ZkCommonNS
