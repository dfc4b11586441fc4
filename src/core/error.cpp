// ZkError: construction, message and position rules, and the central raising helper.
#include "zkcommon/core/error.h"

#include "core/localpath.h"
#include "core/stdguard.h"

#include <cstring>
#include <stdexcept>

namespace ZkCommonNS {

namespace {
const UnicodeString kSystemError(u"SYSTEM ERROR: ");

UnicodeString fromLocal8Bit(const char* text) {
    return UnicodeString::fromUTF8(text ? text : "");
}
} // namespace

ZkErrorLevel getErrorLevel(unsigned short code) {
    if (!(code & 0x200))
        return ZK_ERROR_LEVEL_FATAL;
    if (!(code & 0x100))
        return ZK_ERROR_LEVEL_WARNING;
    return static_cast<ZkErrorLevel>((code & 0x80) | 0x300);
}

ZkError::ZkError() : m_code(0), m_line(-1), m_column(-1) {}

ZkError::ZkError(unsigned short code, const UnicodeString& message, const UnicodeString&, int line,
                 int column, const UnicodeString& uri)
    : m_code(code), m_message(message), m_line(line), m_column(column), m_uri(uri) {}

ZkError::ZkError(std::bad_alloc&, const UnicodeString&)
    : m_code(ZK_ERROR_OUT_OF_MEMORY), m_message(u"SYSTEM ERROR: Out of memory."), m_line(-1),
      m_column(-1) {}

ZkError::ZkError(std::exception& e, const UnicodeString&)
    : m_code(ZK_ERROR_CPP_EXCEPTION), m_message(u"SYSTEM ERROR: C++ exception: "), m_line(-1),
      m_column(-1) {
    m_message += fromLocal8Bit(e.what());
}

ZkError::~ZkError() = default;

UnicodeString ZkError::getPositionDescription() const {
    UnicodeString text;
    if (m_line > 0)
        text.append(u"Line ").append(UnicodeString::fromUTF8(std::to_string(m_line))).append(u", ");
    if (m_column > 0)
        text.append(u"Col ")
            .append(UnicodeString::fromUTF8(std::to_string(m_column)))
            .append(u", ");
    if (!m_uri.isEmpty())
        text.append(detail::uriToLocalPath(m_uri));
    return text;
}

UnicodeString ZkError::getMessage() const {
    UnicodeString position = getPositionDescription();
    if (position.isEmpty())
        return m_message;
    UnicodeString text(m_message);
    return text.append(char16_t(0x0A)).append(position);
}

void ZkError::setMessage(const UnicodeString& text) {
    m_message = text;
    UnicodeString position = getPositionDescription();
    if (position.isEmpty())
        return;
    int32_t tail = position.length() + 1;
    if (m_message.length() >= tail && m_message.endsWith(position) &&
        m_message.charAt(m_message.length() - tail) == 0x0A)
        m_message.truncate(m_message.length() - tail);
}

void ZkError::appendMessage(const UnicodeString& text) {
    if (text.isEmpty())
        return;
    if (!m_message.isEmpty())
        m_message.append(char16_t(0x0A));
    m_message.append(text);
}

void ZkError::throwFatalError() const {
    if (m_code != 0 && !(m_code & 0x200))
        throw *this;
}

UnicodeString ZkError::getLastErrorMessage(unsigned long code, void*) {
    if (code > 0x7FFFFFFFul)
        return UnicodeString();
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 32))
    // Null for a number the system has no text for, where strerror would make one up.
    const char* text = strerrordesc_np(static_cast<int>(code));
#else
    char buffer[256];
    // The GNU strerror_r may return a static string instead of filling the buffer.
    const char* text = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    if (text && std::strncmp(text, "Unknown error", 13) == 0)
        text = nullptr;
#endif
    UnicodeString result = fromLocal8Bit(text);
    return result.trim();
}

void detail::rethrowAsZkError() {
    try {
        throw;
    } catch (const ZkError&) {
        throw;
    } catch (std::bad_alloc& e) {
        throw ZkError(e, UnicodeString());
    } catch (std::exception& e) {
        throw ZkError(e, UnicodeString());
    }
}

void throwCommonError(ZkErrorCodeCOMMON code, int, const UnicodeString& arg1,
                      const UnicodeString& arg2) {
    const UnicodeString arg = arg1.isEmpty() ? UnicodeString(u"arg") : arg1;
    UnicodeString message(kSystemError);
    UnicodeString uri;
    switch (code) {
    case ZK_ERROR_NULL_ARGUMENT:
        message.append(arg).append(u" is null.");
        break;
    case ZK_ERROR_OUT_OF_RANGE:
        message.append(u"Argument is out of range.");
        break;
    case ZK_ERROR_WRONG_DOCUMENT:
        message.append(arg).append(u" is created from a different document.");
        break;
    case ZK_ERROR_NOT_ATTR:
        message.append(arg).append(u" is not an ZkAttr object.");
        break;
    case ZK_ERROR_ATTR_IN_USE:
        message.append(arg).append(
            u" is an ZkAttr that is already an attribute of another ZkElement object.");
        break;
    case ZK_ERROR_NOT_CHILD:
        message.append(arg).append(u" is not a child of this node.");
        break;
    case ZK_ERROR_WRONG_STATE:
        message.append(u"Cannot set a value on node type");
        if (arg1.isEmpty())
            message.append(u".");
        else
            message.append(u": ").append(arg1);
        break;
    case ZK_ERROR_START_DOCUMENT_ORDER:
        message.append(u"startDocument() must be called just after setOutput().");
        break;
    case ZK_ERROR_ATTRIBUTE_ORDER:
        message.append(u"attribute() must be called just after startTag().");
        break;
    case ZK_ERROR_UNEXPECTED_END_TAG:
        message.append(u"Unexpected endTag().");
        break;
    case ZK_ERROR_END_TAG_MISMATCH:
        message.append(u"End tag '")
            .append(arg1)
            .append(u"' does not match the start tag '")
            .append(arg2)
            .append(u"'.");
        break;
    case ZK_ERROR_UNEXPECTED_DOCDECL:
        message.append(u"Unexpected docdecl().");
        break;
    case ZK_ERROR_UNSUPPORTED_NODE_TYPE:
        message.append(u"Unsupported node type.");
        break;
    case ZK_ERROR_CANNOT_OPEN_FILE:
    case ZK_ERROR_CANNOT_OPEN_FILE_WARNING:
        message.append(u"Cannot open file.");
        uri = arg1;
        break;
    case ZK_ERROR_UNEXPECTED_EOF:
        message.append(u"Unexpected end of input stream.");
        uri = arg1;
        break;
    case ZK_ERROR_NO_OUTPUT_STREAM:
        message.append(u"Output stream is not set.");
        break;
    case ZK_ERROR_INPUT_STREAM:
        message.append(u"Input stream error.");
        uri = arg1;
        break;
    case ZK_ERROR_OUTPUT_STREAM:
        message.append(u"Output stream error.");
        break;
    case ZK_ERROR_REMOVE_TEMP_FILE:
        message.append(u"Cannot remove temporary file: ").append(arg1);
        break;
    case ZK_ERROR_CREATE_TEMP_FILE:
        message.append(u"Cannot create temporary file: ").append(arg1);
        break;
    case ZK_ERROR_NOT_CATALOG:
        message.append(u"Not an XML Catalog file.");
        uri = arg1;
        break;
    default:
        message.append(u"ZkErrorCodeCOMMON");
        break;
    }
    throw ZkError(code, message, UnicodeString(), -1, -1, uri);
}

} // namespace ZkCommonNS
