// The operating-system side of temporary files: directory, process id, exclusive creation,
// locked removal, directories and random bytes; one implementation file per platform
// (tempfile_posix.cpp).
#ifndef ZKCOMMON_SRC_IO_TEMPPLATFORM_H
#define ZKCOMMON_SRC_IO_TEMPPLATFORM_H

#include "zkcommon/core/unicode.h"

#include <cstddef>

namespace ZkCommonNS {
namespace detail {
namespace platform {

/// The system's directory for temporary files, ending in the path separator.
UnicodeString temporaryDirectory();
unsigned long processId();
/// Whether anything, a dangling link included, lies under the path.
bool entryExists(const UnicodeString& path);

enum class CreateResult { kCreated, kExists, kFailed };
/// Creates an empty file that must not exist yet, readable and writable by its owner only.
/// `error` gets the system's error number on failure.
CreateResult createNewFile(const UnicodeString& path, int& error);

enum class RemoveResult { kRemoved, kLocked, kFailed };
/// Removes the file when no other process holds a lock on it. A link or special file is
/// unlinked without the lock test; a directory is kFailed. A path that vanished counts as
/// removed. `error` gets the system's error number on failure.
RemoveResult removeUnlockedFile(const UnicodeString& path, int& error);

void sleepMilliseconds(unsigned milliseconds);
/// Failures are left to the caller to notice.
void makeDirectory(const UnicodeString& path);
/// Removes an empty directory; false when it is not empty or cannot go.
bool removeDirectory(const UnicodeString& path);
/// Fills `target` from the system's random source.
void randomBytes(unsigned char* target, size_t length);

} // namespace platform
} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_TEMPPLATFORM_H
