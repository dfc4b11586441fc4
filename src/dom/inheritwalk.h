// Walks that inherit a property from a node's surroundings (base URI, source position,
// namespace scope) ask every node through its virtual getter, so that an application's node
// class can answer for itself, and still never recurse: while a walk asks a node, the library's
// own rule on that node does not call onwards but hands the walk the next node to ask.
#ifndef ZKCOMMON_SRC_DOM_INHERITWALK_H
#define ZKCOMMON_SRC_DOM_INHERITWALK_H

#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/dom/fwd.h"

namespace ZkCommonNS {
namespace detail {

enum class InheritKind {
    kBaseUri,
    kLine,
    kColumn,
    kNamespaceUri,
    kPrefix,
    kDefaultNamespace,
    kDeepClone ///< an element's clone leaves its children to the walk
};
constexpr int kInheritKinds = 7;

struct InheritWalk {
    /// The node being asked now; only its own default rule hands over.
    const ZkNode* asking = nullptr;
    /// Set by a default rule that handed over; `next` is whom to ask then (null: nobody).
    bool deferred = false;
    const ZkNode* next = nullptr;
    /// Base URI: a relative xml:base that the answer from above is to resolve.
    UnicodeString relative;
    /// Prefix look-up: the element whose scope decides whether a declaration is hidden.
    const ZkNode* start = nullptr;
    /// Position: `next` is a previous sibling, whose -1 sends the walk on to the parent.
    bool sibling = false;
};

/// The walk of that kind that is asking `self` right now on this thread, or null.
InheritWalk* walkAsking(InheritKind kind, const ZkNode* self);

/// Installs a walk for the current thread and restores the one before it when it goes.
class InheritScope {
public:
    InheritScope(InheritKind kind, InheritWalk* walk);
    ~InheritScope();
    InheritScope(const InheritScope&) = delete;
    InheritScope& operator=(const InheritScope&) = delete;

private:
    InheritKind m_kind;
    InheritWalk* m_previous;
};

/// Hands the walk over to `next` (null ends it with the rule's empty answer).
inline void deferTo(InheritWalk* walk, const ZkNode* next) {
    walk->asking = nullptr;
    walk->deferred = true;
    walk->next = next;
}

/// The base URI of a node, asked from `first` upwards; `relative` is the caller's own relative
/// xml:base, resolved against what the walk finds (empty for none).
UnicodeString inheritBaseUri(const ZkNode* first, const UnicodeString& relative);
/// The position asked first of `first`, a previous sibling when `sibling` is true.
int inheritPosition(InheritKind kind, const ZkNode* first, bool sibling);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_DOM_INHERITWALK_H
