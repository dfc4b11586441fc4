// The hook through which the error record turns URIs into local paths.
#include "core/localpath.h"

#include <atomic>

namespace ZkCommonNS {
namespace detail {

namespace {
std::atomic<LocalPathConverter> s_converter{nullptr};
}

void setLocalPathConverter(LocalPathConverter converter) {
    s_converter.store(converter);
}

UnicodeString uriToLocalPath(const UnicodeString& uri) {
    LocalPathConverter converter = s_converter.load();
    return converter ? converter(uri) : uri;
}

} // namespace detail
} // namespace ZkCommonNS
