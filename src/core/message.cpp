// ZkMessage over ICU's MessageFormat.
#include "zkcommon/core/message.h"

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>

namespace ZkCommonNS {

ZkMessage::ZkMessage(const UnicodeString& pattern, const UnicodeString& a0, const UnicodeString& a1,
                     const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4) {
    const icu::Formattable arguments[] = {icu::Formattable(a0), icu::Formattable(a1),
                                          icu::Formattable(a2), icu::Formattable(a3),
                                          icu::Formattable(a4)};
    UErrorCode status = U_ZERO_ERROR;
    // A bad pattern is not an error of ours: the caller gets whatever ICU left.
    icu::MessageFormat::format(pattern, arguments, 5, m_text, status);
}

ZkMessage::ZkMessage(const char* pattern, const UnicodeString& a0, const UnicodeString& a1,
                     const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4)
    : ZkMessage(UnicodeString(pattern ? pattern : ""), a0, a1, a2, a3, a4) {}

} // namespace ZkCommonNS
