// Encoding names: the alias table behind ZkUtil::getCanonicalEncoding and the spellings that
// getStandardEncoding writes into documents.
#include "text/utilcleanup.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/text/util.h"

#include <memory>
#include <string>
#include <unicode/ucnv.h>
#include <unordered_map>

namespace ZkCommonNS {

namespace {

struct Alias {
    const char* name; // upper case, as looked up
    const char* canonical;
};

// The stream layer switches on the canonical spelling; the mixed-case ones ("KoreanKSC",
// "ChineseGBK") are historical and must not be "corrected".
const Alias kAliases[] = {
    {"UTF-8", "UTF-8"},
    {"UNICODE", "ISO-10646-UCS-2"},
    {"UTF-16", "ISO-10646-UCS-2"},
    {"ISO-10646-UCS-2", "ISO-10646-UCS-2"},
    {"UCS-2", "ISO-10646-UCS-2"},
    {"UTF-16BE", "UTF-16BE"},
    {"UTF-16LE", "UTF-16LE"},
    {"UTF-32", "ISO-10646-UCS-4"},
    {"ISO-10646-UCS-4", "ISO-10646-UCS-4"},
    {"UCS-4", "ISO-10646-UCS-4"},
    {"US-ASCII", "US-ASCII"},
    {"ASCII", "US-ASCII"},
    {"ISO646-US", "US-ASCII"},
    {"ISO_646.IRV", "US-ASCII"},
    {"ISO_646.IRV:1991", "US-ASCII"},
    {"ANSI_X3.4", "US-ASCII"},
    {"ANSI_X3.4:1968", "US-ASCII"},
    {"ANSI_X3.4:1986", "US-ASCII"},
    {"ISO-8859-1", "ISO-8859-1"},
    {"ISO-8859-1:1987", "ISO-8859-1"},
    {"LATIN1", "ISO-8859-1"},
    {"ISO-8859-2", "ISO-8859-2"},
    {"ISO_8859-2", "ISO-8859-2"},
    {"ISO_8859-2:1987", "ISO-8859-2"},
    {"LATIN2", "ISO-8859-2"},
    {"ISO-8859-3", "ISO-8859-3"},
    {"ISO_8859-3", "ISO-8859-3"},
    {"ISO_8859-3:1988", "ISO-8859-3"},
    {"LATIN3", "ISO-8859-3"},
    {"ISO-8859-4", "ISO-8859-4"},
    {"ISO_8859-4", "ISO-8859-4"},
    {"ISO_8859-4:1988", "ISO-8859-4"},
    {"LATIN4", "ISO-8859-4"},
    {"ISO-8859-5", "ISO-8859-5"},
    {"ISO_8859-5", "ISO-8859-5"},
    {"ISO_8859-5:1988", "ISO-8859-5"},
    {"CYRILLIC", "ISO-8859-5"},
    {"ISO-8859-6", "ISO-8859-6"},
    {"ISO_8859-6", "ISO-8859-6"},
    {"ISO_8859-6:1987", "ISO-8859-6"},
    {"ARABIC", "ISO-8859-6"},
    {"ISO-8859-7", "ISO-8859-7"},
    {"ISO_8859-7", "ISO-8859-7"},
    {"ISO_8859-7:1987", "ISO-8859-7"},
    {"GREEK", "ISO-8859-7"},
    {"ISO-8859-8", "ISO-8859-8"},
    {"ISO_8859-8", "ISO-8859-8"},
    {"ISO_8859-8:1988", "ISO-8859-8"},
    {"HEBREW", "ISO-8859-8"},
    {"ISO-8859-9", "ISO-8859-9"},
    {"ISO_8859-9", "ISO-8859-9"},
    {"ISO_8859-9:1989", "ISO-8859-9"},
    {"LATIN5", "ISO-8859-9"},
    {"ISO-8859-10", "ISO-8859-10"},
    {"ISO_8859-10:1992", "ISO-8859-10"},
    {"LATIN6", "ISO-8859-10"},
    {"ISO-8859-11", "ISO-8859-11"},
    {"ISO-8859-13", "ISO-8859-13"},
    {"ISO-8859-14", "ISO-8859-14"},
    {"ISO_8859-14", "ISO-8859-14"},
    {"ISO_8859-14:1998", "ISO-8859-14"},
    {"LATIN8", "ISO-8859-14"},
    {"ISO-8859-15", "ISO-8859-15"},
    {"ISO_8859-15", "ISO-8859-15"},
    {"LATIN-9", "ISO-8859-15"},
    {"ISO-8859-16", "ISO-8859-16"},
    {"ISO_8859-16", "ISO-8859-16"},
    {"ISO_8859-16:2001", "ISO-8859-16"},
    {"LATIN10", "ISO-8859-16"},
    {"SHIFT_JIS", "WINDOWS31J"},
    {"WINDOWS31J", "WINDOWS31J"},
    {"EUC-JP", "EUC-JP"},
    {"ISO-2022-JP", "ISO-2022-JP"},
    {"KS_C_5601-1987", "KoreanKSC"},
    {"KOREAN", "KoreanKSC"},
    {"KOREANKSC", "KoreanKSC"},
    {"ISO-IR-149", "KoreanKSC"},
    {"GBK", "ChineseGBK"},
    {"CHINESEGBK", "ChineseGBK"},
    {"GB2312", "ChineseGBK"},
    {"BIG5", "ChineseBIG5"},
    {"CHINESEBIG5", "ChineseBIG5"},
};

// Names written into documents where the alias table's own spelling is not the registered one.
const Alias kStandardSpellings[] = {
    {"ANSI_X3.4", "ANSI_X3.4-1968"},     {"CHINESEBIG5", "BIG5"},         {"CHINESEGBK", "GBK"},
    {"ISO_646.IRV", "ISO_646.IRV:1991"}, {"KOREANKSC", "KS_C_5601-1987"},
};

using AliasMap = std::unordered_map<std::u16string, UnicodeString>;

// Built on first use and dropped by ZkUtil::cleanup; a later call builds it again.
ZkLock s_aliasLock;
std::unique_ptr<AliasMap> s_aliases;

void dropAliases() {
    ZkMutex guard(s_aliasLock);
    s_aliases.reset();
}

const bool s_registered = (detail::registerUtilCleanup(&dropAliases), true);

std::u16string toKey(const UnicodeString& text) {
    return std::u16string(text.getBuffer(), static_cast<size_t>(text.length()));
}

// Trims and upper-cases ASCII letters only: encoding names are ASCII, and a locale-dependent
// upper-casing (dotted I) must not change them.
UnicodeString foldName(const UnicodeString& name) {
    UnicodeString folded(name);
    folded.trim();
    for (int32_t i = 0, length = folded.length(); i < length; ++i) {
        char16_t c = folded.charAt(i);
        if (c >= u'a' && c <= u'z')
            folded.setCharAt(i, static_cast<char16_t>(c - (u'a' - u'A')));
    }
    return folded;
}

} // namespace

UnicodeString ZkUtil::getCanonicalEncoding(const UnicodeString& name) {
    (void)s_registered;
    if (name.isEmpty())
        return name;
    std::u16string key = toKey(foldName(name));
    ZkMutex guard(s_aliasLock);
    if (!s_aliases) {
        auto map = std::make_unique<AliasMap>();
        map->reserve(sizeof(kAliases) / sizeof(kAliases[0]));
        for (const Alias& alias : kAliases)
            map->emplace(toKey(UnicodeString(alias.name, -1, US_INV)),
                         UnicodeString(alias.canonical, -1, US_INV));
        s_aliases = std::move(map);
    }
    auto found = s_aliases->find(key);
    return found == s_aliases->end() ? name : found->second;
}

UnicodeString ZkUtil::getStandardEncoding(const UnicodeString& name) {
    UnicodeString folded = foldName(name);
    if (folded.isEmpty())
        return UnicodeString(u"UTF-8");
    for (const Alias& spelling : kStandardSpellings) {
        if (folded == UnicodeString(spelling.name, -1, US_INV))
            return UnicodeString(spelling.canonical, -1, US_INV);
    }
    std::string narrow;
    folded.toUTF8String(narrow);
    if (narrow.find('\0') == std::string::npos) {
        UErrorCode status = U_ZERO_ERROR;
        // The MIME spelling is the one documents carry ("ISO-8859-1", not "ISO_8859-1:1987").
        const char* standard = ucnv_getStandardName(narrow.c_str(), "MIME", &status);
        if (U_FAILURE(status) || !standard) {
            status = U_ZERO_ERROR;
            standard = ucnv_getStandardName(narrow.c_str(), "IANA", &status);
        }
        if (U_SUCCESS(status) && standard && *standard)
            return UnicodeString(standard, -1, US_INV);
    }
    return folded;
}

} // namespace ZkCommonNS
