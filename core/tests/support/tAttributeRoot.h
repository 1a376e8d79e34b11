#pragma once
// A root of the test's own for the sources' attribute files: the directory
// tree that a file needs, with ZM_PTP_ROOT pointing at it while it lives.
#include "tTempDirectory.h"

#include <stdlib.h>
#include <string>
#include <sys/stat.h>

namespace nTestFiles
{

class tAttributeRoot
{
public:
    static constexpr const char* kVariable = "ZM_PTP_ROOT";

    tAttributeRoot()
    {
        std::string directory = m_root.path();
        for (const char* pPart : {"/orv-rt", "/system", "/zelmar"})
        {
            directory += pPart;
            mkdir(directory.c_str(), 0755);
        }
        m_directory = directory;
        setenv(kVariable, m_root.path().c_str(), 1);
    }
    ~tAttributeRoot() { unsetenv(kVariable); }
    tAttributeRoot(const tAttributeRoot&) = delete;
    tAttributeRoot& operator=(const tAttributeRoot&) = delete;

    const tTempDirectory& root() const { return m_root; }
    // The file of the source a_name.
    std::string file(const std::string& a_name) const
    {
        return m_directory + "/zelmar-" + a_name + ".ini";
    }
    // Writes the file of a_name with these lines in the section "ZELMAR".
    void writeEntries(const std::string& a_name, const std::string& a_lines) const
    {
        writeFile(file(a_name), "[ZELMAR]\r\n" + a_lines);
    }

private:
    tTempDirectory m_root;
    std::string m_directory;
};

} // namespace nTestFiles
