// Bytes as a ZIP file, unpacked with inner archives at every depth: whatever the archive holds
// (names with "..", absolute names, links out and entries through them), everything lands inside
// the destination, and the archive itself is left as it was.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "FuzzTargets.h"
#include "velmo/archive/VPZipArchive.h"

namespace velmo::fuzz {

namespace fs = std::filesystem;

namespace {

bool fail(std::string_view why) {
    std::cerr << "archive: " << why << '\n';
    return false;
}

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec))
        names.insert(it->path().filename().string());
    return names;
}

// Unpacked entries may take away the owner's rights on folders; give them back so the tree goes.
void removeTree(const fs::path& folder) {
    std::error_code ec;
    if (fs::remove_all(folder, ec) != static_cast<std::uintmax_t>(-1) && !ec) return;
    for (fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        if (it->is_directory(ec) && !it->is_symlink(ec))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::remove_all(folder, ec);
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

} // namespace

bool fuzzArchive(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const fs::path work = fuzzWorkFolder() / "archive";
    const fs::path archive = work / "input.zip";
    const fs::path box = work / "box";
    const fs::path destination = box / "inner";
    removeTree(box);
    fs::create_directories(destination);
    {
        std::ofstream out(archive, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    // The reading operations on their own, then a full run. The seeds' encrypted entries take
    // this password; plain entries ignore it. Small limits keep archives that expand beyond
    // reason quick to refuse.
    VPZipArchive::isFilePasswordProtectedAtPath(archive.string());
    VPZipArchive::isPasswordValidForArchiveAtPath(archive.string(), "secret");
    VPZipArchive::payloadSizeForArchiveAtPath(archive.string());
    VPZipArchive::UnzipLimits limits;
    limits.maxEntrySize = 256 * 1024;
    limits.maxTotalSize = 1024 * 1024;
    VPErrorPtr error;
    VPZipArchive::unzipFileAtPath(archive.string(), destination.string(), true, true, -1, "secret", &error,
                                  nullptr, nullptr, nullptr, limits);

    bool ok = true;
    if (namesIn(box) != std::set<std::string>{"inner"})
        ok = fail("something was written beside the destination");
    if (namesIn(work) != std::set<std::string>{"box", "input.zip"})
        ok = fail("something was written beside the destination's folder");
    if (!fs::is_regular_file(fs::symlink_status(archive)) || readFile(archive) != bytes)
        ok = fail("the archive itself was changed");
    removeTree(box);
    return ok;
}

} // namespace velmo::fuzz
