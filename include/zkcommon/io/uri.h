// ZkUri, the normalised URI value through which every resource is named and opened, and the
// caller's hook ZkUriReferenceResolver2.
#ifndef ZKCOMMON_IO_URI_H
#define ZKCOMMON_IO_URI_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <iosfwd>

namespace ZkCommonNS {

class ZkXmlCatalogs;

/// A caller's store of resources: it maps a URI to bytes before the library looks elsewhere.
/// The library never owns it.
class ZKCOMMON_API ZkUriReferenceResolver2 {
public:
    /// Receives each piece of the content; `stream` is the opaque pointer given to
    /// resolveReference. A size of 0 or below, or a null `data`, is ignored.
    using Writer = void (*)(int size, const char* data, void* stream);

    virtual ~ZkUriReferenceResolver2();
    /// Serves `uri` (null-terminated UTF-16) by calling `writer` with `stream` for each piece.
    /// Returns false when the resolver does not know the URI; what it wrote is then dropped.
    virtual bool resolveReference(const UChar* uri, Writer writer, void* stream) = 0;
};

/// One URI string, repaired at construction: Windows and UNC paths, POSIX paths, jar: URLs and
/// relative references all end in one URI form. A value class: nothing here throws, a bad
/// string stays a bad URI and fails when it is opened.
class ZKCOMMON_API ZkUri {
public:
    /// How the string given to a constructor is read.
    enum URISTRTYPE : int {
        URISTR_URI = 0,             ///< a URI; invalid characters get escaped
        URISTR_URI_ASIS = 1,        ///< a URI as it stands: no fragment split, "#" is data
        URISTR_FILEPATH = 2,        ///< a file path
        URISTR_FILEPATH_OR_URI = 3, ///< a file path unless the string has a scheme
        URISTR_AUTO = 4,            ///< chosen from the string and the file system
    };

    /// What a source says about its content, and the connection settings for remote ones.
    struct ZKCOMMON_API ContentInfo {
        enum Flags : uint32_t {
            FLAG_PARSER_INPUT = 1,       ///< set by the parser when it opens its input
            FLAG_IGNORE_CERTIFICATE = 2, ///< ignore certificate errors
            FLAG_NO_PROXY_QUERY = 4,     ///< skip the system proxy query
            FLAG_HTTP11 = 8,             ///< "HTTP/1.1" rather than "HTTP/1.0"
        };
        /// A copy of `other`, or the empty record (length -1, no settings) for null.
        explicit ContentInfo(const ContentInfo* other = nullptr);

        UnicodeString contentType; ///< media type without parameters
        UnicodeString charset;
        UnicodeString language;
        int64_t length; ///< -1 when unknown
        UnicodeString referrer;
        int32_t connectTimeout; ///< 0x80000000 when not given
        int32_t connectRetries; ///< negative when not given
        int32_t connectBackoff; ///< negative when not given
        uint32_t flags;
    };

    /// The empty URI.
    ZkUri();
    /// Reads `text` with type URISTR_AUTO. Catalogs, when given, may rewrite the text first.
    ZkUri(const UnicodeString& text, const ZkXmlCatalogs* catalogs = nullptr);
    /// Reads `text` as `type` says; an unknown type is read as URISTR_URI.
    ZkUri(const UnicodeString& text, URISTRTYPE type, const ZkXmlCatalogs* catalogs = nullptr);
    /// Resolves `text` (read with URISTR_AUTO) against `base`; an empty `text` gives `base`.
    ZkUri(const ZkUri& base, const UnicodeString& text, const ZkXmlCatalogs* catalogs = nullptr);
    ZkUri(const ZkUri& base, const UnicodeString& text, URISTRTYPE type,
          const ZkXmlCatalogs* catalogs = nullptr);
    ZkUri(const ZkUri&) = default;
    ZkUri& operator=(const ZkUri&) = default;
    virtual ~ZkUri();

    const UnicodeString& toString() const noexcept { return m_uri; }
    bool isEmpty() const noexcept { return m_uri.isEmpty(); }
    bool operator==(const ZkUri& other) const { return m_uri == other.m_uri; }
    bool operator!=(const ZkUri& other) const { return m_uri != other.m_uri; }

    // Schemes: case-insensitive prefixes.
    bool isDataScheme() const;
    bool isFileScheme() const;
    /// "http:" or "https:".
    bool isHttpScheme() const;
    bool isJarScheme() const;
    /// The scheme lower-cased, without its colon; the empty name when there is none.
    ZkName getScheme() const;
    /// True when the string starts with a scheme of two or more characters.
    bool isAbsolute() const;

    /// Up to and including the last "/" before any query or fragment; empty without one.
    UnicodeString getBaseString() const;
    /// The last path segment, without query and fragment.
    UnicodeString getFileName() const;
    /// The file name's extension with its dot; empty when it has none.
    UnicodeString getExtension() const;
    /// Replaces the extension (given with or without its dot); null or empty removes it.
    void setExtension(const UnicodeString* extension);
    /// Puts `suffix` and, when `number` is not negative, the number's digits between the file
    /// name and its extension: ("a.pdf", 2, "-") gives "a-2.pdf".
    void addFileNameSuffix(int number, const UnicodeString& suffix);
    /// Removes "#..." from this URI. Returns the fragment without "#" when `returnFragment`,
    /// else the URI without it. A URI without a fragment is left and gives "" or itself.
    UnicodeString removeFragment(bool returnFragment = false);

