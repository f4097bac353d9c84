#include "ArchiveTestSupport.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <sys/resource.h>
#include <zip.h>

#include "velmo/foundation/Files.h"

namespace velmo::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : path_(Files::makeTemporaryDirectory("velmo-archive-test")) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ec;
    fs::remove_all(path_, ec);
}

void writeTestArchive(const fs::path& path, const std::vector<TestEntry>& entries) {
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!archive) throw std::runtime_error("zip_open failed");
    for (const auto& entry : entries) {
        zip_source_t* source = zip_source_buffer(archive, entry.content.data(), entry.content.size(), 0);
        const zip_int64_t index = zip_file_add(archive, entry.name.c_str(), source,
                                               entry.cp437Name ? ZIP_FL_ENC_CP437 : ZIP_FL_ENC_GUESS);
        if (index < 0) throw std::runtime_error(std::string("zip_file_add: ") + zip_strerror(archive));
        const auto i = static_cast<zip_uint64_t>(index);
        zip_file_set_external_attributes(archive, i, 0, entry.hostSystem, entry.mode << 16);
        zip_set_file_compression(archive, i, entry.store ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
        // A fixed date, 2020-06-15 10:20:30 local time, except where the traditional cipher's
        // check byte is made from the source's own date.
        if (entry.password.empty() || entry.aes) {
            zip_file_set_dostime(archive, i, (10 << 11) | (20 << 5) | 15,
                                 ((2020 - 1980) << 9) | (6 << 5) | 15, 0);
        }
        if (!entry.password.empty()) {
            zip_file_set_encryption(archive, i, entry.aes ? ZIP_EM_AES_256 : ZIP_EM_TRAD_PKWARE,
                                    entry.password.c_str());
        }
    }
    if (zip_close(archive) != 0) throw std::runtime_error(std::string("zip_close: ") + zip_strerror(archive));
}

std::vector<std::string> entryNames(const fs::path& path) {
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!archive) throw std::runtime_error("zip_open failed");
    std::vector<std::string> names;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
        names.emplace_back(zip_get_name(archive, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW));
    }
    zip_discard(archive);
    return names;
}

StoredEntry storedEntry(const fs::path& path, const std::string& name) {
    int code = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &code);
    if (!archive) throw std::runtime_error("zip_open failed");
    const zip_int64_t index = zip_name_locate(archive, name.c_str(), ZIP_FL_ENC_RAW);
    if (index < 0) {
        zip_discard(archive);
        throw std::runtime_error("no entry " + name);
    }
    const auto i = static_cast<zip_uint64_t>(index);
    zip_stat_t st;
    zip_stat_index(archive, i, 0, &st);
    StoredEntry stored;
    stored.compressionMethod = st.comp_method;
    stored.encryptionMethod = st.encryption_method;
    zip_file_get_external_attributes(archive, i, 0, &stored.hostSystem, &stored.externalAttributes);
    stored.utf8Flagged = std::strcmp(zip_get_name(archive, i, ZIP_FL_ENC_STRICT),
                                     zip_get_name(archive, i, ZIP_FL_ENC_RAW)) == 0;
    zip_discard(archive);
    return stored;
}

std::vector<CentralRecord> centralDirectory(const fs::path& archive) {
    const std::string bytes = readFile(archive);
    const auto u16 = [&](std::size_t at) {
        return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes.at(at)) |
                                          static_cast<unsigned char>(bytes.at(at + 1)) << 8);
    };
    const auto u32 = [&](std::size_t at) {
        return std::uint32_t(u16(at)) | std::uint32_t(u16(at + 2)) << 16;
    };
    const std::size_t end = bytes.rfind(std::string("PK\5\6", 4));
    if (end == std::string::npos) throw std::runtime_error("no end of central directory");
    std::vector<CentralRecord> records;
    std::size_t at = u32(end + 16);
    for (std::uint16_t i = 0; i < u16(end + 10); ++i) {
        if (bytes.compare(at, 4, std::string("PK\1\2", 4)) != 0)
            throw std::runtime_error("bad central record");
        const std::size_t nameLength = u16(at + 28);
        records.push_back({bytes.substr(at + 46, nameLength), u16(at + 4), u16(at + 8)});
        at += 46 + nameLength + u16(at + 30) + u16(at + 32);
    }
    return records;
}

FileSizeLimit::FileSizeLimit(std::uint64_t bytes) {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    previous_ = limit.rlim_cur;
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit() {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = previous_;
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, previousHandler_);
}

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void writeFile(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::vector<std::string> treeOf(const fs::path& root) {
    std::vector<std::string> paths;
    std::error_code ec;
    if (!fs::exists(root, ec)) return paths;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        paths.push_back(fs::relative(it->path(), root).generic_string());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace velmo::test
