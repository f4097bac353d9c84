#include "velmo/model/values/ImageExtensions.h"

#include <cstdlib>
#include <unordered_map>

#include "velmo/runtime/VPLogging.h"
#include "velmo/runtime/VVClientConfig.h"

namespace velmo {

std::filesystem::path libraryResourcesFolder() {
    if (const char* folder = std::getenv("VELMO_RESOURCES"); folder && *folder) return folder;
    return VELMO_RESOURCES_DIR;
}

std::shared_ptr<PlatformImage> _vv_imageFromName(const std::string& name) {
    // Main thread only, as the interface that asks for images is.
    static std::unordered_map<std::string, std::shared_ptr<PlatformImage>> cache;
    VP_TRY
    if (const auto cached = cache.find(name); cached != cache.end()) return cached->second;
    auto image = PlatformImage::findInFolder(VVClientConfig::current().bundle(), name);
    if (!image) image = PlatformImage::findInFolder(libraryResourcesFolder(), name);
    if (image) cache.emplace(name, image);
    return image;
    VP_CATCH(nullptr)
}

} // namespace velmo
