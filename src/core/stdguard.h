// Standard exceptions become ZkError at the library's outer operations, so that a caller sees
// only ZkError.
#ifndef ZKCOMMON_SRC_CORE_STDGUARD_H
#define ZKCOMMON_SRC_CORE_STDGUARD_H

namespace ZkCommonNS {
namespace detail {

/// For a catch (...) block: a ZkError goes on as it is; std::bad_alloc becomes code 1 and any
/// other standard exception code 2, through ZkError's wrapping constructors; anything else goes
/// on unchanged.
[[noreturn]] void rethrowAsZkError();

/// Runs `action`, turning standard exceptions into ZkError.
template <class Action> auto guardStandardExceptions(Action&& action) -> decltype(action()) {
    try {
        return action();
    } catch (...) {
        rethrowAsZkError();
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CORE_STDGUARD_H
