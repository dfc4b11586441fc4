// The link between a document and the nodes it made: it outlives the document, so that a node
// still held by someone can tell that its document is gone.
#ifndef ZKCOMMON_SRC_DOM_DOCUMENTLINK_H
#define ZKCOMMON_SRC_DOM_DOCUMENTLINK_H

#include "zkcommon/dom/fwd.h"

#include <atomic>

namespace ZkCommonNS {
namespace detail {

struct DocumentLink {
    /// Null once the document's destructor ran. Written only there; a tree belongs to one
    /// thread at a time.
    ZkDocument* document;
    /// The document and every node that carries the link; nodes may be released on any thread.
    std::atomic<int> count;
};

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_DOM_DOCUMENTLINK_H
