// Finding, placing and removing nodes below a root by path: the rules of lmlib64.h on absent nodes, leaves
// and array ends. Knows neither protected nodes nor locks. Whatever a function here returns or throws, the
// tree is unchanged unless it returned LmLibResultOperationSucceeded.
#pragma once

#include "camera_library/tree/node.h"
#include "camera_library/tree/path.h"

namespace lmlib64 {

// Finds the node. LmLibResultItemInexistent; LmLibResultItemTypeNotCompatible below a leaf, or by name in
// an array or by index in an object.
LmLibResult findNode(const Node &root, const Path &path, const Node *&found);

// Puts the value at the path, makes the objects and arrays on the way, and leaves in the value what was
// there before (null where nothing was). Errors as findNode, but for the absent node, and
// LmLibResultItemPathInvalid for an index beyond the end of its array.
LmLibResult placeNode(Node &root, const Path &path, Node &value);

// Removes the node, and leaves it in removed. Errors as findNode. The path is not the root.
LmLibResult removeNode(Node &root, const Path &path, Node &removed);

}  // namespace lmlib64
