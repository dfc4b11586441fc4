// ZkTempFile, which names, creates, owns and patiently removes temporary files, and ZkUUID,
// the random name of the per-file temporary directories.
#ifndef ZKCOMMON_IO_TEMPFILE_H
#define ZKCOMMON_IO_TEMPFILE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/strings.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>

namespace ZkCommonNS {

/// A random (version 4) UUID drawn from the operating system's random source.
class ZKCOMMON_API ZkUUID {
public:
    /// A new random value.
    ZkUUID();
    /// The value of the 16 bytes at `bytes`, taken as they are.
    explicit ZkUUID(const unsigned char* bytes);

    /// Lowercase hexadecimal digits: 8-4-4-4-12 with hyphens, else 32 digits in a row.
    UnicodeString toString(bool hyphens = true) const;
    /// The four 32-bit words (big-endian) folded by exclusive or.
    uint32_t toUint32() const noexcept;
    const unsigned char* getBytes() const noexcept { return m_bytes; }

    bool operator==(const ZkUUID& other) const noexcept;
    bool operator!=(const ZkUUID& other) const noexcept { return !(*this == other); }

private:
    unsigned char m_bytes[16];
};

/// A temporary file owned by the object and removed with it, and the static side that hands
/// out fresh names. Names are "<directory><prefix><pid>_<counter><extension>", the process id
/// with at least three and the counter with at least four lowercase hexadecimal digits.
class ZKCOMMON_API ZkTempFile {
public:
    /// The directory for temporary files, ending in "/": $TMPDIR when it names a directory,
    /// else "/tmp/". Read once per process.
    static ZkCStr getTempDirectory();
    /// getTempFileEx with `create` true.
    static ZkCStr getTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                              const UnicodeString& extension);
    static ZkCStr getTempFile(const char* directory, const char* prefix, const char* extension);
    /// A fresh name in `directory` (the temporary directory when empty; used as it stands, so
    /// a directory without a trailing "/" runs into the prefix). With `create` the empty file
    /// exists on return, created by this call alone (mode 0600); without it the name is not
    /// checked. Throws ZkError 78 "Cannot create temporary file: <name> (cannot create)" and
    /// the system's reason after 100 failed attempts, or "(cannot remove)" when a half-made
    /// file cannot be removed.
    static ZkCStr getTempFileEx(const UnicodeString& directory, const UnicodeString& prefix,
                                const UnicodeString& extension, bool create);
    static ZkCStr getTempFileEx(const char* directory, const char* prefix, const char* extension,
                                bool create);
    /// Removes the file, waiting up to about nine seconds (ten tries a second apart) while
    /// another process holds a lock on it. True when nothing is left under the path; false for
    /// a directory and for a file that stayed locked or could not be unlinked.
    static bool removeTempFile(const UnicodeString& path);
    static bool removeTempFile(const char* path);

    /// Owns nothing.
    ZkTempFile();
    /// Owns a fresh file made by getTempFileEx (created).
    ZkTempFile(const UnicodeString& directory, const UnicodeString& prefix,
               const UnicodeString& extension);
    ZkTempFile(const char* directory, const char* prefix, const char* extension);
    /// Owns a fresh name made by getTempFileEx; the file exists only with `create`.
    ZkTempFile(const UnicodeString& directory, const UnicodeString& prefix,
               const UnicodeString& extension, bool create);
    ZkTempFile(const char* directory, const char* prefix, const char* extension, bool create);
    /// Removes the owned file (see remove). Its ZkError escapes unless the destructor runs
    /// while another exception unwinds the stack; then the failure is dropped.
    ~ZkTempFile() noexcept(false);
    ZkTempFile(const ZkTempFile&) = delete;
    ZkTempFile& operator=(const ZkTempFile&) = delete;

    const ZkCStr& getFileName() const noexcept { return m_fileName; }
    bool isTempFile() const noexcept { return !m_fileName.isEmpty(); }
    /// Removes the owned file, then owns a freshly created one; returns its name.
    const ZkCStr& setFileName(const UnicodeString& directory, const UnicodeString& prefix,
                              const UnicodeString& extension);
    const ZkCStr& setFileName(const char* directory, const char* prefix, const char* extension);
    /// Removes the owned file, then owns `name` as it is (empty: nothing).
    const ZkCStr& setFileName(const UnicodeString& name);
    const ZkCStr& setFileName(const char* name);
    /// Gives up ownership and returns the name: the file stays on disk.
    ZkCStr releaseFileName();
    /// Removes the owned file by removeTempFile, then its UUID directory if it has one and the
    /// directory is empty. The name stays. Throws ZkError 77 "Cannot remove temporary file:
    /// <name>" when the file could not be removed.
    void remove() const;
    /// "<temporary directory><new UUID>/<name>": the UUID directory becomes this object's
    /// directory and is created, and the file is created in it. Failures to create either are
    /// not reported; the file then does not exist.
    ZkCStr getTempFileInUUIDDirectory(const UnicodeString& name);
    ZkCStr getTempFileInUUIDDirectory(const char* name);
    /// Removes the owned file, then owns getTempFileInUUIDDirectory(name).
    const ZkCStr& setFileNameInUUIDDirectory(const UnicodeString& name);
    const ZkCStr& setFileNameInUUIDDirectory(const char* name);

private:
    ZkCStr m_fileName;
    UnicodeString m_directory;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_TEMPFILE_H
