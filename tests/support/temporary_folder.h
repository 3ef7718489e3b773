#pragma once

// A temporary folder for a test. The destructor removes it with its contents.

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        static std::atomic<unsigned> counter{0};
        static const unsigned run = std::random_device{}();
        const std::string name = "volo-" + std::to_string(run) + "-" + std::to_string(counter++);
        path_ = std::filesystem::canonical(std::filesystem::temp_directory_path()) / name;
        if (!std::filesystem::create_directory(path_))
            throw std::runtime_error("no temporary folder " + path_.string());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::string string() const { return path_.string(); }
    std::filesystem::path operator/(const std::filesystem::path& name) const { return (path_ / name).make_preferred(); }

    // Writes bytes in binary mode and creates missing folders. Returns the full path, which most callers do not need.
    // NOLINTNEXTLINE(modernize-use-nodiscard)
    std::filesystem::path write(const std::filesystem::path& name, const std::string& bytes) const {
        std::filesystem::path file = *this / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
        return file;
    }

  private:
    std::filesystem::path path_;
};

// Returns the bytes of a file. Empty if the file does not exist.
inline std::string readFileBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf(); // iterators are much slower in a build without optimisation
    return bytes.str();
}

// The content of a directory without lock files: relative paths with "/", and for each the bytes of the file or
// "<directory>".
using Tree = std::map<std::string, std::string>;
inline Tree treeOf(const std::filesystem::path& directory) {
    Tree tree;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory, error)) {
        if (entry.path().extension() == ".lock" || entry.path().filename() == "lock.tmp") continue;
        tree[entry.path().lexically_relative(directory).generic_string()] =
            entry.is_directory() ? "<directory>" : readFileBytes(entry.path());
    }
    return tree;
}
