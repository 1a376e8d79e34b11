#pragma once
// Files for tests: a directory of the test's own, removed with its content,
// and whole-file reads and writes.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <ftw.h>
#include <iterator>
#include <set>
#include <stdlib.h>
#include <string>

namespace nTestFiles
{

class tTempDirectory
{
public:
    tTempDirectory()
    {
        const char* pBase = getenv("TMPDIR");
        std::string pattern = std::string(pBase != nullptr ? pBase : "/tmp") + "/zm_ptp_XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr)
        {
            // No test can go on without its directory.
            std::fprintf(stderr, "mkdtemp(%s): %s\n", pattern.c_str(), std::strerror(errno));
            std::abort();
        }
        m_path = pattern;
    }
    ~tTempDirectory() { nftw(m_path.c_str(), removeOne, 16, FTW_DEPTH | FTW_PHYS); }
    tTempDirectory(const tTempDirectory&) = delete;
    tTempDirectory& operator=(const tTempDirectory&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& a_name) const { return m_path + "/" + a_name; }

    // The names in the directory, without "." and "..".
    std::set<std::string> names() const
    {
        std::set<std::string> names;
        if (DIR* pDirectory = opendir(m_path.c_str()))
        {
            while (const dirent* pEntry = readdir(pDirectory))
            {
                const std::string name = pEntry->d_name;
                if (name != "." && name != "..")
                {
                    names.insert(name);
                }
            }
            closedir(pDirectory);
        }
        return names;
    }

private:
    static int removeOne(const char* a_pPath, const struct stat*, int, struct FTW*)
    {
        return ::remove(a_pPath);
    }

    std::string m_path;
};

inline std::string readFile(const std::string& a_path)
{
    std::ifstream stream(a_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

inline void writeFile(const std::string& a_path, const std::string& a_bytes)
{
    std::ofstream stream(a_path, std::ios::binary | std::ios::trunc);
    stream.write(a_bytes.data(), static_cast<std::streamsize>(a_bytes.size()));
}

} // namespace nTestFiles
