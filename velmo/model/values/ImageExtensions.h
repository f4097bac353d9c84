#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "velmo/foundation/PlatformImage.h"

namespace velmo {

/// `_vv_imageFromName`: the image of that name from a process-wide cache, then from the client's
/// resources folder (the `bundle` of the bound client configuration), then from the library's own;
/// a found image is cached, a missing one gives nullptr and is not. For the main thread.
std::shared_ptr<PlatformImage> _vv_imageFromName(const std::string& name);

/// The library's own resources folder: `$VELMO_RESOURCES`, else the installed data folder.
std::filesystem::path libraryResourcesFolder();

} // namespace velmo
