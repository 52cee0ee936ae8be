// A folder of its own for one test, removed with everything in it at the end.
#ifndef TAVMIR_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define TAVMIR_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <string>

namespace tavmir
{
namespace test
{

class TemporaryFolder
{
public:
    // Throws std::runtime_error when the folder cannot be made.
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return folder; }

    // The full path of a file of this name inside the folder, made or not.
    std::string pathOf(const std::string& fileName) const;

    // Writes a file (binary, as given) and returns its full path.
    std::string writeFile(const std::string& fileName, const std::string& content) const;

private:
    std::string folder;
};

} // namespace test
} // namespace tavmir

#endif
