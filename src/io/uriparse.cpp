// ZkUri construction: type resolution, scheme and drive detection, path repair, escaping and
// the accessors that take the string apart.
#include "io/platform.h"
#include "io/uriimpl.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/text/util.h"

#include <atomic>
#include <string>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace ZkCommonNS {

namespace {

// Internal type: a path read "as it stands" (no fragment split). Automatic typing gives it to
// UNC paths and to names of existing files, whose "#" is part of the name.
constexpr ZkUri::URISTRTYPE kPathAsIs = static_cast<ZkUri::URISTRTYPE>(5);

bool isAsciiAlpha(char16_t c) noexcept {
    return (c | 0x20) >= u'a' && (c | 0x20) <= u'z';
}
bool isAsciiDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
}

int hexValue(char16_t c) noexcept {
    if (isAsciiDigit(c))
        return c - u'0';
    if ((c | 0x20) >= u'a' && (c | 0x20) <= u'f')
        return (c | 0x20) - u'a' + 10;
    return -1;
}

const char16_t kHexDigits[] = u"0123456789ABCDEF";

void appendEscaped(UnicodeString& out, UChar32 c) {
    out.append(u'%');
    out.append(kHexDigits[(c >> 4) & 0xF]);
    out.append(kHexDigits[c & 0xF]);
}

// The end of the part of a URI that names the resource: the first "?" or "#".
int32_t pathLimit(const UnicodeString& text) noexcept {
    int32_t limit = text.length();
    for (int32_t i = 0; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (c == u'?' || c == u'#')
            return i;
    }
    return limit;
}

// The start of the last path segment within [0, limit).
int32_t fileNameStart(const UnicodeString& text, int32_t limit) noexcept {
    int32_t slash = text.lastIndexOf(u'/', 0, limit);
    if (slash >= 0)
        return slash + 1;
    int32_t colon = detail::uriSchemeLimit(text);
    return colon >= 0 && colon < limit ? colon + 1 : 0;
}

// The start of the extension's dot in [start, limit), or -1. A leading dot is part of the name.
int32_t extensionStart(const UnicodeString& text, int32_t start, int32_t limit) noexcept {
    int32_t dot = text.lastIndexOf(u'.', start, limit - start);
    return dot > start ? dot : -1;
}

bool equalsIgnoreCase(const UnicodeString& text, const char16_t* word) {
    return text.caseCompare(UnicodeString(word), U_FOLD_CASE_DEFAULT) == 0;
}

std::atomic<detail::CatalogUriResolver> s_catalogResolver{nullptr};

} // namespace

// ---------------------------------------------------------------------------------------------
// Internal helpers

int32_t detail::uriSchemeLimit(const UnicodeString& text) noexcept {
    int32_t length = text.length();
    const char16_t* chars = text.getBuffer();
    if (length < 3 || !chars || !isAsciiAlpha(chars[0]))
        return -1;
    for (int32_t i = 1; i < length; ++i) {
        char16_t c = chars[i];
        if (c == u':')
            return i >= 2 ? i : -1;
        if (!isAsciiAlpha(c) && !isAsciiDigit(c) && c != u'+' && c != u'-' && c != u'.')
            return -1;
    }
    return -1;
}

bool detail::uriStartsWith(const UnicodeString& text, int32_t start, const char* prefix) noexcept {
    int32_t length = text.length();
    const char16_t* chars = text.getBuffer();
    if (!chars)
        return false;
    for (int32_t i = 0; prefix[i]; ++i) {
        if (start + i >= length)
            return false;
        char16_t c = chars[start + i];
        char16_t p = static_cast<char16_t>(prefix[i]);
        if (c != p && !(isAsciiAlpha(p) && (c | 0x20) == (p | 0x20)))
            return false;
    }
    return true;
}

UnicodeString detail::fileUriFromPath(const UnicodeString& path, bool escapeSharp) {
    if (ZkUri::hasDriveLetter(path, 0)) {
        // A "?" cannot occur in a drive path: what follows it is a query added by the caller.
        int32_t query = path.indexOf(u'?');
        UnicodeString rest = query >= 0 ? UnicodeString(path, 0, query) : path;
        return UnicodeString(u"file:///") + ZkUri::escape(rest, escapeSharp);
    }
    if (path.startsWith(u"//"))
        return UnicodeString(u"file:") + ZkUri::escape(path, escapeSharp);
    if (path.startsWith(u"/")) {
        // A POSIX file name may hold "?": it is data here, never a query. A fragment after "#"
        // is no part of the name and keeps its "?".
        UnicodeString escaped = ZkUri::escape(path, escapeSharp);
        int32_t sharp = escaped.indexOf(u'#');
        if (sharp < 0)
            sharp = escaped.length();
        UnicodeString name(escaped, 0, sharp);
        name.findAndReplace(u"?", u"%3F");
        return UnicodeString(u"file://") + name + UnicodeString(escaped, sharp);
    }
    return path;
}

