// The small string carriers: the shared empty and bogus strings, ZkCStr (a text with an 8-bit
// form in a named encoding beside it) and ZkUtfStr (the same in UTF-8).
#ifndef ZKCOMMON_CORE_STRINGS_H
#define ZKCOMMON_CORE_STRINGS_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <string>

namespace ZkCommonNS {

/// The empty string, for functions that must return a reference to "no text". A UnicodeString
/// cannot be built by the compiler, so EMPTY_VALUE is ready only once the library's own static
/// initialisers have run; getEmptyString is ready at any time, static initialisers included.
class ZKCOMMON_API ZkEmptyString : public UnicodeString {
public:
    static const ZkEmptyString EMPTY_VALUE;
    static const UnicodeString& getEmptyString() noexcept;

private:
    ZkEmptyString() = default;
};

/// The bogus string (isBogus() true): the failure result of text functions. As with the empty
/// string, getBogusString is the form that is ready during static initialisation.
class ZKCOMMON_API ZkBogusString : public UnicodeString {
public:
    static const ZkBogusString BOGUS_VALUE;
    static const UnicodeString& getBogusString() noexcept;

private:
    ZkBogusString() { setToBogus(); }
};

/// A text that also gives an 8-bit form in a named encoding, made when first asked and made
/// again when the text has changed since. File names cross the library in it.
class ZKCOMMON_API ZkCStr : public UnicodeString {
public:
    /// The encoding used when none is named: file names on this platform are UTF-8.
    static const char* const kDefaultEncoding;

    ZkCStr() = default;
    /// `encoding` is an ICU converter name; null means kDefaultEncoding.
    explicit ZkCStr(const UnicodeString& text, const char* encoding = nullptr);
    /// Decodes `bytes` (up to the terminating zero; null is the empty text) from `encoding`.
    /// Bytes that do not decode become U+FFFD.
    ZkCStr(const char* bytes, const char* encoding);
    ZkCStr(const ZkCStr& other);
    ZkCStr& operator=(const ZkCStr& other);
    ZkCStr& operator=(const UnicodeString& text);

    /// The 8-bit form, zero-terminated; characters the encoding cannot hold become its
    /// substitution character. Valid until the next change of this string. Threads may call
    /// it, and length8, on one shared string at the same time.
    const char* c_str() const;
    /// The length of the 8-bit form in bytes.
    int length8() const;
    const std::string& getEncoding() const noexcept { return m_encoding; }

private:
    void refresh() const;

    std::string m_encoding = kDefaultEncoding;
    mutable std::string m_bytes;
    mutable UnicodeString m_bytesFrom;
    mutable bool m_bytesValid = false;
};

/// A ZkCStr whose 8-bit form is UTF-8.
class ZKCOMMON_API ZkUtfStr : public ZkCStr {
public:
    ZkUtfStr() : ZkCStr(UnicodeString(), "UTF-8") {}
    explicit ZkUtfStr(const UnicodeString& text) : ZkCStr(text, "UTF-8") {}
    /// With `xmlEscape`, "&", "<", ">" and the double quote are replaced by their entity
    /// references (in that order) before the bytes are taken.
    ZkUtfStr(const UnicodeString& text, bool xmlEscape);
    /// Decodes UTF-8 bytes; ill-formed sequences become U+FFFD.
    explicit ZkUtfStr(const char* bytes) : ZkCStr(bytes, "UTF-8") {}
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_STRINGS_H
