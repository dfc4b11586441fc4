// The error record shows positions as local paths; the URI subsystem installs the converter.
#ifndef ZKCOMMON_SRC_CORE_LOCALPATH_H
#define ZKCOMMON_SRC_CORE_LOCALPATH_H

#include "zkcommon/core/unicode.h"

namespace ZkCommonNS {
namespace detail {

using LocalPathConverter = UnicodeString (*)(const UnicodeString& uri);

/// Installed once at load time by the URI code, which lies above core.
void setLocalPathConverter(LocalPathConverter converter);

/// The local path of `uri` through the installed converter; the text itself when none is.
UnicodeString uriToLocalPath(const UnicodeString& uri);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CORE_LOCALPATH_H
