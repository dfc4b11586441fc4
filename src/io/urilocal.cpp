// Local paths of URIs: conversion, display shortening, file tests, remoteness, modules beside
// the program, and the converter that error positions use.
#include "core/localpath.h"
#include "io/platform.h"
#include "io/uriimpl.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/io/uri.h"

#include <algorithm>
#include <string>

namespace ZkCommonNS {

namespace {

UnicodeString localPathForErrors(const UnicodeString& uri) {
    return ZkUri(uri).getLocalPath();
}

// Error positions show the real local path once this library is loaded.
const bool s_converterInstalled = (detail::setLocalPathConverter(&localPathForErrors), true);

bool endsWithIgnoreCase(const std::string& text, const char* suffix) {
    size_t length = std::char_traits<char>::length(suffix);
    if (text.size() < length)
        return false;
    for (size_t i = 0; i < length; ++i) {
        char a = text[text.size() - length + i];
        char b = suffix[i];
        if (a != b && !(a >= 'A' && a <= 'Z' && a + 32 == b))
            return false;
    }
    return true;
}

int32_t lastSeparator(const UnicodeString& path) {
    return std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
}

// The length of an escaped separator ("%2F", "%5C", any case) at `i`, else 0.
int32_t escapedSeparatorAt(const UnicodeString& text, int32_t i) {
    if (i + 2 >= text.length() || text.charAt(i) != u'%')
        return 0;
    const char16_t high = text.charAt(i + 1);
    const char16_t low = static_cast<char16_t>(text.charAt(i + 2) | 0x20);
    return (high == u'2' && low == u'f') || (high == u'5' && low == u'c') ? 3 : 0;
}

// Unescapes a path, except that an escaped "/" or "\" stays escaped: it is part of a name,
// and as a separator it would open a file outside the folder the URI names.
UnicodeString unescapePath(const UnicodeString& text) {
    UnicodeString out;
    int32_t pieceStart = 0;
    for (int32_t i = 0; i < text.length(); ++i) {
        const int32_t escape = escapedSeparatorAt(text, i);
        if (escape == 0)
            continue;
        out.append(ZkUri::unescape(UnicodeString(text, pieceStart, i - pieceStart)));
        out.append(text, i, escape);
        pieceStart = i + escape;
        i += escape - 1;
    }
    if (pieceStart == 0)
        return ZkUri::unescape(text);
    return out.append(ZkUri::unescape(UnicodeString(text, pieceStart)));
}

} // namespace

UnicodeString ZkUri::getLocalPath(const UnicodeString& uri) {
    (void)s_converterInstalled;
    if (!detail::uriStartsWith(uri, 0, "file:"))
        return uri;
    UnicodeString rest = detail::uriWithoutQueryAndFragment(UnicodeString(uri, 5));
    int32_t slashes = 0;
    while (slashes < rest.length() && rest.charAt(slashes) == u'/')
        ++slashes;
    UnicodeString tail = unescapePath(UnicodeString(rest, slashes));
    if (hasDriveLetter(tail, 0))
        return tail;
    switch (slashes) {
    case 0:
        return tail;
    case 1:
    case 3:
        return UnicodeString(u"/") + tail;
    case 2: {
        // "localhost" is this machine: its paths are the local ones.
        int32_t slash = tail.indexOf(u'/');
        UnicodeString host(tail, 0, slash < 0 ? tail.length() : slash);
        if (host.caseCompare(UnicodeString(u"localhost"), U_FOLD_CASE_DEFAULT) == 0)
            return slash < 0 ? UnicodeString(u"/") : UnicodeString(tail, slash);
        return UnicodeString(u"//") + tail;
    }
    default:
        return UnicodeString(u"//") + tail;
    }
}

UnicodeString ZkUri::getLocalPath(int maxLength) const {
    UnicodeString path = getLocalPath(m_uri);
    if (maxLength <= 0 || path.length() <= maxLength)
        return path;
    const UnicodeString ellipsis(u"...");
    int32_t schemeLimit = detail::uriSchemeLimit(path);
    int32_t minimum = schemeLimit >= 0 ? schemeLimit + 3 : 3;
    minimum = std::min(minimum, path.length());
    if (isDataScheme()) {
        int32_t keep = std::max(minimum, maxLength - ellipsis.length());
        return keep >= path.length() ? path : UnicodeString(path, 0, keep) + ellipsis;
    }
    int32_t separator = lastSeparator(path);
    if (separator <= 0)
        return path; // the file name stays whole
    UnicodeString tail(path, separator);
    int32_t head = std::max(minimum, maxLength - ellipsis.length() - tail.length());
    if (head >= separator)
        return path;
    return UnicodeString(path, 0, head) + ellipsis + tail;
}

bool ZkUri::isSameFile(const ZkUri& other) const {
    if (m_uri.isEmpty() || other.m_uri.isEmpty() || !isFile() || !other.isFile())
        return false;
    // Case is ignored on every platform on purpose: documents move between file systems.
    UnicodeString mine = getLocalPath();
    UnicodeString theirs = other.getLocalPath();
    mine.toLower(Locale::getRoot());
    theirs.toLower(Locale::getRoot());
    return mine == theirs;
}

bool ZkUri::isFileExists() const {
    if (m_uri.isEmpty() || !isFile())
        return false;
    return detail::platform::pathExists(getLocalPath());
}

bool ZkUri::isFileExists(const char* path) {
    if (!path || !*path)
        return false;
    return detail::platform::pathExists(UnicodeString::fromUTF8(path));
}

bool ZkUri::isFileExists(const wchar_t* path) {
    if (!path || !*path)
        return false;
    UnicodeString text;
    if constexpr (sizeof(wchar_t) == 4) {
        int32_t length = 0;
        while (path[length])
            ++length;
        text = UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(path), length);
    } else {
        text = UnicodeString(reinterpret_cast<const char16_t*>(path));
    }
    return detail::platform::pathExists(text);
}

