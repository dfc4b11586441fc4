// ZkTempFile::inflate: zlib-format data decompressed into the owned temporary file.
#include "zkcommon/io/tempfile.h"
#include "zkcommon/text/util.h"

#include <fstream>

namespace ZkCommonNS {

bool ZkTempFile::inflate(const unsigned char* data, unsigned int size) const {
    if (m_fileName.isEmpty())
        return false;
    std::ofstream file(m_fileName.c_str(), std::ios::out | std::ios::binary | std::ios::trunc);
    if (!file.is_open())
        return false;
    const bool inflated = ZkUtil::inflate(file, data, size);
    file.close();
    return inflated && !file.fail();
}

} // namespace ZkCommonNS
