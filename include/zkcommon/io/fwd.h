// Forward declarations of the resource and stream classes.
#ifndef ZKCOMMON_IO_FWD_H
#define ZKCOMMON_IO_FWD_H

namespace ZkCommonNS {
class ZkUri;
class ZkUriReferenceResolver2;
class ZkICUIStreamBuf;
class ZkICUIStream;
class ZkRQCIStreamBuf;
class ZkRQCIStream;
class ZkRQCOStreamBuf;
class ZkRQCOStream;
class ZkCustomStreamController;
class ZkCustomStreamBuf;
class ZkCustomStream;
class ZkStrStream;
class ZkMemStreamBuf;
class ZkMemStream;
class ZkTempFile;
class ZkUUID;
} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_FWD_H
