#include "ShellCommand.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>

namespace velmo::test {

ShellResult runShell(const std::string& line) {
    ShellResult result;
    FILE* pipe = ::popen(line.c_str(), "r");
    if (!pipe) return result;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        result.output.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

} // namespace velmo::test
