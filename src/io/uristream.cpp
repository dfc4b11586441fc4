// Opening resources through ZkUri: the caller's resolver, local files, and the registered
// branches for other schemes; output and read-write files; redirections.
#include "io/platform.h"
#include "io/uriopen.h"
#include "zkcommon/core/error.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/io/uri.h"

#include <atomic>
#include <memory>
#include <sstream>
#include <unordered_map>

namespace ZkCommonNS {

namespace {

constexpr int32_t kUnsetSetting = static_cast<int32_t>(0x80000000u);

std::atomic<ZkUriReferenceResolver2*> s_resolver2{nullptr};
std::atomic<detail::UriStreamOpener> s_openers[3] = {{nullptr}, {nullptr}, {nullptr}};
std::atomic<detail::UriRedirectionResolver> s_redirectionResolver{nullptr};

ZkLock s_redirectionLock;
std::unordered_map<std::u16string, UnicodeString>* s_redirections = nullptr;

std::u16string toKey(const UnicodeString& text) {
    return std::u16string(text.getBuffer(), static_cast<size_t>(text.length()));
}

void appendToStream(int size, const char* data, void* stream) {
    if (size <= 0 || !data || !stream)
        return;
    static_cast<std::stringstream*>(stream)->write(data, size);
}

} // namespace

void detail::setUriStreamOpener(UriBranch branch, UriStreamOpener opener) {
    s_openers[static_cast<int>(branch)].store(opener);
}

void detail::setUriRedirectionResolver(UriRedirectionResolver resolver) {
    s_redirectionResolver.store(resolver);
}

ZkUri::ContentInfo::ContentInfo(const ContentInfo* other)
    : length(-1), connectTimeout(kUnsetSetting), connectRetries(-1), connectBackoff(-1), flags(0) {
    if (other)
        *this = *other;
}

ZkUriReferenceResolver2* ZkUri::setUriReferenceResolver2(ZkUriReferenceResolver2* resolver) {
    return s_resolver2.exchange(resolver);
}

ZkUriReferenceResolver2* ZkUri::getUriReferenceResolver2() {
    return s_resolver2.load();
}

std::istream* ZkUri::getStreamFromResolver() const {
    ZkUriReferenceResolver2* resolver = s_resolver2.load();
    if (!resolver)
        return nullptr;
    auto stream =
        std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    UnicodeString text(m_uri);
    if (!resolver->resolveReference(text.getTerminatedBuffer(), &appendToStream, stream.get()))
        return nullptr;
    stream->clear();
    stream->seekg(0);
    return stream.release();
}

std::istream* ZkUri::getIStream(ContentInfo* info, UnicodeString* errorText) const {
    try {
        if (std::istream* resolved = getStreamFromResolver())
            return resolved;
        if (isFile()) {
            UnicodeString path = getLocalPath();
            if (!path.isEmpty()) {
                // No "\\?\" prefix is needed for long paths here: POSIX has no 260 limit.
                // Only a regular file opens: a FIFO would block, a device stream without end.
                int64_t size = -1;
                int error = 0;
                std::istream* file = detail::platform::openRegularFile(
                    path, detail::platform::OpenMode::kRead, &size, &error);
                if (file && info)
                    info->length = size;
                if (!file && errorText) {
                    *errorText = error == detail::platform::kNotRegularFile
                                     ? UnicodeString(u"not a regular file")
                                     : ZkError::getLastErrorMessage(static_cast<unsigned>(error));
                }
                return file;
            }
        }
        detail::UriStreamOpener opener = nullptr;
        if (isJarScheme())
            opener = s_openers[static_cast<int>(detail::UriBranch::kJar)].load();
        else if (isDataScheme())
            opener = s_openers[static_cast<int>(detail::UriBranch::kData)].load();
        else if (isHttpScheme())
            opener = s_openers[static_cast<int>(detail::UriBranch::kHttp)].load();
        return opener ? opener(*this, info, errorText) : nullptr;
    } catch (const std::exception&) {
        // A resource that cannot be had is a null stream; the caller raises its own error.
        return nullptr;
    }
}

std::ostream* ZkUri::getOStream(bool append) const {
    if (m_uri.isEmpty() || !isFile() || isRemote())
        return nullptr;
    try {
        return detail::platform::openRegularFile(getLocalPath(),
                                                 append
                                                     ? detail::platform::OpenMode::kWriteAppend
                                                     : detail::platform::OpenMode::kWriteTruncate,
                                                 nullptr);
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::iostream* ZkUri::getFStream() const {
    if (m_uri.isEmpty() || !isFile() || isRemote())
        return nullptr;
    try {
        // A missing file is created; an existing one is never truncated.
        return detail::platform::openRegularFile(getLocalPath(),
                                                 detail::platform::OpenMode::kReadWrite, nullptr);
    } catch (const std::exception&) {
        return nullptr;
    }
}

void ZkUri::checkRedirection() {
    if (!isHttpScheme())
        return;
    detail::UriRedirectionResolver resolver = s_redirectionResolver.load();
    std::u16string key = toKey(m_uri);
    {
        ZkMutex guard(s_redirectionLock);
        if (s_redirections) {
            auto found = s_redirections->find(key);
            if (found != s_redirections->end()) {
                m_uri = found->second;
                return;
            }
        }
    }
    UnicodeString finalUri;
    if (!resolver || !resolver(m_uri, finalUri) || finalUri.isEmpty())
        return;
    ZkMutex guard(s_redirectionLock);
    if (!s_redirections)
        s_redirections = new std::unordered_map<std::u16string, UnicodeString>();
    (*s_redirections)[key] = finalUri;
    m_uri = finalUri;
}

void ZkUri::cleanup() {
    ZkMutex guard(s_redirectionLock);
    delete s_redirections;
    s_redirections = nullptr;
}

} // namespace ZkCommonNS
