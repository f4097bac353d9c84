#include "velmo/foundation/PlatformImage.h"

#include "velmo/foundation/Files.h"
#include "velmo/foundation/VDClass.h"

namespace velmo {

PlatformImage::PlatformImage(std::filesystem::path file) : file_(std::move(file)) {}

const VDClass& PlatformImage::classObject() {
    static const VDClass cls("NSImage", nullptr, nullptr);
    return cls;
}

std::optional<std::string> PlatformImage::data() const {
    return Files::read(file_);
}

std::shared_ptr<PlatformImage> PlatformImage::findInFolder(const std::filesystem::path& folder,
                                                           const std::string& name) {
    if (folder.empty() || name.empty() || name.find('/') != std::string::npos) return nullptr;
    static constexpr const char* kExtensions[] = {"",     ".png", ".pdf",  ".jpg", ".jpeg",
                                                  ".gif", ".svg", ".tiff", ".icns"};
    for (const char* extension : kExtensions) {
        const std::filesystem::path candidate = folder / (name + extension);
        std::error_code ec;
        if (std::filesystem::is_regular_file(candidate, ec))
            return std::make_shared<PlatformImage>(candidate);
    }
    return nullptr;
}

} // namespace velmo
