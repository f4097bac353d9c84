#pragma once

#include <cstdint>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// Where a list view's data comes from.
class VDModelDataList : public VDModel {
    VD_MODEL_CLASS(VDModelDataList)

    enum Type : std::int32_t { Empty = 0, CSV = 1, JSON = 2, RSS = 3 };

    std::int32_t type() const { return type_; }
    void setType(std::int32_t v) { type_ = v; }
    const std::optional<std::string>& fileNameOrUrl() const { return fileNameOrUrl_; }
    void setFileNameOrUrl(std::optional<std::string> v) { fileNameOrUrl_ = std::move(v); }
    const std::optional<std::string>& jsonPathToList() const { return jsonPathToList_; }
    void setJsonPathToList(std::optional<std::string> v) { jsonPathToList_ = std::move(v); }

    /// "Empty List", "CSV", "JSON", "RSS"; the empty string for any other value.
    static std::string nameForType(std::int32_t type);
    /// The type of the name; 0 for a name it doesn't know.
    static std::int32_t typeForName(std::string_view name);

private:
    std::int32_t type_ = 0;
    std::optional<std::string> fileNameOrUrl_;
    std::optional<std::string> jsonPathToList_;
};

} // namespace velmo