ZkUri::URISTRTYPE detail::resolveUriType(UnicodeString& text, ZkUri::URISTRTYPE type) {
    if (type == ZkUri::URISTR_AUTO) {
        if (text.startsWith(u"\\\\") || platform::pathExists(text)) {
            type = kPathAsIs;
        } else {
            type = ZkUri::URISTR_URI;
            if (ZkUri::hasDriveLetter(text, 0) || text.indexOf(u'\\') >= 0)
                type = ZkUri::URISTR_FILEPATH;
        }
    } else if (type < ZkUri::URISTR_URI || type > ZkUri::URISTR_AUTO) {
        type = ZkUri::URISTR_URI;
    }
    if (type == ZkUri::URISTR_FILEPATH || type == ZkUri::URISTR_FILEPATH_OR_URI ||
        type == kPathAsIs) {
        // A CSS url(x) wrapper is unwrapped, and a CSS gradient survives as a URI.
        int32_t length = text.length();
        int32_t paren = text.indexOf(u'(');
        if (length > 0 && text.charAt(length - 1) == u')' && paren > 0) {
            UnicodeString name(text, 0, paren);
            name.trim();
            if (equalsIgnoreCase(name, u"url") && paren + 1 <= length - 1) {
                UnicodeString inner(text, paren + 1, length - 1 - (paren + 1));
                inner.trim();
                int32_t innerLength = inner.length();
                if (innerLength >= 2 && (inner.charAt(0) == u'"' || inner.charAt(0) == u'\'') &&
                    inner.charAt(innerLength - 1) == inner.charAt(0))
                    inner = UnicodeString(inner, 1, innerLength - 2);
                text = inner;
            } else if (equalsIgnoreCase(name, u"linear-gradient") ||
                       equalsIgnoreCase(name, u"radial-gradient") ||
                       equalsIgnoreCase(name, u"repeating-linear-gradient") ||
                       equalsIgnoreCase(name, u"repeating-radial-gradient")) {
                type = ZkUri::URISTR_URI_ASIS;
            }
        }
    }
    return type;
}

UnicodeString ZkUtil::unquoteUri(const UnicodeString& text) {
    // The unwrapping that a path-typed ZkUri applies to a CSS url(...) wrapper.
    UnicodeString content(text);
    content.trim();
    detail::resolveUriType(content, ZkUri::URISTR_FILEPATH_OR_URI);
    return content;
}

UnicodeString detail::uriWithoutQueryAndFragment(const UnicodeString& text) {
    return UnicodeString(text, 0, pathLimit(text));
}

void detail::setCatalogUriResolver(CatalogUriResolver resolver) {
    s_catalogResolver.store(resolver);
}

UnicodeString detail::resolveThroughCatalogs(const ZkXmlCatalogs* catalogs,
                                             const UnicodeString& uri) {
    CatalogUriResolver resolver = s_catalogResolver.load();
    if (!catalogs || !resolver)
        return uri;
    UnicodeString mapped = resolver(catalogs, uri);
    return mapped.isEmpty() ? uri : mapped;
}

// ---------------------------------------------------------------------------------------------
// Construction

ZkUriReferenceResolver2::~ZkUriReferenceResolver2() = default;

ZkUri::ZkUri() = default;

ZkUri::ZkUri(const UnicodeString& text, const ZkXmlCatalogs* catalogs) {
    construct(nullptr, text, URISTR_AUTO, catalogs);
}

ZkUri::ZkUri(const UnicodeString& text, URISTRTYPE type, const ZkXmlCatalogs* catalogs) {
    construct(nullptr, text, type, catalogs);
}

ZkUri::ZkUri(const ZkUri& base, const UnicodeString& text, const ZkXmlCatalogs* catalogs) {
    construct(&base, text, URISTR_AUTO, catalogs);
}

ZkUri::ZkUri(const ZkUri& base, const UnicodeString& text, URISTRTYPE type,
             const ZkXmlCatalogs* catalogs) {
    construct(&base, text, type, catalogs);
}

ZkUri::~ZkUri() = default;

