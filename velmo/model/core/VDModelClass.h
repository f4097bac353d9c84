#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "velmo/foundation/VDClass.h"
#include "velmo/model/core/VDField.h"

namespace velmo {

/// What a model class says beyond its fields.
struct VDModelClassOptions {
    /// Inherited names that the class leaves out of its `fieldNames` ("variableID" for records).
    std::vector<std::string_view> removedFields = {};
    /// A fixed `+beautyIDPrefix`; empty means the form derived from the class name.
    std::string_view prefix = {};
};

/// The metaclass of a model class: its name and superclass, its factory, and its field table.
/// The table is declared once per class and chained to the superclass's: `fields()` is the
/// class's `fieldNames` in order (the superclass's list, minus what the class removes, with the
/// class's own names appended), and look-up by name finds every field of the chain, listed or not.
class VDModelClass : public VDClass {
public:
    using FieldList = std::vector<const VDField*>;

    using Options = VDModelClassOptions;

    VDModelClass(std::string_view name, const VDModelClass* superclass, Factory factory,
                 std::vector<VDField> fields, Options options = {});

    bool isModelClass() const override { return true; }
    const VDModelClass* modelSuperclass() const { return static_cast<const VDModelClass*>(superclass()); }

    /// The class's `fieldNames`, as table lines, in order.
    const FieldList& fields() const { return fieldList_; }
    /// The same as names.
    const std::vector<std::string_view>& fieldNames() const { return fieldNames_; }
    /// Any field of the class or its superclasses, listed or not; nullptr when there is none.
    const VDField* fieldNamed(std::string_view name) const;

    /// `+beautyIDPrefix`: the fixed word, or the class name with "VDModel" removed wherever it
    /// occurs and the first letter lower-cased ("VDModelColor" gives "color").
    const std::string& beautyIDPrefix() const { return prefix_; }

private:
    std::vector<VDField> ownFields_;
    FieldList fieldList_;
    std::vector<std::string_view> fieldNames_;
    std::unordered_map<std::string_view, const VDField*> byName_;
    std::string prefix_;
};

} // namespace velmo
