// Calls an action in each child process that fork() makes. The library uses this to give the child a new, empty tree of
// nodes instead of a copy of the parent's nodes. Each system has its own source file.
#pragma once

namespace lmlib64 {

// Registers an action that is called in every child process, on its only thread, before fork() returns there. Does
// nothing on Windows, which has no fork(). The action must be async-signal-safe. Throws std::bad_alloc if the action
// cannot be registered. Call this only from code that is linked into the library, because the registration ends when
// the binary that made it is unloaded.
void callInForkedChild(void (*action)());

}  // namespace lmlib64
