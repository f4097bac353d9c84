#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "FuzzTargets.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo::fuzz {

void prepareFuzzProcess() {
    // Millions of inputs would each log why they were refused; the checks say what matters.
    SystemLog::setSink([](std::string_view) {});
    if (!std::getenv("VELMO_HOME")) ::setenv("VELMO_HOME", (fuzzWorkFolder() / "home").c_str(), 1);
}

const std::filesystem::path& fuzzWorkFolder() {
    // Never destroyed, so that it is still there for the removal at exit.
    static const std::filesystem::path* folder = [] {
        const auto* made = new std::filesystem::path(Files::makeTemporaryDirectory("velmo-fuzz"));
        std::atexit([] {
            std::error_code ec;
            std::filesystem::remove_all(fuzzWorkFolder(), ec);
        });
        return made;
    }();
    return *folder;
}

} // namespace velmo::fuzz
