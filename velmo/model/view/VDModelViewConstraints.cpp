#include "velmo/model/view/VDModelViewConstraints.h"

#include <algorithm>

namespace velmo {

using Rule = VDModelViewConstraints::Rule;

const VDModelClass& VDModelViewConstraints::classObject() {
    using C = VDModelViewConstraints;
    static const VDModelClass cls(
        "VDModelViewConstraints", &VDModel::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::automatic, &C::setAutomatic>("automatic"),
            field<&C::rule<Rule::Top>, &C::setRule<Rule::Top>>("top"),
            field<&C::rule<Rule::Bottom>, &C::setRule<Rule::Bottom>>("bottom"),
            field<&C::rule<Rule::Left>, &C::setRule<Rule::Left>>("left"),
            field<&C::rule<Rule::Right>, &C::setRule<Rule::Right>>("right"),
            field<&C::rule<Rule::Height>, &C::setRule<Rule::Height>>("height"),
            field<&C::rule<Rule::Width>, &C::setRule<Rule::Width>>("width"),
            field<&C::rule<Rule::AspectRatio>, &C::setRule<Rule::AspectRatio>>("aspectRatio"),
            field<&C::rule<Rule::MinWidth>, &C::setRule<Rule::MinWidth>>("minWidth"),
            field<&C::rule<Rule::MaxWidth>, &C::setRule<Rule::MaxWidth>>("maxWidth"),
            field<&C::rule<Rule::MinHeight>, &C::setRule<Rule::MinHeight>>("minHeight"),
            field<&C::rule<Rule::MaxHeight>, &C::setRule<Rule::MaxHeight>>("maxHeight"),
            field<&C::rule<Rule::CenterVertically>, &C::setRule<Rule::CenterVertically>>("centerVertically"),
            field<&C::rule<Rule::CenterHorizontally>, &C::setRule<Rule::CenterHorizontally>>(
                "centerHorizontally"),
            field<&C::scaleFactor, &C::setScaleFactor>("scaleFactor"),
            field<&C::translated, &C::setTranslated>("translated"),
        },
        {.removedFields = {"variableID"}});
    return cls;
}

void VDModelViewConstraints::fillDefaultValues() {
    VDModel::fillDefaultValues();
    automatic_ = 1;
    scaleFactor_ = 1.0;
    for (auto& r : rules_) {
        if (!r) r = VDModelConstraint::create();
    }
}

VDModel::FieldList VDModelViewConstraints::lightFields() const {
    FieldList list;
    for (const VDField* f : fields()) {
        if (f->kind == VDFieldKind::Model) {
            const Value v = f->get(*this);
            const auto c = v.objectAs<VDModelConstraint>();
            if (!c || !c->enabled()) continue;
        }
        list.push_back(f);
    }
    return list;
}

std::size_t VDModelViewConstraints::hash() const {
    std::size_t sum = 0;
    for (Rule r : {Rule::Top, Rule::Bottom, Rule::CenterHorizontally, Rule::CenterVertically}) {
        if (rule(r)) sum += rule(r)->hash();
    }
    return sum;
}

bool VDModelViewConstraints::isEqual(const Object& other) const {
    if (this == &other) return true;
    if (!other.isKindOf(objectClass())) return false;
    const auto& c = static_cast<const VDModelViewConstraints&>(other);
    if (automatic_ != c.automatic_) return false;
    return std::all_of(kRules.begin(), kRules.end(),
                       [&](Rule r) { return rule(r) && c.rule(r) && rule(r)->isEqual(*c.rule(r)); });
}

bool VDModelViewConstraints::isSimilar(const VDModelViewConstraints& other) const {
    if (automatic_ != other.automatic_) return false;
    static const std::shared_ptr<VDModelConstraint> none = VDModelConstraint::create();
    for (Rule r : kRules) {
        // A rule missing here answers nothing; one missing there reads as a blank rule.
        if (!rule(r)) return false;
        if (!rule(r)->isSimilar(other.rule(r) ? *other.rule(r) : *none)) return false;
    }
    return true;
}

bool VDModelViewConstraints::isEmpty() const {
    return automatic() && std::none_of(kRules.begin(), kRules.end(), [&](Rule r) { return enabled(r); });
}

bool VDModelViewConstraints::isEmptyIgnoringRatio() const {
    return automatic() && std::none_of(kRules.begin(), kRules.end(),
                                       [&](Rule r) { return r != Rule::AspectRatio && enabled(r); });
}

bool VDModelViewConstraints::hasNegativeValues() const {
    for (Rule r : {Rule::Left, Rule::Right, Rule::Top, Rule::Bottom}) {
        const auto& c = rule(r);
        if (!c || !c->enabled()) continue;
        const float k = c->constant();
        const float m = c->multiplier();
        if ((k < 0 && m <= 0) || (k <= 0 && m < 0)) return true;
    }
    return false;
}

void VDModelViewConstraints::fillContainer() {
    for (Rule r : kRules) {
        const auto& c = rule(r);
        if (!c) continue;
        const bool edge = r == Rule::Top || r == Rule::Bottom || r == Rule::Left || r == Rule::Right;
        c->setEnabled(edge);
        if (edge) {
            c->setMultiplier(1.0f);
            c->setConstant(0.0f);
        }
    }
}

void VDModelViewConstraints::disableAll() {
    for (Rule r : kRules) {
        if (rule(r)) rule(r)->setEnabled(false);
    }
    for (Rule r : {Rule::MinWidth, Rule::MaxWidth, Rule::MinHeight, Rule::MaxHeight}) {
        if (rule(r)) rule(r)->setConstant(0.0f);
    }
    for (Rule r : {Rule::Top, Rule::Bottom, Rule::Right, Rule::Left, Rule::Height, Rule::Width}) {
        if (rule(r)) rule(r)->setMultiplier(0.0f);
    }
}

std::shared_ptr<VDModelViewConstraints> VDModelViewConstraints::cloneWithScaleFactor(double factor) {
    for (const VDField* f : fields()) {
        if (auto c = f->get(*this).objectAs<VDModelConstraint>()) c->applyScaleFactor(factor);
    }
    return std::static_pointer_cast<VDModelViewConstraints>(sharedFromThis());
}

void VDModelViewConstraints::affectsOrigin(bool& origin, bool& width, bool& height) const {
    origin = enabled(Rule::Left) || enabled(Rule::Right) || enabled(Rule::Top) || enabled(Rule::Bottom) ||
             enabled(Rule::CenterVertically) || enabled(Rule::CenterHorizontally);
    width = enabled(Rule::Width) || enabled(Rule::MaxWidth) || enabled(Rule::MinWidth) ||
            (enabled(Rule::Left) && enabled(Rule::Right));
    height = enabled(Rule::Height) || enabled(Rule::MinHeight) || enabled(Rule::MaxHeight) ||
             (enabled(Rule::Top) && enabled(Rule::Bottom)) || (width && enabled(Rule::AspectRatio));
    if (height && enabled(Rule::AspectRatio)) width = true;
}

} // namespace velmo
