#include "velmo/runtime/VPSystemInfo.h"

#include <map>
#include <sstream>
#include <string_view>

#include "velmo/foundation/Crypto.h"
#include "velmo/foundation/Files.h"

namespace velmo {

namespace {

constexpr std::string_view kWhitespace = " \t\r\n";

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(kWhitespace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
}

// os-release holds shell-style assignments: KEY=value, KEY="value" with backslash escapes, or
// KEY='value'. Comments and blank lines are skipped.
std::string unquote(std::string_view value) {
    if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
        return std::string(value.substr(1, value.size() - 2));
    }
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
        std::string out;
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (value[i] == '\\' && i + 1 < value.size()) ++i;
            out += value[i];
        }
        return out;
    }
    return std::string(value);
}

std::map<std::string, std::string, std::less<>> readAssignments(const std::filesystem::path& path) {
    std::map<std::string, std::string, std::less<>> values;
    const auto text = Files::read(path);
    if (!text) return values;
    std::istringstream lines(*text);
    for (std::string line; std::getline(lines, line);) {
        const std::string_view trimmed = trim(line);
        const auto equals = trimmed.find('=');
        if (trimmed.empty() || trimmed.front() == '#' || equals == std::string_view::npos) continue;
        values.insert_or_assign(std::string(trim(trimmed.substr(0, equals))),
                                unquote(trim(trimmed.substr(equals + 1))));
    }
    return values;
}

// Salt that makes the identifier ours alone.
constexpr std::string_view kApplicationName = "com.velmoapp.VelmoCommon";

} // namespace

std::string VPSystemInfo::systemVersion(const std::filesystem::path& osRelease) {
    const auto values = readAssignments(osRelease);
    for (const std::string_view key : {"VERSION_ID", "BUILD_ID"}) {
        if (const auto it = values.find(key); it != values.end() && !it->second.empty()) return it->second;
    }
    return {};
}

std::string VPSystemInfo::machineIdentifier(const std::filesystem::path& machineId) {
    const auto text = Files::read(machineId);
    if (!text) return {};
    const std::string_view id = trim(*text);
    // "uninitialized" is what a first boot leaves before the id is committed.
    if (id.empty() || id == "uninitialized") return {};
    return Crypto::hex(Crypto::sha256(std::string(kApplicationName) + ":" + std::string(id)));
}

} // namespace velmo