void ZkUri::construct(const ZkUri* base, const UnicodeString& text, URISTRTYPE type,
                      const ZkXmlCatalogs* catalogs) {
    UnicodeString source = catalogs ? detail::resolveThroughCatalogs(catalogs, text) : text;
    // White space around is never part of a URI or path: " /a.xml" is read as "/a.xml" is,
    // as " C:\a.xml" is read as a drive path.
    source.trim();
    const bool hasBase = base && !base->m_uri.isEmpty();
    // A POSIX absolute path is what a drive path is on Windows. Against a base it is an
    // absolute-path reference instead, read like any other reference: it keeps the base's host
    // ("file://host/...") and its "?" starts a query as it does in "x?q".
    const bool posixPath =
        type == URISTR_AUTO && source.startsWith(u"/") && !source.startsWith(u"//") && !hasBase;
    if (hasBase && type == URISTR_AUTO && source.startsWith(u"/") && !source.startsWith(u"//"))
        type = URISTR_URI; // whether such a file exists here says nothing about the base's host
    type = detail::resolveUriType(source, type);
    if (posixPath && type == URISTR_URI)
        type = URISTR_FILEPATH;
    if (hasBase) {
        m_uri = detail::resolveUriReference(base->m_uri, source, type);
        return;
    }
    source.trim();
    if (source.isEmpty()) {
        m_uri.remove();
        return;
    }
    switch (static_cast<int>(type)) {
    case URISTR_URI:
    case URISTR_URI_ASIS:
        m_uri = isValidUri(source) ? source : escape(source);
        return;
    case URISTR_FILEPATH_OR_URI:
    case static_cast<int>(kPathAsIs):
        if (detail::uriSchemeLimit(source) >= 0) {
            m_uri = source;
            return;
        }
        [[fallthrough]];
    case URISTR_FILEPATH:
        backslash2slash(source);
        m_uri = detail::fileUriFromPath(source, type == kPathAsIs);
        return;
    default:
        m_uri = source;
        return;
    }
}

// ---------------------------------------------------------------------------------------------
// Schemes

bool ZkUri::isDataScheme() const {
    return detail::uriStartsWith(m_uri, 0, "data:");
}
bool ZkUri::isFileScheme() const {
    return detail::uriStartsWith(m_uri, 0, "file:");
}
bool ZkUri::isHttpScheme() const {
    return detail::uriStartsWith(m_uri, 0, "http:") || detail::uriStartsWith(m_uri, 0, "https:");
}
bool ZkUri::isJarScheme() const {
    return detail::uriStartsWith(m_uri, 0, "jar:");
}

ZkName ZkUri::getScheme() const {
    int32_t limit = detail::uriSchemeLimit(m_uri);
    if (limit < 0)
        return ZkName();
    UnicodeString scheme(m_uri, 0, limit);
    scheme.toLower(Locale::getRoot());
    return ZkName(scheme);
}

bool ZkUri::isAbsolute() const {
    return detail::uriSchemeLimit(m_uri) >= 0;
}

bool ZkUri::isFile() const {
    return isFileScheme() || detail::uriSchemeLimit(m_uri) < 0;
}

// ---------------------------------------------------------------------------------------------
// Pieces

UnicodeString ZkUri::getBaseString() const {
    int32_t slash = m_uri.lastIndexOf(u'/', 0, pathLimit(m_uri));
    return slash < 0 ? UnicodeString() : UnicodeString(m_uri, 0, slash + 1);
}

UnicodeString ZkUri::getFileName() const {
    int32_t limit = pathLimit(m_uri);
    int32_t start = fileNameStart(m_uri, limit);
    return UnicodeString(m_uri, start, limit - start);
}

UnicodeString ZkUri::getExtension() const {
    int32_t limit = pathLimit(m_uri);
    int32_t dot = extensionStart(m_uri, fileNameStart(m_uri, limit), limit);
    return dot < 0 ? UnicodeString() : UnicodeString(m_uri, dot, limit - dot);
}

void ZkUri::setExtension(const UnicodeString* extension) {
    int32_t limit = pathLimit(m_uri);
    int32_t dot = extensionStart(m_uri, fileNameStart(m_uri, limit), limit);
    UnicodeString replacement;
    if (extension && !extension->isEmpty()) {
        if (extension->charAt(0) != u'.')
            replacement.append(u'.');
        replacement.append(*extension);
    }
    if (dot < 0)
        m_uri.insert(limit, replacement);
    else
        m_uri.replace(dot, limit - dot, replacement);
}

void ZkUri::addFileNameSuffix(int number, const UnicodeString& suffix) {
    int32_t limit = pathLimit(m_uri);
    int32_t dot = extensionStart(m_uri, fileNameStart(m_uri, limit), limit);
    UnicodeString insertion(suffix);
    if (number >= 0)
        insertion.append(UnicodeString::fromUTF8(std::to_string(number)));
    m_uri.insert(dot < 0 ? limit : dot, insertion);
}

