#include "camera_library/library.h"

#include <atomic>
#include <memory>

#include "camera_library/installation.h"
#include "camera_library/platform/process_exit.h"
#include "camera_library/platform/process_fork.h"

namespace lmlib64 {

namespace {

std::atomic<Library *> current{nullptr};

// A child process has none of its parent's threads, so its copy of the parent's library may stay locked or half changed
// forever. The child therefore neither uses nor frees this copy; its first call makes a new library.
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

// This function uses no lock, because a fork at the wrong moment would leave the lock locked in the child. If two
// threads get here at the same time, one of the two libraries is dropped. The functions for forks and for the exit are
// then registered twice, which does no harm.
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
