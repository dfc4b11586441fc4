// ZkTempFile and ZkUUID: fresh names under a process-wide lock, creation with retries, and
// removal that waits for other processes to let go of a file.
#include "zkcommon/io/tempfile.h"

#include "io/tempplatform.h"
#include "zkcommon/core/error.h"
#include "zkcommon/core/lock.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <random>

namespace ZkCommonNS {

namespace {

constexpr int kCreateAttempts = 100;
constexpr int kRemoveAttempts = 10;
constexpr unsigned kRemoveWaitMilliseconds = 1000;

// The name counter and the directory cache, both behind s_tempLock.
struct TempNames {
    UnicodeString directory;
    uint32_t counter = 0;
    bool seeded = false;
};

ZkLock s_tempLock;
TempNames s_tempNames;

UnicodeString fromBytes(const char* text) {
    return UnicodeString::fromUTF8(text ? text : "");
}

/// The cached temporary directory; the caller holds s_tempLock.
const UnicodeString& cachedDirectory() {
    if (s_tempNames.directory.isEmpty())
        s_tempNames.directory = detail::platform::temporaryDirectory();
    return s_tempNames.directory;
}

UnicodeString reasonFor(const UnicodeString& name, const char16_t* what, int error) {
    UnicodeString text(name);
    text.append(what).append(u'\n').append(
        ZkError::getLastErrorMessage(static_cast<unsigned long>(error)));
    return text;
}

} // namespace

// ---- ZkUUID ----

ZkUUID::ZkUUID() {
    detail::platform::randomBytes(m_bytes, sizeof m_bytes);
    m_bytes[6] = static_cast<unsigned char>((m_bytes[6] & 0x0F) | 0x40); // version 4: random
    m_bytes[8] = static_cast<unsigned char>((m_bytes[8] & 0x3F) | 0x80); // the RFC 4122 variant
}

ZkUUID::ZkUUID(const unsigned char* bytes) {
    for (size_t i = 0; i < sizeof m_bytes; ++i)
        m_bytes[i] = bytes ? bytes[i] : 0;
}

UnicodeString ZkUUID::toString(bool hyphens) const {
    static const char16_t kDigits[] = u"0123456789abcdef";
    UnicodeString text;
    for (size_t i = 0; i < sizeof m_bytes; ++i) {
        if (hyphens && (i == 4 || i == 6 || i == 8 || i == 10))
            text.append(u'-');
        text.append(kDigits[m_bytes[i] >> 4]).append(kDigits[m_bytes[i] & 0x0F]);
    }
    return text;
}

uint32_t ZkUUID::toUint32() const noexcept {
    uint32_t folded = 0;
    for (size_t i = 0; i < sizeof m_bytes; i += 4)
        folded ^= uint32_t(m_bytes[i]) << 24 | uint32_t(m_bytes[i + 1]) << 16 |
                  uint32_t(m_bytes[i + 2]) << 8 | uint32_t(m_bytes[i + 3]);
    return folded;
}

bool ZkUUID::operator==(const ZkUUID& other) const noexcept {
    for (size_t i = 0; i < sizeof m_bytes; ++i)
        if (m_bytes[i] != other.m_bytes[i])
            return false;
    return true;
}

// ---- names ----

ZkCStr ZkTempFile::getTempDirectory() {
    ZkMutex guard(s_tempLock);
    return ZkCStr(cachedDirectory());
}

ZkCStr ZkTempFile::getTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                               const UnicodeString& extension) {
    return getTempFileEx(directory, prefix, extension, true);
}

ZkCStr ZkTempFile::getTempFile(const char* directory, const char* prefix, const char* extension) {
    return getTempFileEx(fromBytes(directory), fromBytes(prefix), fromBytes(extension), true);
}

ZkCStr ZkTempFile::getTempFileEx(const char* directory, const char* prefix, const char* extension,
                                 bool create) {
    return getTempFileEx(fromBytes(directory), fromBytes(prefix), fromBytes(extension), create);
}

ZkCStr ZkTempFile::getTempFileEx(const UnicodeString& directory, const UnicodeString& prefix,
                                 const UnicodeString& extension, bool create) {
    ZkMutex guard(s_tempLock);
    const UnicodeString base = directory.isEmpty() ? cachedDirectory() : directory;
    if (!s_tempNames.seeded) {
        const auto now = std::chrono::system_clock::now().time_since_epoch().count();
        std::mt19937 generator(static_cast<std::mt19937::result_type>(now));
        s_tempNames.counter = static_cast<uint32_t>(generator());
        s_tempNames.seeded = true;
    }
    const unsigned long processId = detail::platform::processId();
    int failures = 0;
    for (;;) {
        char number[32];
        std::snprintf(number, sizeof number, "%03lx_%04x", processId,
                      static_cast<unsigned>(s_tempNames.counter++));
        UnicodeString candidate(base);
        candidate.append(prefix).append(UnicodeString(number, -1, US_INV)).append(extension);
        if (!create)
            return ZkCStr(candidate);
        if (detail::platform::entryExists(candidate))
            continue; // taken: the next number, without counting a failure
        int error = 0;
        const auto created = detail::platform::createNewFile(candidate, error);
        if (created == detail::platform::CreateResult::kCreated)
            return ZkCStr(candidate);
        if (created == detail::platform::CreateResult::kExists)
            continue; // another process won the name between the test and the open
        if (!removeTempFile(candidate))
            throwCommonError(ZK_ERROR_CREATE_TEMP_FILE, 0,
                             reasonFor(candidate, u" (cannot remove)", error));
        if (++failures >= kCreateAttempts)
            throwCommonError(ZK_ERROR_CREATE_TEMP_FILE, 0,
                             reasonFor(candidate, u" (cannot create)", error));
    }
}

