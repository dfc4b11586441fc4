// ZkErrorXML: a running XML log of error records written to a stream.
#ifndef ZKCOMMON_CORE_ERRORXML_H
#define ZKCOMMON_CORE_ERRORXML_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <ostream>

namespace ZkCommonNS {

class ZkError;

/// Writes the head of the log at construction and its end at destruction; each call in between
/// writes one record. The stream is borrowed and must outlive the log; writing to a failed stream
/// follows the stream's state, and nothing here throws by itself.
class ZKCOMMON_API ZkErrorXML {
public:
    /// `prefix` is the namespace prefix of the log's elements; empty for none.
    ZkErrorXML(std::ostream& out, const UnicodeString& application, const UnicodeString& version,
               const UnicodeString& copyright, const UnicodeString& prefix);
    ~ZkErrorXML();
    ZkErrorXML(const ZkErrorXML&) = delete;
    ZkErrorXML& operator=(const ZkErrorXML&) = delete;

    /// A record with the error's code, raw message and position; code 0 writes nothing.
    void errorMessage(const ZkError& error) const;
    /// A record with a level and code; code 0 writes nothing.
    void errorMessage(unsigned short code, const UnicodeString& message, int line, int column,
                      const UnicodeString& uri) const;
    /// A record without level or code; an empty message writes nothing.
    void errorMessage(const UnicodeString& message) const;
    /// An information record; an empty message still writes the two tags.
    void infoMessage(const UnicodeString& message) const;

private:
    void writeName(const char* name) const;
    void writeRecordEnd(const UnicodeString& message) const;
    std::ostream* m_out;
    UnicodeString m_prefix;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_ERRORXML_H
