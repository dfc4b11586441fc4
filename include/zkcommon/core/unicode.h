// The few ICU names the library uses, brought into ZkCommonNS.
#ifndef ZKCOMMON_CORE_UNICODE_H
#define ZKCOMMON_CORE_UNICODE_H

#include <cstddef>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

namespace ZkCommonNS {
using icu::Locale;
using icu::UnicodeString;

/// Hashes a string by its own hashCode, for the library's hash maps keyed by text.
struct ZkString_hash {
    std::size_t operator()(const UnicodeString& text) const noexcept {
        return static_cast<std::size_t>(text.hashCode());
    }
};
} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_UNICODE_H
