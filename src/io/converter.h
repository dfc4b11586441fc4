// The platform converter behind ZkRQCIStream and ZkRQCOStream: one small interface, one
// implementation per platform (converter_posix.cpp over iconv).
#ifndef ZKCOMMON_SRC_IO_CONVERTER_H
#define ZKCOMMON_SRC_IO_CONVERTER_H

#include "zkcommon/core/unicode.h"

#include <memory>
#include <string>

namespace ZkCommonNS {
namespace detail {

class ByteConverter {
public:
    enum class Direction { kToUtf16, kFromUtf16 };

    /// Opens a converter between `encoding` and UTF-16 in host byte order. The name is the
    /// canonical spelling of ZkUtil::getCanonicalEncoding or any name the platform or ICU
    /// knows. Null when the platform cannot convert it.
    static std::unique_ptr<ByteConverter> open(const UnicodeString& encoding, Direction direction);
    /// Stored; handed to the platform only while the process has one thread and no converter
    /// has opened yet. True when it was handed on.
    static bool setTablePath(const UnicodeString& path);

    virtual ~ByteConverter();

    /// Converts [source, sourceLimit) and appends to `target`. Malformed input becomes U+FFFD
    /// (to UTF-16) and characters the encoding lacks become "?" (from UTF-16). Without
    /// `flush`, an incomplete sequence at the end stays unread: the return value is the count
    /// of bytes consumed. With `flush` all is consumed and any shift state is closed.
    virtual size_t convert(const char* source, size_t length, std::string& target, bool flush) = 0;
    /// The byte order mark of the encoding, empty for one that has none.
    virtual std::string byteOrderMark() const = 0;
};

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_CONVERTER_H
