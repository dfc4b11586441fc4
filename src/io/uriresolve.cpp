// Reference resolution against a base, relative references between URIs, and the "#" repair
// for file names.
#include "io/uriimpl.h"
#include "zkcommon/io/uri.h"

#include <algorithm>

namespace ZkCommonNS {

namespace {

constexpr ZkUri::URISTRTYPE kPathAsIs = static_cast<ZkUri::URISTRTYPE>(5);

// True when [start, start + length) of `text` is exactly `word`.
bool regionEquals(const UnicodeString& text, int32_t start, int32_t length, const char16_t* word) {
    if (start < 0 || length < 0 || start + length > text.length())
        return false;
    int32_t i = 0;
    for (; i < length && word[i]; ++i) {
        if (text.charAt(start + i) != word[i])
            return false;
    }
    return i == length && word[i] == 0;
}

// Appends `chars` to `out` while removing "/./", and each "/../" with the segment before it,
// from the left, in one pass over the segments. Nothing before `floor` in `out` is touched. A
// "/.." with no segment before it (or one that is itself ".." or empty) stays: nothing is
// invented above the root. A first segment without a slash before it ("./a") is left for the
// caller.
void normalizeInto(UnicodeString& out, int32_t floor, const char16_t* chars, int32_t length) {
    auto isDot = [chars](int32_t start, int32_t limit) {
        return limit - start == 1 && chars[start] == u'.';
    };
    auto isDotDot = [chars](int32_t start, int32_t limit) {
        return limit - start == 2 && chars[start] == u'.' && chars[start + 1] == u'.';
    };
    for (int32_t start = 0, index = 0; length > 0; ++index) {
        int32_t limit = start;
        while (limit < length && chars[limit] != u'/')
            ++limit;
        // A final "." or ".." names the directory itself, as if a "/" followed.
        const bool slashAfter =
            limit < length || (index > 0 && (isDot(start, limit) || isDotDot(start, limit)));
        bool keep = true;
        if (index > 0 && slashAfter && isDot(start, limit)) {
            keep = false;
        } else if (index > 0 && slashAfter && isDotDot(start, limit)) {
            int32_t outLength = out.length();
            int32_t previousStart = outLength - 1 > floor
                                        ? out.lastIndexOf(u'/', floor, outLength - 1 - floor) + 1
                                        : floor;
            if (previousStart < floor)
                previousStart = floor;
            int32_t previousLength = outLength - 1 - previousStart;
            bool previousIsDotDot = previousLength == 2 && out.charAt(previousStart) == u'.' &&
                                    out.charAt(previousStart + 1) == u'.';
            if (previousLength > 0 && !previousIsDotDot) {
                out.truncate(previousStart);
                keep = false;
            }
        }
        if (keep) {
            out.append(chars + start, limit - start);
            if (slashAfter)
                out.append(u'/');
        }
        if (limit >= length)
            break;
        start = limit + 1;
    }
}

bool hasAsciiCapital(const UnicodeString& text, int32_t limit) {
    for (int32_t i = 0; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (c >= u'A' && c <= u'Z')
            return true;
    }
    return false;
}

// ASCII lower case for the scheme: schemes are ASCII, and most arrive in lower case already.
void lowerAsciiPrefix(UnicodeString& text, int32_t limit) {
    for (int32_t i = 0; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (c >= u'A' && c <= u'Z')
            text.setCharAt(i, static_cast<char16_t>(c + (u'a' - u'A')));
    }
}

// Where a base (up to `limit`, fragment and query already cut) splits into the part that stays
// (scheme, authority, archive, drive) and the path that the reference is merged into.
// `networkReference` is true for a reference starting with "//", which brings its own
// authority.
struct BaseParts {
    int32_t hostLimit;
    int32_t pathLimit;
    bool rootPath; ///< a base of scheme and authority only: its path is "/"
};

BaseParts locateBase(const UnicodeString& base, int32_t limit, int32_t schemeLimit,
                     bool networkReference) {
    if (schemeLimit < 0)
        return {0, limit, false};
    bool isJar = detail::uriStartsWith(base, 0, "jar:");
    int32_t bang = isJar ? base.lastIndexOf(UnicodeString(u"!/"), 0, limit) : -1;
    if (networkReference && !isJar)
        return {schemeLimit + 1, schemeLimit + 1, false};
    if (bang >= 0)
        return {bang + 1, limit, false};
    if (detail::uriStartsWith(base, 0, "file:///"))
        return {ZkUri::hasDriveLetter(base, 8) && limit >= 10 ? 10 : 7, limit, false};
    if (regionEquals(base, schemeLimit + 1, 2, u"//")) {
        int32_t authorityStart = std::min(schemeLimit + 3, limit);
        int32_t slash = base.indexOf(u'/', authorityStart, limit - authorityStart);
        if (slash < 0)
            return {limit, limit, true};
        return {slash, limit, false};
    }
    return {schemeLimit + 1, limit, false};
}

// The repairs of file references: drive letters in odd places, "file:" before a relative
// path, and the drive of a file base for "file:///path".
void repairFileReference(UnicodeString& reference, const UnicodeString& base) {
    if (!detail::uriStartsWith(reference, 0, "file:"))
        return;
    UnicodeString rest(reference, 5);
    if (rest.startsWith(u"///")) {
        if (!ZkUri::hasDriveLetter(rest, 3) && detail::uriStartsWith(base, 0, "file:///") &&
            ZkUri::hasDriveLetter(base, 8))
            reference = UnicodeString(base, 0, 10) + UnicodeString(reference, 7);
    } else if (rest.startsWith(u"//") && ZkUri::hasDriveLetter(rest, 2)) {
        reference = UnicodeString(u"file:///") + UnicodeString(rest, 2);
    } else if (ZkUri::hasDriveLetter(rest, 0)) {
        reference = UnicodeString(u"file:///") + rest;
    } else if (!rest.isEmpty() && rest.charAt(0) != u'/') {
        reference = rest;
    } else if (rest.startsWith(u"/") && !rest.startsWith(u"//")) {
        reference = UnicodeString(u"file://") + rest;
    }
}

// The end of the part of a directory URI that must be shared for a relative reference to
// exist: scheme and authority, "file:///" with its drive, or the archive of a jar: URI.
int32_t rootLimit(const UnicodeString& text) {
    int32_t schemeLimit = detail::uriSchemeLimit(text);
    if (schemeLimit < 0)
        return text.startsWith(u"/") ? 1 : 0;
    if (detail::uriStartsWith(text, 0, "jar:")) {
        int32_t bang = text.lastIndexOf(u"!/");
        return bang >= 0 ? bang + 2 : text.length();
    }
    if (detail::uriStartsWith(text, 0, "file:///"))
        return ZkUri::hasDriveLetter(text, 8) ? 11 : 8;
    if (regionEquals(text, schemeLimit + 1, 2, u"//")) {
        int32_t slash = text.indexOf(u'/', schemeLimit + 3);
        return slash < 0 ? text.length() : slash + 1;
    }
    return schemeLimit + 1;
}

// Up to and including the last "/" before query and fragment; empty without one.
UnicodeString directoryOf(const UnicodeString& text) {
    UnicodeString path = detail::uriWithoutQueryAndFragment(text);
    int32_t slash = path.lastIndexOf(u'/');
    return slash < 0 ? UnicodeString() : UnicodeString(path, 0, slash + 1);
}

int hexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if ((c | 0x20) >= u'a' && (c | 0x20) <= u'f')
        return (c | 0x20) - u'a' + 10;
    return -1;
}

bool isUnreserved(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

} // namespace

void detail::decodeUnreservedEscapes(UnicodeString& text) {
    int32_t percent = text.indexOf(u'%');
    if (percent < 0)
        return;
    UnicodeString out;
    out.append(text, 0, percent);
    const int32_t length = text.length();
    for (int32_t i = percent; i < length;) {
        const char16_t c = text.charAt(i);
        if (c == u'%' && i + 2 < length) {
            const int high = hexDigit(text.charAt(i + 1));
            const int low = hexDigit(text.charAt(i + 2));
            if (high >= 0 && low >= 0 && isUnreserved(high * 16 + low)) {
                out.append(static_cast<char16_t>(high * 16 + low));
                i += 3;
                continue;
            }
        }
        out.append(c);
        ++i;
    }
    text = out;
}

UnicodeString detail::normalizeUriPath(const UnicodeString& uri) {
    const int32_t limit = uriWithoutQueryAndFragment(uri).length();
    int32_t schemeLimit = uriSchemeLimit(uri);
    if (schemeLimit >= limit)
        schemeLimit = -1;
    const BaseParts parts = locateBase(uri, limit, schemeLimit, /*networkReference=*/false);
    if (parts.rootPath)
        return uri;
    UnicodeString path(uri, parts.hostLimit, limit - parts.hostLimit);
    decodeUnreservedEscapes(path);
    UnicodeString result(uri, 0, parts.hostLimit);
    normalizeInto(result, result.length(), path.getBuffer(), path.length());
    return result.append(uri, limit, uri.length() - limit);
}

UnicodeString detail::resolveUriReference(const UnicodeString& base,
                                          const UnicodeString& referenceText,
                                          ZkUri::URISTRTYPE type) {
    UnicodeString reference(referenceText);
    reference.trim();
    if (reference.isEmpty())
        return base;
    if (uriStartsWith(reference, 0, "jar:"))
        return UnicodeString(u"jar:") +
               resolveUriReference(base, UnicodeString(reference, 4), type);

    UnicodeString fragment;
    if (type != ZkUri::URISTR_URI_ASIS && type != kPathAsIs) {
        int32_t sharp = reference.indexOf(u'#');
        if (sharp >= 0) {
            fragment = UnicodeString(reference, sharp);
            reference.truncate(sharp);
            if (reference.isEmpty())
                return fragment;
        }
    }

    switch (static_cast<int>(type)) {
    case ZkUri::URISTR_URI:
    case ZkUri::URISTR_URI_ASIS:
        if (!ZkUri::isValidUri(reference))
            reference = ZkUri::escape(reference);
        break;
    case ZkUri::URISTR_FILEPATH_OR_URI:
    case static_cast<int>(kPathAsIs):
        if (uriSchemeLimit(reference) >= 0)
            break;
        [[fallthrough]];
    default:
        ZkUri::backslash2slash(reference);
        reference = fileUriFromPath(reference, type == kPathAsIs);
        // The "#" of an existing file's name is data once the name joins a base.
        if (type == kPathAsIs && uriSchemeLimit(reference) < 0)
            reference.findAndReplace(u"#", u"%23");
        break;
    }

    repairFileReference(reference, base);
    if (uriSchemeLimit(reference) >= 0)
        return reference + fragment;

    // The base is read in place; only a scheme with capitals is copied to be folded.
    UnicodeString folded;
    const UnicodeString* basePointer = &base;
    int32_t schemeLimit = uriSchemeLimit(base);
    if (schemeLimit > 0 && hasAsciiCapital(base, schemeLimit)) {
        folded = base;
        lowerAsciiPrefix(folded, schemeLimit);
        basePointer = &folded;
    }
    const UnicodeString& work = *basePointer;
    int32_t limit = work.indexOf(u'#');
    if (limit < 0)
        limit = work.length();
    // The base's query names no part of a directory.
    int32_t baseQuery = work.indexOf(u'?', 0, limit);
    if (baseQuery >= 0)
        limit = baseQuery;
    if (schemeLimit >= limit)
        schemeLimit = -1;

    const bool networkReference =
        reference.length() >= 2 && reference.charAt(0) == u'/' && reference.charAt(1) == u'/';
    BaseParts parts = locateBase(work, limit, schemeLimit, networkReference);

    // The reference's own query and authority.
    int32_t referenceQuery = reference.indexOf(u'?');
    int32_t referencePathLimit = referenceQuery < 0 ? reference.length() : referenceQuery;
    int32_t referencePathStart = 0;
    if (networkReference) {
        int32_t slash = reference.indexOf(u'/', 2, referencePathLimit - 2);
        referencePathStart = slash < 0 ? referencePathLimit : slash;
    }

    UnicodeString merged;
    if (networkReference || (referencePathLimit > 0 && reference.charAt(0) == u'/')) {
        merged.setTo(reference, referencePathStart, referencePathLimit - referencePathStart);
    } else {
        // A plain file name as base ("a.xml") is a file in the current directory. A base with
        // a scheme keeps it: "urn:a" is no relative path.
        const bool dotPrefix = schemeLimit < 0 && work.indexOf(u'/', 0, limit) < 0;
        if (dotPrefix)
            merged.append(u"./", 2);
        if (parts.rootPath) {
            merged.append(u'/');
        } else {
            int32_t pathLength = parts.pathLimit - parts.hostLimit;
            int32_t directoryLimit = parts.pathLimit;
            bool addSlash = false;
            // A base ending in "/." or "/.." names a directory: the reference goes inside it.
            if ((pathLength >= 2 && work.charAt(directoryLimit - 1) == u'.' &&
                 work.charAt(directoryLimit - 2) == u'/') ||
                (pathLength >= 3 && work.charAt(directoryLimit - 1) == u'.' &&
                 work.charAt(directoryLimit - 2) == u'.' &&
                 work.charAt(directoryLimit - 3) == u'/')) {
                addSlash = true;
            } else {
                int32_t slash = work.lastIndexOf(u'/', parts.hostLimit, pathLength);
                directoryLimit = slash < 0 ? parts.hostLimit : slash + 1;
            }
            merged.append(work, parts.hostLimit, directoryLimit - parts.hostLimit);
            if (addSlash)
                merged.append(u'/');
        }
        merged.append(reference, 0, referencePathLimit);
    }

    // An escaped dot is a dot: "%2E%2E/" must not pass dot-segment removal and climb out of
    // the base later, when the local path decodes it.
    decodeUnreservedEscapes(merged);
    UnicodeString result;
    result.getBuffer(parts.hostLimit + referencePathStart + merged.length() +
                     (reference.length() - referencePathLimit) + fragment.length());
    result.releaseBuffer(0);
    result.append(work, 0, parts.hostLimit);
    if (networkReference) {
        // The reference's authority replaces the base's: it joins the part that stays.
        result.append(reference, 0, referencePathStart);
    }
    // Only the path is normalised: a query keeps its dots.
    normalizeInto(result, result.length(), merged.getBuffer(), merged.length());
    // The query stays, for file URIs too: nothing of the reference is lost, and a local path
    // leaves it out.
    if (referenceQuery >= 0)
        result.append(reference, referenceQuery, reference.length() - referenceQuery);
    if (result.length() >= 2 && result.charAt(0) == u'.' && result.charAt(1) == u'/')
        result.remove(0, 2);
    return result.append(fragment);
}

UnicodeString ZkUri::getRelativeUri(const UnicodeString& base) const {
    if (m_uri.isEmpty() && base.isEmpty())
        return UnicodeString();
    UnicodeString baseDirectory = directoryOf(base);
    const int32_t root = rootLimit(baseDirectory);
    UnicodeString prefix;
    while (!m_uri.startsWith(baseDirectory)) {
        int32_t length = baseDirectory.length();
        if (length <= root || length == 0)
            return UnicodeString();
        int32_t slash = baseDirectory.lastIndexOf(u'/', 0, length - 1);
        if (slash + 1 < root)
            return UnicodeString();
        // A ".." segment cannot be undone by another "..".
        if (regionEquals(baseDirectory, slash + 1, length - 1 - (slash + 1), u".."))
            return UnicodeString();
        baseDirectory.truncate(slash + 1);
        prefix.append(u"../");
    }
    return prefix + UnicodeString(m_uri, baseDirectory.length());
}

bool ZkUri::isDescendantOrSelf(const ZkUri& other) const {
    if (m_uri.isEmpty() || other.m_uri.isEmpty())
        return false;
    // Both in normal form: an escaped or literal ".." inside either must count as a climb.
    ZkUri self(*this);
    self.m_uri = detail::normalizeUriPath(m_uri);
    UnicodeString base = detail::normalizeUriPath(other.m_uri);
    if (isFileScheme() && other.isFileScheme()) {
        self.m_uri.toLower(Locale::getRoot());
        base.toLower(Locale::getRoot());
    }
    if (self.m_uri == base)
        return true;
    UnicodeString relative = self.getRelativeUri(base);
    // A climb is a ".." segment; "..x" or "..%2Fx" is a name inside.
    return !relative.isEmpty() && relative != UnicodeString(u"..") && !relative.startsWith(u"../");
}

UnicodeString ZkUri::escapeSharpIfExist(const UnicodeString& text, bool exists) {
    if (text.indexOf(u'#') < 0)
        return text;
    return escapeSharpIfExist(ZkUri(), text, exists);
}

UnicodeString ZkUri::escapeSharpIfExist(const ZkUri& base, const UnicodeString& text, bool exists) {
    if (text.indexOf(u'#') < 0)
        return text;
    ZkUri resolved(base, text);
    if (!resolved.isFileScheme())
        return text;
    int32_t sharp = resolved.m_uri.indexOf(u'#');
    if (sharp < 0)
        return text;
    UnicodeString escaped(resolved.m_uri, 0, sharp);
    UnicodeString rest(resolved.m_uri, sharp);
    rest.findAndReplace(u"#", u"%23");
    escaped.append(rest);
    if (exists || ZkUri(escaped, URISTR_URI_ASIS).isFileExists())
        return escaped;
    return text;
}

} // namespace ZkCommonNS
