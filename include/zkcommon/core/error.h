// ZkError, the one exception and diagnostic record, with the common error codes and levels.
#ifndef ZKCOMMON_CORE_ERROR_H
#define ZKCOMMON_CORE_ERROR_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <exception>
#include <new>

namespace ZkCommonNS {

/// Codes of the library. Bits 0xFC00 are the category (always 0 here), bits 0x200, 0x100 and
/// 0x80 the level: a clear 0x200 is fatal.
enum ZkErrorCodeCOMMON : unsigned short {
    ZK_ERROR_NONE = 0,
    ZK_ERROR_OUT_OF_MEMORY = 1,
    ZK_ERROR_CPP_EXCEPTION = 2,
    ZK_ERROR_NULL_ARGUMENT = 3,
    ZK_ERROR_OUT_OF_RANGE = 4,
    ZK_ERROR_WRONG_DOCUMENT = 6,
    ZK_ERROR_NOT_ATTR = 7,
    ZK_ERROR_ATTR_IN_USE = 8,
    ZK_ERROR_NOT_CHILD = 9,
    ZK_ERROR_WRONG_STATE = 11, ///< also "cannot set a value on node type"
    ZK_ERROR_START_DOCUMENT_ORDER = 12,
    ZK_ERROR_ATTRIBUTE_ORDER = 13,
    ZK_ERROR_UNEXPECTED_END_TAG = 14,
    ZK_ERROR_END_TAG_MISMATCH = 15,
    ZK_ERROR_UNEXPECTED_DOCDECL = 16,
    ZK_ERROR_UNSUPPORTED_NODE_TYPE = 18,
    ZK_ERROR_CANNOT_OPEN_FILE = 67,
    ZK_ERROR_UNEXPECTED_EOF = 68,
    ZK_ERROR_NO_OUTPUT_STREAM = 69,
    ZK_ERROR_INPUT_STREAM = 70,
    ZK_ERROR_OUTPUT_STREAM = 71,
    ZK_ERROR_REMOVE_TEMP_FILE = 77,
    ZK_ERROR_CREATE_TEMP_FILE = 78,
    ZK_ERROR_CANNOT_OPEN_FILE_WARNING = 517,
    ZK_ERROR_NOT_CATALOG = 518,
};

/// `code & 0xFC00`.
enum ZkErrorCategory : unsigned short { ZK_ERROR_CATEGORY_COMMON = 0 };

enum ZkErrorLevel : unsigned short {
    ZK_ERROR_LEVEL_FATAL = 0,
    ZK_ERROR_LEVEL_WARNING = 0x200,
    ZK_ERROR_LEVEL_ERROR = 0x300,
    ZK_ERROR_LEVEL_INFORMATION = 0x380,
};

/// The level of a code: fatal when bit 0x200 is clear, warning with 0x200 alone, else
/// `code & 0x80 | 0x300` (error or information). Bit 0x80 counts only together with 0x100.
ZKCOMMON_API ZkErrorLevel getErrorLevel(unsigned short code);

/// The record thrown by value for every failure and queued, logged or passed to callbacks.
class ZKCOMMON_API ZkError {
public:
    ZkError();
    /// `unused` is accepted and ignored.
    ZkError(unsigned short code, const UnicodeString& message, const UnicodeString& unused,
            int line, int column, const UnicodeString& uri);
    /// Code 1, "SYSTEM ERROR: Out of memory."; the second argument is ignored.
    ZkError(std::bad_alloc& e, const UnicodeString& unused);
    /// Code 2, "SYSTEM ERROR: C++ exception: " and what(); the second argument is ignored.
    ZkError(std::exception& e, const UnicodeString& unused);
    ZkError(const ZkError&) = default;
    ZkError& operator=(const ZkError&) = default;
    virtual ~ZkError();

    unsigned short getErrorCode() const { return m_code; }
    void setErrorCode(unsigned short code) { m_code = code; }
    ZkErrorCategory getErrorCategory() const {
        return static_cast<ZkErrorCategory>(m_code & 0xFC00);
    }
    const UnicodeString& getRawMessage() const { return m_message; }
    void setRawMessage(const UnicodeString& message) { m_message = message; }
    int getLineNumber() const { return m_line; }
    void setLineNumber(int line) { m_line = line; }
    int getColumnNumber() const { return m_column; }
    void setColumnNumber(int column) { m_column = column; }
    const UnicodeString& getUri() const { return m_uri; }
    void setUri(const UnicodeString& uri) { m_uri = uri; }

    /// "Line n, " when the line is above 0, "Col n, " when the column is above 0, then the URI
    /// as a local path. Empty when none of these is known.
    UnicodeString getPositionDescription() const;
    /// The raw message, and after a line feed the position when there is one.
    UnicodeString getMessage() const;
    /// Stores `text`, cutting a trailing line feed and position description that getMessage
    /// would have added, so setMessage(e.getMessage()) leaves the raw message as it was.
    void setMessage(const UnicodeString& text);
    /// Appends `text` on a new line; an empty text changes nothing.
    void appendMessage(const UnicodeString& text);
    /// Throws a copy when the code is non-zero and fatal (bit 0x200 clear); else returns.
    void throwFatalError() const;

    /// The operating system's text for error number `code`, trimmed; empty when it has none.
    static UnicodeString getLastErrorMessage(unsigned long code, void* module = nullptr);

private:
    unsigned short m_code;
    UnicodeString m_message;
    int m_line;
    int m_column;
    UnicodeString m_uri;
};

/// Raises a common error: "SYSTEM ERROR: " and the code's text, with `arg1` ("arg" when empty)
/// and `arg2` filled in. `site` names the raising operation and does not change the result.
[[noreturn]] ZKCOMMON_API void throwCommonError(ZkErrorCodeCOMMON code, int site,
                                                const UnicodeString& arg1 = UnicodeString(),
                                                const UnicodeString& arg2 = UnicodeString());

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_ERROR_H
