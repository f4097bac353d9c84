#include "velmo/model/document/VDModelIDRegistry.h"

#include <algorithm>
#include <charconv>

namespace velmo {

std::string_view VDModelIDRegistry::keyOf(std::string_view identifier) {
    return identifier.substr(0, identifier.find('_'));
}

void VDModelIDRegistry::add(std::string_view identifier) {
    if (identifier.empty()) return;
    const std::string_view key = keyOf(identifier);
    auto found = groups_.find(key);
    if (found == groups_.end()) {
        found = groups_.emplace(std::string(key), Group{}).first;
        order_.emplace_back(key);
    }
    found->second.identifiers.emplace_back(identifier);
    ++found->second.counts.try_emplace(found->second.identifiers.back(), 0).first->second;
}

void VDModelIDRegistry::removeAll(std::string_view identifier) {
    const auto found = groups_.find(keyOf(identifier));
    if (found == groups_.end()) return;
    Group& group = found->second;
    const auto count = group.counts.find(identifier);
    if (count == group.counts.end()) return;
    group.counts.erase(count);
    std::erase_if(group.identifiers, [&](const std::string& id) { return id == identifier; });
    group.lastNumber = 0;
}

bool VDModelIDRegistry::contains(std::string_view identifier) const {
    const auto found = groups_.find(keyOf(identifier));
    return found != groups_.end() && found->second.counts.contains(identifier);
}

std::size_t VDModelIDRegistry::groupSize(std::string_view prefix) const {
    const auto found = groups_.find(prefix);
    return found == groups_.end() ? 0 : found->second.identifiers.size();
}

std::string VDModelIDRegistry::nextIdentifier(std::string_view prefix) const {
    const auto found = groups_.find(prefix);
    // Numbering starts from the group's size, not its highest number: gaps below it stay.
    std::size_t n = found == groups_.end() ? 0 : found->second.identifiers.size();
    // Numbers between the size and the last answer were taken when it was given and, with no
    // removal since, still are: after many deletions this skips them all at once.
    if (found != groups_.end() && found->second.lastNumber > n) n = found->second.lastNumber - 1;
    std::string candidate(prefix);
    candidate += '_';
    const std::size_t stem = candidate.size();
    for (;;) {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, ++n).ptr;
        candidate.resize(stem);
        candidate.append(digits, end);
        if (found == groups_.end()) return candidate;
        if (!found->second.counts.contains(candidate)) {
            found->second.lastNumber = n;
            return candidate;
        }
    }
}

Dictionary VDModelIDRegistry::toDictionary() const {
    Dictionary out = Dictionary::create(order_.size());
    for (const std::string& key : order_) {
        const auto found = groups_.find(key);
        Array ids = Array::create(found->second.identifiers.size());
        for (const std::string& id : found->second.identifiers)
            ids.push_back(Value(id));
        out.set(key, Value(ids));
    }
    return out;
}

} // namespace velmo
