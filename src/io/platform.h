// The small interface between the resource code and the operating system; one implementation
// file per platform (platform_posix.cpp).
#ifndef ZKCOMMON_SRC_IO_PLATFORM_H
#define ZKCOMMON_SRC_IO_PLATFORM_H

#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace ZkCommonNS {
namespace detail {
namespace platform {

enum class FileKind { kMissing, kFile, kDirectory };

/// The path as the system's file calls take it (UTF-8 here). Empty for a path holding U+0000,
/// which no file call could name.
std::string nativePath(const UnicodeString& path);
/// Whether anything exists under the path (access with F_OK).
bool pathExists(const UnicodeString& path);
/// What the path names; `size` (when not null) gets the size of a file.
FileKind statPath(const UnicodeString& path, int64_t* size);
/// True only for a regular file (after symbolic links): never a FIFO, device or socket, which
/// could block or never end.
bool isRegularFile(const UnicodeString& path);
/// How a file is opened. Only regular files ever open: a FIFO, socket or device named by a
/// document would block the reader or stream without end.
enum class OpenMode { kRead, kWriteTruncate, kWriteAppend, kReadWrite };
/// The open file as a binary stream (an istream, ostream or iostream by `mode`), or null for a
/// missing or special file, a directory or a refused open. `size` (when not null) gets the
/// file's size. Never blocks on a special file: it is opened without blocking and tested before
/// anything is read or truncated. On failure `error` (when not null) gets the system's error
/// number, or kNotRegularFile.
std::iostream* openRegularFile(const UnicodeString& path, OpenMode mode, int64_t* size,
                               int* error = nullptr);
constexpr int kNotRegularFile = -1;
/// True when the path, or its nearest existing ancestor, lies on a network file system.
bool isNetworkPath(const UnicodeString& path);
/// The full path of a shared object loaded in this process whose file name is `name`, or of
/// the library itself for an empty name; empty when none is loaded.
UnicodeString loadedModulePath(const std::string& name);
void* loadLibrary(const UnicodeString& path);
void freeLibrary(void* module);
void* findSymbol(void* module, const char* name);
/// False when the variable is unset.
bool getEnvironment(const char* name, UnicodeString& value);

} // namespace platform
} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_PLATFORM_H
