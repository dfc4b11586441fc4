// ZkMessage: a message pattern filled with up to five arguments.
#ifndef ZKCOMMON_CORE_MESSAGE_H
#define ZKCOMMON_CORE_MESSAGE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

namespace ZkCommonNS {

/// Fills `{0}` to `{4}` of an ICU message pattern (a single quote escapes). A bad pattern gives
/// whatever text formatting produced, never an exception.
class ZKCOMMON_API ZkMessage {
public:
    ZkMessage(const UnicodeString& pattern, const UnicodeString& a0, const UnicodeString& a1,
              const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4);
    ZkMessage(const char* pattern, const UnicodeString& a0, const UnicodeString& a1,
              const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4);

    const UnicodeString& toString() const { return m_text; }
    operator const UnicodeString&() const { return m_text; }

private:
    UnicodeString m_text;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_MESSAGE_H
