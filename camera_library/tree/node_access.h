// Finds, places and removes the node at a path below a root. The rules for absent nodes, leaves and the ends of arrays
// are those of lmlib64.h. Nothing here checks for protected nodes or uses a lock. If a function throws, or returns any
// code other than LmLibResultOperationSucceeded, the tree is unchanged.
#pragma once

#include "camera_library/tree/node.h"
#include "camera_library/tree/path.h"

namespace lmlib64 {

// Finds the node. Returns LmLibResultItemInexistent if the node is absent. Returns LmLibResultItemTypeNotCompatible if
// the path goes below a leaf, has a name where an array is, or has an index where an object is.
LmLibResult findNode(const Node &root, const Path &path, const Node *&found);

// Puts the value at the path and makes the objects and arrays on the way that do not exist yet. Leaves the previous
// value in `value`, or null if there was none. Returns LmLibResultItemTypeNotCompatible in the same cases as findNode.
// Returns LmLibResultItemPathInvalid if an index is greater than the number of elements of its array.
LmLibResult placeNode(Node &root, const Path &path, Node &value);

// Removes the node and leaves it in `removed`. Returns the same errors as findNode. The path must not be the root.
LmLibResult removeNode(Node &root, const Path &path, Node &removed);

}  // namespace lmlib64
