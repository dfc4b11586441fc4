// ZkUtil's life cycle: the registry of cache-dropping functions run by cleanup().
#include "zkcommon/text/util.h"

#include "text/utilcleanup.h"
#include "zkcommon/core/lock.h"

#include <vector>

namespace ZkCommonNS {

namespace {

// Function-local statics so that registration from other files' static initialisers works
// whatever the order of initialisation.
std::vector<detail::UtilCleanupFunction>& cleanupFunctions() {
    static std::vector<detail::UtilCleanupFunction> s_functions;
    return s_functions;
}

ZkLock& cleanupLock() {
    static ZkLock s_lock;
    return s_lock;
}

} // namespace

void detail::registerUtilCleanup(UtilCleanupFunction function) {
    if (!function)
        return;
    ZkMutex guard(cleanupLock());
    cleanupFunctions().push_back(function);
}

void ZkUtil::cleanup() {
    std::vector<detail::UtilCleanupFunction> functions;
    {
        ZkMutex guard(cleanupLock());
        functions = cleanupFunctions();
    }
    for (detail::UtilCleanupFunction function : functions)
        function();
}

} // namespace ZkCommonNS