bool ZkTempFile::removeTempFile(const char* path) {
    return removeTempFile(fromBytes(path));
}

bool ZkTempFile::removeTempFile(const UnicodeString& path) {
    if (!detail::platform::entryExists(path))
        return true;
    for (int attempt = 1; attempt <= kRemoveAttempts; ++attempt) {
        int error = 0;
        switch (detail::platform::removeUnlockedFile(path, error)) {
        case detail::platform::RemoveResult::kRemoved:
            return true;
        case detail::platform::RemoveResult::kFailed:
            return false;
        case detail::platform::RemoveResult::kLocked:
            // Another process still reads it; give it time to finish.
            if (attempt < kRemoveAttempts)
                detail::platform::sleepMilliseconds(kRemoveWaitMilliseconds);
            break;
        }
    }
    return false;
}

// ---- the owned file ----

ZkTempFile::ZkTempFile() = default;

ZkTempFile::ZkTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                       const UnicodeString& extension)
    : m_fileName(getTempFileEx(directory, prefix, extension, true)) {}

ZkTempFile::ZkTempFile(const char* directory, const char* prefix, const char* extension)
    : m_fileName(getTempFileEx(directory, prefix, extension, true)) {}

ZkTempFile::ZkTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                       const UnicodeString& extension, bool create)
    : m_fileName(getTempFileEx(directory, prefix, extension, create)) {}

ZkTempFile::ZkTempFile(const char* directory, const char* prefix, const char* extension,
                       bool create)
    : m_fileName(getTempFileEx(directory, prefix, extension, create)) {}

ZkTempFile::~ZkTempFile() noexcept(false) {
    // A second exception during unwinding would end the process.
    if (std::uncaught_exceptions() > 0) {
        try {
            remove();
        } catch (const ZkError&) {
        }
        return;
    }
    remove();
}

void ZkTempFile::remove() const {
    if (m_fileName.isEmpty())
        return;
    if (!removeTempFile(m_fileName)) {
        UnicodeString text(m_fileName);
        throwCommonError(ZK_ERROR_REMOVE_TEMP_FILE, 0, text.append(u'\n'));
    }
    // Fails, as it should, while anything else lies in the directory.
    if (!m_directory.isEmpty())
        detail::platform::removeDirectory(m_directory);
}

const ZkCStr& ZkTempFile::setFileName(const UnicodeString& directory, const UnicodeString& prefix,
                                      const UnicodeString& extension) {
    remove();
    m_fileName = UnicodeString();
    m_directory.remove();
    m_fileName = getTempFileEx(directory, prefix, extension, true);
    return m_fileName;
}

const ZkCStr& ZkTempFile::setFileName(const char* directory, const char* prefix,
                                      const char* extension) {
    return setFileName(fromBytes(directory), fromBytes(prefix), fromBytes(extension));
}

const ZkCStr& ZkTempFile::setFileName(const UnicodeString& name) {
    remove();
    m_directory.remove();
    m_fileName = name;
    return m_fileName;
}

const ZkCStr& ZkTempFile::setFileName(const char* name) {
    return setFileName(fromBytes(name));
}

ZkCStr ZkTempFile::releaseFileName() {
    ZkCStr name(m_fileName);
    m_fileName = UnicodeString();
    m_directory.remove();
    return name;
}

ZkCStr ZkTempFile::getTempFileInUUIDDirectory(const UnicodeString& name) {
    UnicodeString directory;
    {
        ZkMutex guard(s_tempLock);
        directory = cachedDirectory();
    }
    directory.append(ZkUUID().toString()).append(u'/');
    m_directory = directory;
    detail::platform::makeDirectory(directory);
    UnicodeString path(directory);
    path.append(name);
    int error = 0;
    detail::platform::createNewFile(path, error);
    return ZkCStr(path);
}

ZkCStr ZkTempFile::getTempFileInUUIDDirectory(const char* name) {
    return getTempFileInUUIDDirectory(fromBytes(name));
}

const ZkCStr& ZkTempFile::setFileNameInUUIDDirectory(const UnicodeString& name) {
    remove();
    m_fileName = UnicodeString();
    m_directory.remove();
    m_fileName = getTempFileInUUIDDirectory(name);
    return m_fileName;
}

const ZkCStr& ZkTempFile::setFileNameInUUIDDirectory(const char* name) {
    return setFileNameInUUIDDirectory(fromBytes(name));
}

} // namespace ZkCommonNS
