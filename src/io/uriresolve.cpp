// Reference resolution against a base, relative references between URIs, and the "#" repair
// for file names.
#include "io/uriimpl.h"
#include "zkcommon/io/uri.h"

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

// Removes "/./", and each "/../" with the segment before it, from the left, in one pass over
// the segments. A "/.." with no segment before it (or one that is itself ".." or empty) stays:
// nothing is invented above the root. A first segment without a slash before it ("./a") is
// left for the caller.
void normalizePath(UnicodeString& path) {
    int32_t length = path.length();
    if (length == 0)
        return;
    const char16_t* chars = path.getBuffer();
    auto isDot = [chars](int32_t start, int32_t limit) {
        return limit - start == 1 && chars[start] == u'.';
    };
    auto isDotDot = [chars](int32_t start, int32_t limit) {
        return limit - start == 2 && chars[start] == u'.' && chars[start + 1] == u'.';
    };
    UnicodeString out;
    out.getBuffer(length + 1);
    out.releaseBuffer(0);
    for (int32_t start = 0, index = 0;; ++index) {
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
            int32_t previousStart = out.lastIndexOf(u'/', 0, outLength - 1) + 1;
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
    path = out;
}

// ASCII lower case for the scheme: schemes are ASCII, and most arrive in lower case already.
void lowerAsciiPrefix(UnicodeString& text, int32_t limit) {
    for (int32_t i = 0; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (c >= u'A' && c <= u'Z')
            text.setCharAt(i, static_cast<char16_t>(c + (u'a' - u'A')));
    }
}

// Splits a base (fragment already cut) into the part that stays (scheme, authority, archive,
// drive) and the path that the reference is merged into. `networkReference` is true for a
// reference starting with "//", which brings its own authority.
void splitBase(UnicodeString& work, bool networkReference, UnicodeString& host,
               UnicodeString& path) {
    int32_t schemeLimit = detail::uriSchemeLimit(work);
    bool isFile = detail::uriStartsWith(work, 0, "file:");
    bool isJar = detail::uriStartsWith(work, 0, "jar:");
    int32_t bang = isJar ? work.lastIndexOf(u"!/") : -1;
    if (!isJar || bang < 0) {
        // The base's query names no part of a directory.
        int32_t query = work.indexOf(u'?');
        if (query >= 0)
            work.truncate(query);
    }
    if (schemeLimit < 0) {
        host.remove();
        path = work;
        return;
    }
    if (networkReference && !isJar) {
        host = UnicodeString(work, 0, schemeLimit + 1);
        path.remove();
        return;
    }
    if (isJar && bang >= 0) {
        host = UnicodeString(work, 0, bang + 1);
        path = UnicodeString(work, bang + 1);
        return;
    }
    if (isFile && regionEquals(work, 5, 3, u"///")) {
        int32_t pathStart = ZkUri::hasDriveLetter(work, 8) ? 10 : 7;
        host = UnicodeString(work, 0, pathStart);
        path = UnicodeString(work, pathStart);
        return;
    }
    if (regionEquals(work, schemeLimit + 1, 2, u"//")) {
        int32_t slash = work.indexOf(u'/', schemeLimit + 3);
        if (slash < 0) {
            // A base of scheme and host only: its path is "/".
            host = work;
            path = u"/";
        } else {
            host = UnicodeString(work, 0, slash);
            path = UnicodeString(work, slash);
        }
        return;
    }
    host = UnicodeString(work, 0, schemeLimit + 1);
    path = UnicodeString(work, schemeLimit + 1);
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

} // namespace

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

    UnicodeString work(base);
    int32_t baseSharp = work.indexOf(u'#');
    if (baseSharp >= 0)
        work.truncate(baseSharp);
    int32_t schemeLimit = uriSchemeLimit(work);
    if (schemeLimit > 0)
        lowerAsciiPrefix(work, schemeLimit);
    // A plain file name as base ("a.xml") is a file in the current directory. A base with a
    // scheme keeps it: "urn:a" is no relative path.
    if (schemeLimit < 0 && work.indexOf(u'/') < 0)
        work.insert(0, u"./");

    const bool networkReference = reference.startsWith(u"//");
    UnicodeString host;
    UnicodeString path;
    splitBase(work, networkReference, host, path);
    if (networkReference) {
        // The reference's authority replaces the base's: it joins the part that stays.
        int32_t slash = reference.indexOf(u'/', 2);
        int32_t authorityLimit = slash < 0 ? reference.length() : slash;
        int32_t query = reference.indexOf(u'?', 2);
        if (query >= 0 && query < authorityLimit)
            authorityLimit = query;
        host.append(reference, 0, authorityLimit);
        reference.remove(0, authorityLimit);
        path.remove();
    }

    if (networkReference || reference.startsWith(u"/")) {
        path = reference;
    } else {
        int32_t pathLength = path.length();
        if ((pathLength >= 2 && path.charAt(pathLength - 1) == u'.' &&
             path.charAt(pathLength - 2) == u'/') ||
            (pathLength >= 3 && path.charAt(pathLength - 1) == u'.' &&
             path.charAt(pathLength - 2) == u'.' && path.charAt(pathLength - 3) == u'/'))
            path.append(u'/');
        int32_t slash = path.lastIndexOf(u'/');
        path.truncate(slash + 1);
        path.append(reference);
    }

    // Only the path is normalised: a query keeps its dots.
    int32_t query = path.indexOf(u'?');
    UnicodeString queryText;
    if (query >= 0) {
        queryText = UnicodeString(path, query);
        path.truncate(query);
    }
    normalizePath(path);

    UnicodeString result;
    result.getBuffer(host.length() + path.length() + queryText.length() + fragment.length());
    result.releaseBuffer(0);
    result.append(host).append(path);
    if (!uriStartsWith(host, 0, "file:"))
        result.append(queryText);
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
    ZkUri self(*this);
    UnicodeString base(other.m_uri);
    if (isFileScheme() && other.isFileScheme()) {
        self.m_uri.toLower(Locale::getRoot());
        base.toLower(Locale::getRoot());
    }
    if (self.m_uri == base)
        return true;
    UnicodeString relative = self.getRelativeUri(base);
    return !relative.isEmpty() && !relative.startsWith(u"..");
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
