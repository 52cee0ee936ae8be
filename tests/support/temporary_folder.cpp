#include "support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace tavmir
{
namespace test
{

TemporaryFolder::TemporaryFolder()
{
    const std::string pattern =
        (std::filesystem::temp_directory_path() / "tavmir-test-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder after " + pattern);
    }
    folder = name.data();
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::string TemporaryFolder::pathOf(const std::string& fileName) const
{
    return folder + "/" + fileName;
}

std::string TemporaryFolder::writeFile(const std::string& fileName,
                                       const std::string& content) const
{
    const std::string path = pathOf(fileName);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

} // namespace test
} // namespace tavmir