UnicodeString ZkUri::removeFragment(bool returnFragment) {
    int32_t sharp = m_uri.indexOf(u'#');
    UnicodeString fragment;
    if (sharp >= 0) {
        fragment = UnicodeString(m_uri, sharp + 1);
        m_uri.truncate(sharp);
    }
    return returnFragment ? fragment : m_uri;
}

// ---------------------------------------------------------------------------------------------
// Characters and escaping

namespace {

// The ASCII characters a URI may hold as they are; everything from U+00A0 up is valid too.
constexpr bool isValidAscii(unsigned c) noexcept {
    if (c < 0x21 || c > 0x7E)
        return false;
    switch (c) {
    case '"':
    case '<':
    case '>':
    case '\\':
    case '^':
    case '`':
    case '{':
    case '|':
    case '}':
        return false;
    default:
        return true;
    }
}

struct ValidAsciiTable {
    bool valid[128];
    constexpr ValidAsciiTable() : valid() {
        for (unsigned c = 0; c < 128; ++c)
            valid[c] = isValidAscii(c);
    }
};

constexpr ValidAsciiTable kValidAscii;

} // namespace

bool ZkUri::isValidUriChar(UChar32 c) noexcept {
    if (c >= 0xA0)
        return true;
    return c >= 0 && c < 128 && kValidAscii.valid[c];
}

bool ZkUri::isValidUri(const UnicodeString& text) {
    if (detail::uriSchemeLimit(text) >= 0)
        return true;
    // Code units suffice: every unit of a supplementary character is above U+00A0.
    const char16_t* chars = text.getBuffer();
    int32_t length = text.length();
    for (int32_t i = 0; i < length; ++i) {
        char16_t c = chars[i];
        if (c >= 0xA0)
            continue;
        if (c >= 128 || !kValidAscii.valid[c])
            return false;
        if (c == u'%' &&
            (i + 2 >= length || hexValue(chars[i + 1]) < 0 || hexValue(chars[i + 2]) < 0))
            return false;
    }
    return true;
}

UnicodeString ZkUri::escape(const UnicodeString& text, bool escapeSharp) {
    UnicodeString out;
    int32_t length = text.length();
    out.getBuffer(length + 16);
    out.releaseBuffer(0);
    for (int32_t i = 0; i < length;) {
        UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        if (c == u'%' || !isValidUriChar(c) || (escapeSharp && c == u'#'))
            appendEscaped(out, c);
        else
            out.append(c);
    }
    return out;
}

UnicodeString ZkUri::unescape(const UnicodeString& text) {
    if (text.indexOf(u'%') < 0)
        return text;
    const int32_t length = text.length();
    auto isEscapeAt = [&text, length](int32_t i) {
        return i + 2 < length && text.charAt(i) == u'%' && hexValue(text.charAt(i + 1)) >= 0 &&
               hexValue(text.charAt(i + 2)) >= 0;
    };
    UnicodeString out;
    std::string bytes;
    for (int32_t i = 0; i < length;) {
        if (!isEscapeAt(i)) {
            out.append(text.charAt(i));
            ++i;
            continue;
        }
        // A run of escaped bytes decodes as UTF-8 together, so that a character spread over
        // several "%XX" comes back whole.
        int32_t runStart = i;
        bytes.clear();
        while (isEscapeAt(i)) {
            bytes.push_back(static_cast<char>(hexValue(text.charAt(i + 1)) * 16 +
                                              hexValue(text.charAt(i + 2))));
            i += 3;
        }
        int32_t byteLength = static_cast<int32_t>(bytes.size());
        const uint8_t* data = reinterpret_cast<const uint8_t*>(bytes.data());
        for (int32_t b = 0; b < byteLength;) {
            int32_t start = b;
            UChar32 c;
            U8_NEXT(data, b, byteLength, c);
            if (c < 0) {
                // Not UTF-8: the escapes stay as they were written.
                for (int32_t k = start; k < b; ++k)
                    out.append(text, runStart + k * 3, 3);
            } else {
                out.append(c);
            }
        }
    }
    return out;
}

bool ZkUri::hasDriveLetter(const UnicodeString& text, int pos) noexcept {
    return pos >= 0 && pos + 2 <= text.length() && isAsciiAlpha(text.charAt(pos)) &&
           text.charAt(pos + 1) == u':';
}

void ZkUri::backslash2slash(UnicodeString& text) {
    text.findAndReplace(u"\\", u"/");
}

void ZkUri::slash2backslash(UnicodeString& text) {
    text.findAndReplace(u"/", u"\\");
}

void ZkUri::toDirectory(UnicodeString& path, bool backslash) {
    int32_t length = path.length();
    if (length == 0)
        return;
    char16_t last = path.charAt(length - 1);
    if (last != u'/' && last != u'\\')
        path.append(backslash ? u'\\' : u'/');
}

} // namespace ZkCommonNS
