#pragma once

#include <memory>
#include <optional>
#include <string>

#include "velmo/model/core/VDBaseObject.h"

namespace velmo {

/// One choice of a drop-down code preference: the label and the value sent when it is chosen.
class VDCodePrefConfigDropdownItem : public VDBaseObject {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    Dictionary jsonMap() const override;
    void initWithSerializableObject(const Value& object) override;
    std::shared_ptr<VDBaseObject> copy() const override;

    /// "text"
    std::optional<std::string> text;
    /// "value"
    std::optional<std::string> value;
};

} // namespace velmo
