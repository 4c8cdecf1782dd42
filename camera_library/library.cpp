#include "camera_library/library.h"

#include "camera_library/installation.h"
#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

Library::Library() : tree(installationPaths()), executor(tree, findCommand) {}

Library &Library::instance() {
    static Library &library = *[] {
        auto *made = new Library();
        callAtExit([] { instance().executor.stop(); });
        return made;
    }();
    return library;
}

void Library::finalize() {
    executor.finalize();
    debugLog.clear();
}

}  // namespace lmlib64