bool ZkUri::isDirectoryExists() const {
    if (m_uri.isEmpty() || !isFile())
        return false;
    return detail::platform::statPath(getLocalPath(), nullptr) ==
           detail::platform::FileKind::kDirectory;
}

bool ZkUri::isRemote() const {
    if (m_uri.isEmpty() || isDataScheme())
        return false;
    if (isJarScheme()) {
        UnicodeString archive(m_uri, 4);
        int32_t bang = archive.indexOf(u"!/");
        if (bang >= 0)
            archive.truncate(bang);
        return ZkUri(archive, URISTR_URI_ASIS).isRemote();
    }
    if (!isFile())
        return true;
    UnicodeString path = getLocalPath();
    if (path.startsWith(u"//") || path.startsWith(u"\\\\"))
        return true; // a path on another host
    return detail::platform::isNetworkPath(path);
}

ZkUri ZkUri::getModuleUri(const char* moduleName, const char* relative, const char* envName) {
    std::string relativeText = relative ? relative : "";
    UnicodeString base;
    if (envName && *envName) {
        UnicodeString value;
        bool found;
        {
            ZkMutex guard;
            found = detail::platform::getEnvironment(envName, value);
        }
        if (found && !value.isEmpty()) {
            if (value.length() > 32767)
                value.truncate(32767);
            ZkUri fromEnvironment(value, URISTR_AUTO);
            if (!fromEnvironment.isEmpty() && fromEnvironment.isFile() &&
                fromEnvironment.isFileExists())
                base = fromEnvironment.getLocalPath();
        }
    }
    if (base.isEmpty() && moduleName && *moduleName) {
        UnicodeString modulePath = detail::platform::loadedModulePath(moduleName);
        int32_t separator = lastSeparator(modulePath);
        if (separator >= 0)
            base = UnicodeString(modulePath, 0, separator + 1);
    }
    if (base.isEmpty()) {
        if (endsWithIgnoreCase(relativeText, ".dll") || endsWithIgnoreCase(relativeText, ".so"))
            return ZkUri(UnicodeString::fromUTF8(relativeText), URISTR_AUTO);
        base = u"./";
    }
    if (relativeText.empty()) {
        int32_t length = base.length();
        if (length > 1 && (base.charAt(length - 1) == u'/' || base.charAt(length - 1) == u'\\'))
            base.truncate(length - 1);
        return ZkUri(base, URISTR_AUTO);
    }
    toDirectory(base, /*backslash=*/false);
    return ZkUri(ZkUri(base, URISTR_AUTO), UnicodeString::fromUTF8(relativeText), URISTR_AUTO);
}

void* ZkUri::loadLibrary() const {
    if (m_uri.isEmpty())
        return nullptr;
    UnicodeString path = isFile() ? getLocalPath() : m_uri;
    if (void* module = detail::platform::loadLibrary(path))
        return module;
    // Names written for Windows carry ".dll"; the same module here ends in ".so".
    if (path.length() > 4 &&
        path.tempSubString(path.length() - 4).caseCompare(UnicodeString(u".dll"), 0) == 0) {
        path.truncate(path.length() - 4);
        path.append(u".so");
        return detail::platform::loadLibrary(path);
    }
    return nullptr;
}

void ZkUri::freeLibrary(void* module) {
    if (module)
        detail::platform::freeLibrary(module);
}

void* ZkUri::getProcAddress(void* module, const char* name) {
    if (!module || !name || !*name)
        return nullptr;
    return detail::platform::findSymbol(module, name);
}

} // namespace ZkCommonNS
