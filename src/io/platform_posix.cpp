// The POSIX side of the resource code: file status, network file systems (statfs), loaded
// modules (dl_iterate_phdr, dladdr, dlopen) and the environment.
#include "io/platform.h"
#include "zkcommon/text/util.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <ext/stdio_filebuf.h>
#include <fcntl.h>
#include <istream>
#include <link.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace ZkCommonNS {

namespace {

// File system types that live on another machine (values of statfs' f_type).
const unsigned long kNetworkFileSystems[] = {
    0x6969,     // NFS
    0x517B,     // SMB
    0xFF534D42, // CIFS
    0xFE534D42, // SMB2
    0x5346414F, // AFS
    0x73757245, // Coda
    0x564C,     // NCP
    0x01021997, // 9P
    0x00C36400, // Ceph
    0x0BD00BD0, // Lustre
    0x47504653, // GPFS
};

std::string parentOf(const std::string& path) {
    size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return ".";
    if (slash == 0)
        return "/";
    return path.substr(0, slash);
}

struct ModuleSearch {
    std::string wanted[4];
    std::string found;
};

bool matchesModule(const std::string& fileName, const std::string& wanted) {
    if (wanted.empty() || fileName.compare(0, wanted.size(), wanted) != 0)
        return false;
    // "libfoo.so" also finds the versioned "libfoo.so.2".
    return fileName.size() == wanted.size() || fileName[wanted.size()] == '.';
}

int visitModule(struct dl_phdr_info* info, size_t, void* data) {
    auto* search = static_cast<ModuleSearch*>(data);
    if (!info->dlpi_name || !*info->dlpi_name)
        return 0;
    std::string path = info->dlpi_name;
    size_t slash = path.find_last_of('/');
    std::string fileName = slash == std::string::npos ? path : path.substr(slash + 1);
    for (const std::string& wanted : search->wanted) {
        if (matchesModule(fileName, wanted)) {
            search->found = path;
            return 1;
        }
    }
    return 0;
}

// A binary stream over a file descriptor that it owns.
class DescriptorStream : public std::iostream {
public:
    DescriptorStream(int fd, std::ios::openmode mode)
        : std::iostream(nullptr), m_buffer(fd, mode | std::ios::binary) {
        rdbuf(&m_buffer);
    }

private:
    __gnu_cxx::stdio_filebuf<char> m_buffer;
};

} // namespace

std::iostream* detail::platform::openRegularFile(const UnicodeString& path, OpenMode mode,
                                                 int64_t* size, int* error) {
    std::string native = nativePath(path);
    if (error)
        *error = ENOENT;
    if (native.empty())
        return nullptr;
    int flags = O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    std::ios::openmode streamMode = std::ios::in;
    switch (mode) {
    case OpenMode::kRead:
        flags |= O_RDONLY;
        break;
    case OpenMode::kWriteTruncate:
        flags |= O_WRONLY | O_CREAT;
        streamMode = std::ios::out;
        break;
    case OpenMode::kWriteAppend:
        flags |= O_WRONLY | O_CREAT | O_APPEND;
        streamMode = std::ios::out | std::ios::app;
        break;
    case OpenMode::kReadWrite:
        flags |= O_RDWR | O_CREAT;
        streamMode = std::ios::in | std::ios::out;
        break;
    }
    // O_NONBLOCK keeps the open itself from waiting on a FIFO; the test after it refuses
    // everything but a regular file before a byte is read or a file is truncated.
    const int fd = ::open(native.c_str(), flags, 0666);
    if (fd < 0) {
        if (error)
            *error = errno == ENXIO ? kNotRegularFile : errno; // a FIFO without a reader
        return nullptr;
    }
    struct stat status;
    const bool regular = ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    if (!regular || ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0 ||
        (mode == OpenMode::kWriteTruncate && ::ftruncate(fd, 0) != 0)) {
        if (error)
            *error = regular ? errno : kNotRegularFile;
        ::close(fd);
        return nullptr;
    }
    if (size)
        *size = static_cast<int64_t>(status.st_size);
    try {
        return new DescriptorStream(fd, streamMode);
    } catch (...) {
        ::close(fd);
        throw;
    }
}

