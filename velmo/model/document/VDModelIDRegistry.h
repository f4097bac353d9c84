#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "velmo/foundation/Value.h"

namespace velmo {

/// The identifiers in use in a document, grouped by prefix: the text before the first "_", or
/// the whole identifier when it has none ("Label_3" is in "Label", "hero" in "hero"). A group
/// keeps its identifiers in the order they came, the same one twice if it came twice, and every
/// occurrence counts in the numbering. Membership is a hash look-up, so neither a look-up nor a
/// new identifier costs more in a large document.
class VDModelIDRegistry {
public:
    /// The group an identifier belongs to.
    static std::string_view keyOf(std::string_view identifier);

    /// Enters an identifier; an empty one is passed over.
    void add(std::string_view identifier);
    /// Takes every occurrence of the identifier out of its group.
    void removeAll(std::string_view identifier);
    /// The identifier is in the group of its own key.
    bool contains(std::string_view identifier) const;
    /// How many entries the group holds, duplicates included.
    std::size_t groupSize(std::string_view prefix) const;
    /// "prefix_n" for the first n from the group's size plus one that the group doesn't hold.
    std::string nextIdentifier(std::string_view prefix) const;
    /// The registry in its dictionary form: prefix to the array of identifiers.
    Dictionary toDictionary() const;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view s) const noexcept { return std::hash<std::string_view>{}(s); }
    };
    template <class V> using Map = std::unordered_map<std::string, V, Hash, std::equal_to<>>;
    struct Group {
        std::vector<std::string> identifiers;
        Map<std::uint32_t> counts;
        /// The last number handed out. While the group only grows, nothing below it and above the
        /// group's size comes free, so the next search may start there; a removal forgets it.
        mutable std::size_t lastNumber = 0;
    };

    Map<Group> groups_;
    std::vector<std::string> order_; // groups in the order they came, for the dictionary form
};

} // namespace velmo
