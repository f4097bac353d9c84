#pragma once

// A throwaway model class with one field of every kind, to test the generic machinery.

#include "velmo/model/core/VDModel.h"

namespace velmo::test {

class VDModelTestModel : public VDModel {
    VD_MODEL_CLASS(VDModelTestModel)

    void fillDefaultValues() override;
    NameList stateAffectedFields() const override { return {"title", "ratio", "child", "tags"}; }

    const std::optional<std::string>& title() const { return title_; }
    void setTitle(std::optional<std::string> v) {
        title_ = std::move(v);
        ++titleSets;
    }
    float ratio() const { return ratio_; }
    void setRatio(float v) { ratio_ = v; }
    double precise() const { return precise_; }
    void setPrecise(double v) { precise_ = v; }
    std::int32_t count() const { return count_; }
    void setCount(std::int32_t v) { count_ = v; }
    std::int64_t big() const { return big_; }
    void setBig(std::int64_t v) { big_ = v; }
    bool enabled() const { return enabled_; }
    void setEnabled(bool v) { enabled_ = v; }
    const VDNumber& width() const { return width_; }
    void setWidth(VDNumber v) { width_ = v; }
    const std::shared_ptr<VDModelTestModel>& child() const { return child_; }
    void setChild(std::shared_ptr<VDModelTestModel> v) { child_ = std::move(v); }
    const Array& tags() const { return tags_; }
    void setTags(Array v) { tags_ = std::move(v); }
    const Dictionary& info() const { return info_; }
    void setInfo(Dictionary v) { info_ = std::move(v); }
    const Value& extra() const { return extra_; }
    void setExtra(Value v) { extra_ = std::move(v); }
    /// Reachable by name, never encoded.
    float scratch() const { return scratch_; }
    void setScratch(float v) { scratch_ = v; }

    int titleSets = 0;

private:
    std::optional<std::string> title_;
    float ratio_ = 0;
    double precise_ = 0;
    std::int32_t count_ = 0;
    std::int64_t big_ = 0;
    bool enabled_ = false;
    VDNumber width_;
    std::shared_ptr<VDModelTestModel> child_;
    Array tags_;
    Dictionary info_;
    Value extra_;
    float scratch_ = 0;
};

/// A subclass that adds nothing, for class-exactness tests.
class VDModelTestSubModel : public VDModelTestModel {
    VD_MODEL_CLASS(VDModelTestSubModel)
};

/// Enters the test classes in the shared registry (once).
void registerTestModels();

} // namespace velmo::test