    /// The file system path of a file URI (unescaped, UTF-8 decoded, fragment and query cut),
    /// or the string itself for other URIs. With `maxLength` above 0 the result is shortened
    /// for display: the file name stays, the middle of the path becomes "...".
    UnicodeString getLocalPath(int maxLength = 0) const;
    static UnicodeString getLocalPath(const UnicodeString& uri);

    /// The reference that leads from `base` to this URI ("../b/c.xml"). Empty when both are
    /// empty or when the two share no root (other scheme or host).
    UnicodeString getRelativeUri(const UnicodeString& base) const;
    /// True when this URI lies in the directory of `other` or below; file URIs compare
    /// without case.
    bool isDescendantOrSelf(const ZkUri& other) const;
    /// Both local and non-empty, and their local paths equal ignoring case.
    bool isSameFile(const ZkUri& other) const;

    /// A file URI or a URI without a scheme.
    bool isFile() const;
    /// Something (a file or a directory) exists at the local path; false for non-local URIs.
    bool isFileExists() const;
    /// The same for a file system path; null, empty or missing paths give false.
    static bool isFileExists(const char* path);
    static bool isFileExists(const wchar_t* path);
    bool isDirectoryExists() const;
    /// True for URIs fetched over a network: http:, https:, a UNC path, or a local path on a
    /// network file system. Empty and data: URIs are not remote; jar: asks its archive.
    bool isRemote() const;

    /// Escapes "%" and each character that isValidUriChar refuses as "%XX" (low eight bits);
    /// with `escapeSharp` also "#".
    static UnicodeString escape(const UnicodeString& text, bool escapeSharp = false);
    /// Decodes "%XX" runs as UTF-8. A "%" without two hex digits, and bytes that are no valid
    /// UTF-8, stay as the text they were.
    static UnicodeString unescape(const UnicodeString& text);
    /// For a string with "#" that resolves to a file URI: the "#" is escaped as "%23" when
    /// `exists` is true, or when the escaped name is an existing file. Otherwise `text` returns.
    static UnicodeString escapeSharpIfExist(const UnicodeString& text, bool exists);
    static UnicodeString escapeSharpIfExist(const ZkUri& base, const UnicodeString& text,
                                            bool exists);
    /// A string with a scheme, or one whose characters are all valid and whose every "%" is
    /// followed by two hex digits.
    static bool isValidUri(const UnicodeString& text);
    static bool isValidUriChar(UChar32 c) noexcept;
    /// An ASCII letter at `pos` and ":" after it; false when the text is too short.
    static bool hasDriveLetter(const UnicodeString& text, int pos) noexcept;
    static void backslash2slash(UnicodeString& text);
    static void slash2backslash(UnicodeString& text);
    /// Appends one separator ("\" with `backslash`, else "/") unless the path ends in one.
    /// An empty path is left empty.
    static void toDirectory(UnicodeString& path, bool backslash);

    /// A file beside a module of the process: the directory comes from environment variable
    /// `envName`, else from the loaded module `moduleName` (".dll" names are looked up as
    /// ".so"), else "./"; `relative` is resolved against it. Null arguments count as empty.
    static ZkUri getModuleUri(const char* moduleName, const char* relative, const char* envName);
    /// Loads the shared library at this URI's local path (a ".dll" name is tried as ".so" too).
    /// Null when it cannot be loaded.
    void* loadLibrary() const;
    /// Null handles are ignored.
    static void freeLibrary(void* module);
    /// Null for a null module or name, or a missing symbol.
    static void* getProcAddress(void* module, const char* name);

    /// Replaces an http: or https: URI by the one it redirects to; other URIs stay as they are.
    void checkRedirection();
    /// Opens the resource: a resolver first, then local files, then the other schemes this
    /// build can fetch. A missing resource, a directory or an unsupported scheme gives null,
    /// never an exception; the caller owns the stream. `errorText` gets the reason of a failed
    /// remote fetch.
    std::istream* getIStream(ContentInfo* info = nullptr, UnicodeString* errorText = nullptr) const;
    /// A binary output file, truncated or appended to; null for remote or non-file URIs and
    /// when the file cannot be opened.
    std::ostream* getOStream(bool append = false) const;
    /// A binary read and write file, created when missing; null when it cannot be opened.
    std::iostream* getFStream() const;

    /// Installs the process-wide resolver and returns the previous one (null: none).
    static ZkUriReferenceResolver2* setUriReferenceResolver2(ZkUriReferenceResolver2* resolver);
    static ZkUriReferenceResolver2* getUriReferenceResolver2();
    /// Drops the process-wide caches (redirections); the resolver stays installed.
    static void cleanup();

protected:
    void construct(const ZkUri* base, const UnicodeString& text, URISTRTYPE type,
                   const ZkXmlCatalogs* catalogs);
    /// The stream of the installed resolver for this URI, or null.
    std::istream* getStreamFromResolver() const;

    UnicodeString m_uri;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_URI_H
