// Forward declarations of the core frame.
#ifndef ZKCOMMON_CORE_FWD_H
#define ZKCOMMON_CORE_FWD_H

namespace ZkCommonNS {
class ZkObjectBase;
class ZkRCObject;
template <class T> class ZkPtr;
class ZkLock;
class ZkMutex;
class ZkError;
class ZkName;
class ZkNameTable;
class ZkNameList;
class ZkNameListInstance;
} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_FWD_H
