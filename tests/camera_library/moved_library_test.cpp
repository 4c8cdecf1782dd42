// Tests copies of the library in other folders than the one where it was built. Each copy is loaded and unloaded while
// the process runs.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <thread>

#include "camera_library/lmlib64.h"

namespace {

namespace fs = std::filesystem;

class MovedLibrary : public testing::Test {
public:
    MovedLibrary() {
        std::string name = (fs::temp_directory_path() / "lmlib64-XXXXXX").string();
        root = mkdtemp(name.data());
    }
    ~MovedLibrary() override { fs::remove_all(root); }

protected:
    // Copies the library to the folder, loads it from there and returns the paths that it reports.
    static std::string pathsOf(const fs::path &folder) {
        fs::create_directories(folder);
        const fs::path file = folder / fs::path(LIBRARY_FILE).filename();
        fs::copy_file(LIBRARY_FILE, file);
        return load(file);
    }
    static std::string expected(const fs::path &base) {
        return (base / "share/lmcaltab/manual").string() + "\n" + (base / "bin/LmView").string();
    }

    // Loads the library and returns the paths that it reports. The library is used on a thread that ends before the
    // library is unloaded, because the thread-local storage of a running thread would keep the library loaded. The
    // library is unloaded without being finalised, while its own thread runs commands or is about to run them.
    static std::string load(const fs::path &file) {
        void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            return dlerror();
        }
        const auto getString = reinterpret_cast<decltype(&lmLibGetString)>(dlsym(library, "lmLibGetString"));
        const auto setString = reinterpret_cast<decltype(&lmLibSetString)>(dlsym(library, "lmLibSetString"));
        const auto setJson = reinterpret_cast<decltype(&lmLibSetJson)>(dlsym(library, "lmLibSetJson"));
        std::string text;
        std::thread([&] {
            text = getString(nullptr, "/Path/Manual");
            text += '\n';
            text += getString(nullptr, "/Path/Application/LmView");
            EXPECT_STREQ(getString(nullptr, "/Path/Version"), LMLIB_VERSION);
            for (const char *slot : {"/Execute/a", "/Execute/b", "/Execute/c"}) {
                setJson(nullptr, (std::string(slot) + "/Parameters").c_str(),
                        R"({"ImageSize":2000,"Patterns":[{"GridSpacing":12},{"GridSpacing":12}]})");
                setString(nullptr, (std::string(slot) + "/Command").c_str(), "GenerateCalibrationPattern");
            }
        }).join();
        dlclose(library);
        EXPECT_EQ(dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
        return text;
    }

    fs::path root;
};

TEST_F(MovedLibrary, findsTheManualAndTheViewerFromItsOwnPlace) {
    EXPECT_EQ(pathsOf(root / "a \xC3\xA4/lib64"), expected(root / "a \xC3\xA4"));
    // If the library is loaded through a link, the paths follow from the place of the library's file, not from the
    // place of the link.
    const fs::path folder = root / "linked/lib";
    fs::create_directories(folder);
    fs::create_directories(root / "elsewhere");
    fs::copy_file(LIBRARY_FILE, folder / "library.so");
    fs::create_symlink(folder / "library.so", root / "elsewhere/link.so");
    EXPECT_EQ(load(root / "elsewhere/link.so"), expected(root / "linked"));
}

}  // namespace
