#include "camera_library/library.h"

#include <atomic>
#include <memory>

#include "camera_library/installation.h"
#include "camera_library/platform/process_exit.h"
#include "camera_library/platform/process_fork.h"

namespace lmlib64 {

namespace {

std::atomic<Library *> current{nullptr};

// A child process has none of its parent's threads, so its copy of the parent's library may be locked or half changed
// for ever: it is neither used nor freed. The child's first call makes a new library.
void leaveParentsLibrary() {
    current.store(nullptr);
}

void stopThread() {
    if (Library *library = current.load()) {
        library->executor.stop();
    }
}

}  // namespace

Library::Library() : tree(installationPaths()), executor(tree, findCommand) {}

// Without a lock, which a fork at the wrong moment would leave locked in the child: if two threads get here at the same
// time, one of the two libraries is dropped. Actions may be registered more than once, and do no harm then.
Library &Library::make() {
    std::unique_ptr<Library> made(new Library());
    callInForkedChild(leaveParentsLibrary);
    callAtExit(stopThread);
    Library *present = nullptr;
    return current.compare_exchange_strong(present, made.get()) ? *made.release() : *present;
}

Library &Library::instance() {
    Library *library = current.load();
    return library == nullptr ? make() : *library;
}

void Library::finalize() {
    executor.finalize();
    debugLog.clear();
}

}  // namespace lmlib64
