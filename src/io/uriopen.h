// The branches of ZkUri::getIStream beyond local files (archives, data: URIs, HTTP) and the
// remote side of checkRedirection register here when their code is built in.
#ifndef ZKCOMMON_SRC_IO_URIOPEN_H
#define ZKCOMMON_SRC_IO_URIOPEN_H

#include "zkcommon/io/uri.h"

namespace ZkCommonNS {
namespace detail {

enum class UriBranch { kJar = 0, kData = 1, kHttp = 2 };

/// Opens `uri` for its branch; null when the resource cannot be had (`errorText`, when not
/// null, may receive the reason). Must not throw.
using UriStreamOpener = std::istream* (*)(const ZkUri& uri, ZkUri::ContentInfo* info,
                                          UnicodeString* errorText);
void setUriStreamOpener(UriBranch branch, UriStreamOpener opener);

/// Follows the redirections of a remote URI; false when it cannot tell.
using UriRedirectionResolver = bool (*)(const UnicodeString& uri, UnicodeString& finalUri);
void setUriRedirectionResolver(UriRedirectionResolver resolver);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_URIOPEN_H