std::string detail::platform::nativePath(const UnicodeString& path) {
    if (path.indexOf(u'\0') >= 0)
        return std::string();
    std::string out;
    path.toUTF8String(out);
    return out;
}

bool detail::platform::pathExists(const UnicodeString& path) {
    std::string native = nativePath(path);
    return !native.empty() && ::access(native.c_str(), F_OK) == 0;
}

detail::platform::FileKind detail::platform::statPath(const UnicodeString& path, int64_t* size) {
    std::string native = nativePath(path);
    struct stat status;
    if (native.empty() || ::stat(native.c_str(), &status) != 0)
        return FileKind::kMissing;
    if (S_ISDIR(status.st_mode))
        return FileKind::kDirectory;
    if (size)
        *size = static_cast<int64_t>(status.st_size);
    return FileKind::kFile;
}

bool detail::platform::isRegularFile(const UnicodeString& path) {
    std::string native = nativePath(path);
    struct stat status;
    return !native.empty() && ::stat(native.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool detail::platform::isNetworkPath(const UnicodeString& path) {
    std::string native = nativePath(path);
    if (native.empty())
        return false;
    // A file that does not exist yet lies where its nearest existing ancestor lies.
    for (int depth = 0; depth < 256; ++depth) {
        struct statfs info;
        if (::statfs(native.c_str(), &info) == 0) {
            unsigned long type = static_cast<unsigned long>(info.f_type) & 0xFFFFFFFFul;
            for (unsigned long network : kNetworkFileSystems) {
                if (type == network)
                    return true;
            }
            return false;
        }
        if (errno != ENOENT && errno != ENOTDIR)
            return false;
        std::string parent = parentOf(native);
        if (parent == native)
            return false;
        native = parent;
    }
    return false;
}

UnicodeString detail::platform::loadedModulePath(const std::string& name) {
    if (name.empty()) {
        Dl_info info;
        if (::dladdr(reinterpret_cast<void*>(&loadedModulePath), &info) && info.dli_fname)
            return UnicodeString::fromUTF8(info.dli_fname);
        return UnicodeString();
    }
    ModuleSearch search;
    std::string stem = name;
    size_t slash = stem.find_last_of('/');
    if (slash != std::string::npos)
        stem = stem.substr(slash + 1);
    search.wanted[0] = stem;
    size_t dot = stem.find_last_of('.');
    std::string bare = stem;
    if (dot != std::string::npos && (stem.compare(dot, std::string::npos, ".dll") == 0 ||
                                     stem.compare(dot, std::string::npos, ".DLL") == 0))
        bare = stem.substr(0, dot);
    else if (dot != std::string::npos)
        bare.clear(); // another extension: only the exact name is wanted
    if (!bare.empty()) {
        search.wanted[1] = bare + ".so";
        search.wanted[2] = "lib" + bare + ".so";
    }
    ::dl_iterate_phdr(&visitModule, &search);
    if (search.found.empty())
        return UnicodeString();
    char* resolved = ::realpath(search.found.c_str(), nullptr);
    UnicodeString result = UnicodeString::fromUTF8(resolved ? resolved : search.found.c_str());
    std::free(resolved);
    return result;
}

void* detail::platform::loadLibrary(const UnicodeString& path) {
    std::string native = nativePath(path);
    return native.empty() ? nullptr : ::dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void detail::platform::freeLibrary(void* module) {
    ::dlclose(module);
}

void* detail::platform::findSymbol(void* module, const char* name) {
    return ::dlsym(module, name);
}

bool detail::platform::getEnvironment(const char* name, UnicodeString& value) {
    const char* text = std::getenv(name);
    if (!text)
        return false;
    value = UnicodeString::fromUTF8(text);
    return true;
}

bool ZkUtil::isSystemLongPathEnabled() noexcept {
    return true;
}

} // namespace ZkCommonNS
