// Helpers shared by the URI files: scheme scanning, path repair and reference resolution.
#ifndef ZKCOMMON_SRC_IO_URIIMPL_H
#define ZKCOMMON_SRC_IO_URIIMPL_H

#include "zkcommon/io/uri.h"

namespace ZkCommonNS {
namespace detail {

/// The index of the ":" ending a scheme of two or more characters, or -1. A single letter
/// before ":" is a drive letter, never a scheme.
int32_t uriSchemeLimit(const UnicodeString& text) noexcept;

/// True when `text` starts with the ASCII `prefix`, ignoring the case of ASCII letters.
bool uriStartsWith(const UnicodeString& text, int32_t start, const char* prefix) noexcept;

/// A path (slashes already made forward) in file-URI form: drive paths, UNC paths and absolute
/// POSIX paths get "file:" forms and are escaped ("#" too with `escapeSharp`, for a path whose
/// "#" is part of a name); anything else comes back unchanged.
UnicodeString fileUriFromPath(const UnicodeString& path, bool escapeSharp = false);

/// Resolves `reference` against the URI string `base`, reading the reference as `type`
/// (already resolved: never URISTR_AUTO).
UnicodeString resolveUriReference(const UnicodeString& base, const UnicodeString& reference,
                                  ZkUri::URISTRTYPE type);

/// The type URISTR_AUTO stands for, and the unwrapping of url(...) for path types. `text` may
/// be replaced by the inner text.
ZkUri::URISTRTYPE resolveUriType(UnicodeString& text, ZkUri::URISTRTYPE type);

/// Decodes the escapes of unreserved characters (letters, digits, "-", ".", "_", "~"), which
/// name the same resource either way: "%2E%2E" must meet dot-segment removal as "..".
void decodeUnreservedEscapes(UnicodeString& text);

/// The URI with its path in normal form: unreserved escapes decoded, "." and ".." segments
/// removed. Query and fragment stay as they are.
UnicodeString normalizeUriPath(const UnicodeString& uri);

/// The text with its fragment and query cut off: the part that names the resource.
UnicodeString uriWithoutQueryAndFragment(const UnicodeString& text);

/// The catalog code installs this to map a system identifier or URI through its catalogs.
using CatalogUriResolver = UnicodeString (*)(const ZkXmlCatalogs* catalogs,
                                             const UnicodeString& uri);
void setCatalogUriResolver(CatalogUriResolver resolver);
UnicodeString resolveThroughCatalogs(const ZkXmlCatalogs* catalogs, const UnicodeString& uri);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_URIIMPL_H
