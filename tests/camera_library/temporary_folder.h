// A folder for the files of one test. The destructor removes the folder with all its contents.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device random;
        do {
            folder = std::filesystem::temp_directory_path() / ("lmcaltab-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(folder));
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::string file(const std::string &name) const { return (folder / name).generic_string(); }
    const std::filesystem::path &path() const { return folder; }
    std::size_t entryCount() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

private:
    std::filesystem::path folder;
};

inline std::string readBytes(const std::string &fileName) {
    std::ifstream file(fileName, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeBytes(const std::string &fileName, const std::string &bytes) {
    std::ofstream(fileName, std::ios::binary) << bytes;
}
