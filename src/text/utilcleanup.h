// The registry behind ZkUtil::cleanup: each file of ZkUtil that keeps a process-wide cache
// registers one function that drops it.
#ifndef ZKCOMMON_SRC_TEXT_UTILCLEANUP_H
#define ZKCOMMON_SRC_TEXT_UTILCLEANUP_H

namespace ZkCommonNS {
namespace detail {

using UtilCleanupFunction = void (*)();

/// Adds `function` to the list run by ZkUtil::cleanup; registering twice runs it twice.
/// Typically called from a static initialiser:
///   static const bool s_registered = (registerUtilCleanup(&dropMyCache), true);
void registerUtilCleanup(UtilCleanupFunction function);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_TEXT_UTILCLEANUP_H
