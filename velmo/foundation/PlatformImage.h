#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "velmo/foundation/Object.h"

namespace velmo {

/// An image of the interface: a file found by name in a resources folder. Its bytes are read
/// when first asked for.
class PlatformImage : public Object {
public:
    explicit PlatformImage(std::filesystem::path file);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    const std::filesystem::path& file() const { return file_; }
    /// The file's bytes; nothing when it can't be read.
    std::optional<std::string> data() const;

    /// The image of that name in the folder: the name as it is, then with the usual image
    /// extensions; nullptr when there is none.
    static std::shared_ptr<PlatformImage> findInFolder(const std::filesystem::path& folder,
                                                       const std::string& name);

private:
    std::filesystem::path file_;
};

} // namespace velmo
