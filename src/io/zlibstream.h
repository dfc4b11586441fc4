// The z_stream behind the compression streams, kept out of the public headers.
#ifndef ZKCOMMON_SRC_IO_ZLIBSTREAM_H
#define ZKCOMMON_SRC_IO_ZLIBSTREAM_H

#include <zlib.h>

namespace ZkCommonNS {
namespace detail {

struct ZlibStream {
    z_stream stream{};
};

/// zlib counts input in 32-bit units: larger blocks are fed in slices of at most this size.
constexpr unsigned long long kZlibSlice = 1ull << 30;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_IO_ZLIBSTREAM_H
