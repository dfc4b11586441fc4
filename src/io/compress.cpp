// ZkUtil::inflate, inflate2 and deflate: one-shot zlib conversions between memory and a stream.
#include "zkcommon/text/util.h"

#include <ostream>
#include <zlib.h>

namespace ZkCommonNS {

namespace {

constexpr unsigned int kPiece = 4096;

// Runs inflate over the whole block, writing the output in pieces. Only a stream that reaches
// its end counts: data that stops early is a failure.
bool inflateInto(std::ostream& out, const unsigned char* data, unsigned int size, bool raw) {
    if (!data)
        return false;
    z_stream zs{};
    if ((raw ? ::inflateInit2(&zs, -MAX_WBITS) : ::inflateInit(&zs)) != Z_OK)
        return false;
    zs.next_in = const_cast<Bytef*>(data);
    zs.avail_in = size;
    unsigned char piece[kPiece];
    int status = Z_OK;
    while (status == Z_OK) {
        zs.next_out = piece;
        zs.avail_out = kPiece;
        status = ::inflate(&zs, Z_NO_FLUSH);
        const unsigned int have = kPiece - zs.avail_out;
        if (have > 0 && !out.write(reinterpret_cast<const char*>(piece), have))
            break;
        // Z_BUF_ERROR with room left means the input ran out before the end.
        if (status == Z_BUF_ERROR && zs.avail_out == 0)
            status = Z_OK;
    }
    ::inflateEnd(&zs);
    return status == Z_STREAM_END && out.good();
}

} // namespace

bool ZkUtil::inflate(std::ostream& out, const unsigned char* data, unsigned int size) {
    return inflateInto(out, data, size, /*raw=*/false);
}

bool ZkUtil::inflate2(std::ostream& out, const unsigned char* data, unsigned int size) {
    return inflateInto(out, data, size, /*raw=*/true);
}

bool ZkUtil::deflate(std::ostream& out, const unsigned char* data, unsigned int size) {
    if (!data && size > 0)
        return false;
    z_stream zs{};
    if (::deflateInit(&zs, Z_BEST_COMPRESSION) != Z_OK)
        return false;
    static const Bytef kEmpty[1] = {0};
    zs.next_in = const_cast<Bytef*>(data ? data : kEmpty);
    zs.avail_in = size;
    unsigned char piece[kPiece];
    int status = Z_OK;
    while (status == Z_OK) {
        zs.next_out = piece;
        zs.avail_out = kPiece;
        status = ::deflate(&zs, Z_FINISH);
        const unsigned int have = kPiece - zs.avail_out;
        if (have > 0 && !out.write(reinterpret_cast<const char*>(piece), have))
            break;
    }
    ::deflateEnd(&zs);
    return status == Z_STREAM_END && out.good();
}

} // namespace ZkCommonNS
