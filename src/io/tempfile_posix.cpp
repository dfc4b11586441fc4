// The POSIX side of temporary files: $TMPDIR, getpid, O_EXCL creation, removal behind an
// advisory-lock test (flock and fcntl), mkdir/rmdir and getrandom.
#include "io/platform.h"
#include "io/tempplatform.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <random>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace ZkCommonNS {

namespace {

bool isDirectory(const char* path) {
    struct stat status;
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

/// True when another process holds a lock on the file: a flock, or an fcntl lock on any byte.
/// A granted flock is kept (the caller unlinks under it).
bool isLockedElsewhere(int fd) {
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0)
        return true;
    struct flock probe = {};
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    probe.l_start = 0;
    probe.l_len = 0;
    return ::fcntl(fd, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

} // namespace

UnicodeString detail::platform::temporaryDirectory() {
    const char* variable = std::getenv("TMPDIR");
    std::string directory = variable && *variable && isDirectory(variable) ? variable : "/tmp";
    if (directory.back() != '/')
        directory += '/';
    return UnicodeString::fromUTF8(directory);
}

unsigned long detail::platform::processId() {
    return static_cast<unsigned long>(::getpid());
}

bool detail::platform::entryExists(const UnicodeString& path) {
    const std::string native = nativePath(path);
    struct stat status;
    return !native.empty() && ::lstat(native.c_str(), &status) == 0;
}

detail::platform::CreateResult detail::platform::createNewFile(const UnicodeString& path,
                                                               int& error) {
    const std::string native = nativePath(path);
    if (native.empty()) {
        error = EINVAL;
        return CreateResult::kFailed;
    }
    const int fd =
        ::open(native.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = errno;
        return error == EEXIST ? CreateResult::kExists : CreateResult::kFailed;
    }
    ::close(fd);
    return CreateResult::kCreated;
}

detail::platform::RemoveResult detail::platform::removeUnlockedFile(const UnicodeString& path,
                                                                    int& error) {
    const std::string native = nativePath(path);
    struct stat status;
    if (native.empty()) {
        error = EINVAL;
        return RemoveResult::kFailed;
    }
    if (::lstat(native.c_str(), &status) != 0) {
        error = errno;
        return error == ENOENT ? RemoveResult::kRemoved : RemoveResult::kFailed;
    }
    if (S_ISDIR(status.st_mode)) {
        error = EISDIR;
        return RemoveResult::kFailed;
    }
    int fd = -1;
    if (S_ISREG(status.st_mode)) {
        // Non-blocking and without following links: the name may have changed under us.
        fd = ::open(native.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0 && errno != EACCES) {
            error = errno;
            return error == ENOENT ? RemoveResult::kRemoved : RemoveResult::kLocked;
        }
        if (fd >= 0 && isLockedElsewhere(fd)) {
            ::close(fd);
            error = EBUSY;
            return RemoveResult::kLocked;
        }
    }
    const bool removed = ::unlink(native.c_str()) == 0 || errno == ENOENT;
    error = removed ? 0 : errno;
    if (fd >= 0)
        ::close(fd); // releases the flock
    return removed ? RemoveResult::kRemoved : RemoveResult::kFailed;
}

void detail::platform::sleepMilliseconds(unsigned milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void detail::platform::makeDirectory(const UnicodeString& path) {
    const std::string native = nativePath(path);
    if (!native.empty())
        ::mkdir(native.c_str(), 0700);
}

bool detail::platform::removeDirectory(const UnicodeString& path) {
    const std::string native = nativePath(path);
    return !native.empty() && ::rmdir(native.c_str()) == 0;
}

void detail::platform::randomBytes(unsigned char* target, size_t length) {
    size_t filled = 0;
    while (filled < length) {
        const ssize_t got = ::getrandom(target + filled, length - filled, 0);
        if (got > 0)
            filled += static_cast<size_t>(got);
        else if (got < 0 && errno != EINTR)
            break;
    }
    if (filled == length)
        return;
    std::ifstream device("/dev/urandom", std::ios::binary);
    if (device.read(reinterpret_cast<char*>(target) + filled,
                    static_cast<std::streamsize>(length - filled)))
        return;
    std::random_device fallback;
    for (; filled < length; ++filled)
        target[filled] = static_cast<unsigned char>(fallback());
}

} // namespace ZkCommonNS
