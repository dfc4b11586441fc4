// ZkLoadEventSource: the pull events that the document's loader turns into nodes.
#ifndef ZKCOMMON_DOM_LOADSOURCE_H
#define ZKCOMMON_DOM_LOADSOURCE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"

namespace ZkCommonNS {

/// What ZkDocument::loadNextNode reads: one parser event at a time, with the getters that are
/// valid for it. The numbers of the events are those of the pull parser. A parser is attached
/// to a document through a source that forwards to it; a test or an application may feed a
/// document from anything else the same way.
class ZKCOMMON_API ZkLoadEventSource {
public:
    enum EventType {
        START_DOCUMENT = 0,
        END_DOCUMENT = 1,
        START_TAG = 2,
        END_TAG = 3,
        TEXT = 4,
        PROCESSING_INSTRUCTION = 8
    };

    virtual ~ZkLoadEventSource();

    /// Reads the next event and returns its type; END_DOCUMENT at the end, and so on after it.
    /// Failures of the input are thrown as ZkError.
    virtual int next() = 0;
    /// The number of open elements; at an end tag, the same as at its start tag.
    virtual int getDepth() const = 0;
    /// The element's namespace URI, prefix and local name at a start or end tag.
    virtual ZkName getNamespace() const = 0;
    virtual ZkName getPrefix() const = 0;
    virtual ZkName getName() const = 0;
    /// Character data at TEXT, the data of an instruction at PROCESSING_INSTRUCTION.
    virtual UnicodeString getText() const = 0;
    /// The text of a TEXT event as a node keeps it: in a string of its own length that shares
    /// no buffer with the source. By default a trimmed copy of getText().
    virtual UnicodeString getNodeText() const;
    /// The target of an instruction.
    virtual ZkName getTarget() const = 0;
    /// The attributes of a start tag; -1 elsewhere.
    virtual int getAttributeCount() const = 0;
    virtual ZkName getAttributeNamespace(int index) const = 0;
    virtual ZkName getAttributePrefix(int index) const = 0;
    virtual ZkName getAttributeName(int index) const = 0;
    virtual UnicodeString getAttributeValue(int index) const = 0;
    /// An attribute of the start tag with its value lent in place: `length` characters at
    /// `chars`, valid until the next event.
    struct LentAttribute {
        ZkName ns;
        ZkName prefix;
        ZkName local;
        const UChar* chars;
        int32_t length;
    };
    /// Attribute `index` in one call. False, and `out` as it was, when the source can't lend
    /// its values (the default); the loader then asks the getters above one by one.
    virtual bool lendAttribute(int index, LentAttribute& out) const;
    /// The position of the event; -1 when unknown.
    virtual int getLineNumber() const = 0;
    virtual int getColumnNumber() const = 0;
    /// Reports a problem of the input: it may throw (a fatal code), call back or queue; when it
    /// returns, the loader goes on with the next event.
    virtual void throwError(unsigned short code, const UnicodeString& arg1,
                            const UnicodeString& arg2) = 0;
    /// Makes the following events come from the resource `uri`, read as `parserType` ("xml" or
    /// "text") in `encoding`, before the rest of the current input.
    virtual void pushStream(const UnicodeString& uri, ZkName parserType,
                            const UnicodeString& encoding) = 0;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_LOADSOURCE_H
