#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h> // mkdtemp

namespace quorvane::test {

// A temporary folder for a test, removed by the destructor.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "quorvane-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        m_path = std::filesystem::canonical(name).string();
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // The path of `name` in the folder; of the folder itself when `name` is empty.
    std::string path(std::string_view name = {}) const
    {
        return name.empty() ? m_path : m_path + "/" + std::string(name);
    }

    // Writes a file, creating the folders above it. Returns its path.
    std::string write(std::string_view name, std::string_view contents) const
    {
        const std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << contents;
        return file;
    }
    std::string write(std::string_view name, const std::vector<std::uint8_t>& contents) const
    {
        return write(name, std::string_view(reinterpret_cast<const char*>(contents.data()), contents.size()));
    }

    static std::string contents(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    std::string m_path;
};

} // namespace quorvane::test
