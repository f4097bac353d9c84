#pragma once

#include <array>
#include <optional>

#include "velmo/model/records/VDModelConstraint.h"

namespace velmo {

/// The thirteen rules that tell how a view is laid out when its container changes size. View
/// states hold whole sets as values and compare them with `isEqual`.
class VDModelViewConstraints : public VDModel {
    VD_MODEL_CLASS(VDModelViewConstraints)

    /// The rules, in the order every operation over all of them follows.
    enum class Rule : std::uint8_t {
        Top,
        Bottom,
        Right,
        Left,
        Height,
        Width,
        AspectRatio,
        MinWidth,
        MaxWidth,
        MinHeight,
        MaxHeight,
        CenterVertically,
        CenterHorizontally,
    };
    static constexpr std::size_t kRuleCount = 13;
    static constexpr std::array<Rule, kRuleCount> kRules = {
        Rule::Top,
        Rule::Bottom,
        Rule::Right,
        Rule::Left,
        Rule::Height,
        Rule::Width,
        Rule::AspectRatio,
        Rule::MinWidth,
        Rule::MaxWidth,
        Rule::MinHeight,
        Rule::MaxHeight,
        Rule::CenterVertically,
        Rule::CenterHorizontally,
    };

    /// Creates the rules that are nil, disabled.
    void fillDefaultValues() override;
    bool needsModelID() const override { return false; }
    /// `fieldNames` without each rule that isn't enabled: disabled rules stay out of the JSON and
    /// come back as new disabled rules.
    FieldList lightFields() const override;

    bool automatic() const { return automatic_ != 0; }
    void setAutomatic(bool v) { automatic_ = v ? 1 : 0; }
    /// The scale of the design; stored only.
    double scaleFactor() const { return scaleFactor_; }
    void setScaleFactor(double v) { scaleFactor_ = v; }
    /// Stored and passed on.
    const VDNumber& translated() const { return translated_; }
    void setTranslated(VDNumber v) { translated_ = v; }

    template <Rule R> const std::shared_ptr<VDModelConstraint>& rule() const {
        return rules_[static_cast<std::size_t>(R)];
    }
    template <Rule R> void setRule(std::shared_ptr<VDModelConstraint> v) {
        rules_[static_cast<std::size_t>(R)] = std::move(v);
    }
    const std::shared_ptr<VDModelConstraint>& rule(Rule r) const {
        return rules_[static_cast<std::size_t>(r)];
    }
    void setRule(Rule r, std::shared_ptr<VDModelConstraint> v) {
        rules_[static_cast<std::size_t>(r)] = std::move(v);
    }

    const std::shared_ptr<VDModelConstraint>& top() const { return rule<Rule::Top>(); }
    const std::shared_ptr<VDModelConstraint>& bottom() const { return rule<Rule::Bottom>(); }
    const std::shared_ptr<VDModelConstraint>& left() const { return rule<Rule::Left>(); }
    const std::shared_ptr<VDModelConstraint>& right() const { return rule<Rule::Right>(); }
    const std::shared_ptr<VDModelConstraint>& height() const { return rule<Rule::Height>(); }
    const std::shared_ptr<VDModelConstraint>& width() const { return rule<Rule::Width>(); }
    const std::shared_ptr<VDModelConstraint>& aspectRatio() const { return rule<Rule::AspectRatio>(); }
    const std::shared_ptr<VDModelConstraint>& minWidth() const { return rule<Rule::MinWidth>(); }
    const std::shared_ptr<VDModelConstraint>& maxWidth() const { return rule<Rule::MaxWidth>(); }
    const std::shared_ptr<VDModelConstraint>& minHeight() const { return rule<Rule::MinHeight>(); }
    const std::shared_ptr<VDModelConstraint>& maxHeight() const { return rule<Rule::MaxHeight>(); }
    const std::shared_ptr<VDModelConstraint>& centerVertically() const {
        return rule<Rule::CenterVertically>();
    }
    const std::shared_ptr<VDModelConstraint>& centerHorizontally() const {
        return rule<Rule::CenterHorizontally>();
    }

    /// The sum of the hashes of `top`, `bottom`, `centerHorizontally` and `centerVertically`.
    std::size_t hash() const override;
    /// Same object, or one of this class or a subclass with the same `automatic` and equal
    /// rules; `scaleFactor` and `translated` play no part. A nil rule makes it false.
    bool isEqual(const Object& other) const override;
    /// The same `automatic` and similar rules, in rule order.
    bool isSimilar(const VDModelViewConstraints& other) const;
    /// `automatic` and no rule enabled.
    bool isEmpty() const;
    /// The same, leaving `aspectRatio` out.
    bool isEmptyIgnoringRatio() const;
    /// An enabled `left`, `right`, `top` or `bottom` whose numbers are both non-positive, one of
    /// them negative.
    bool hasNegativeValues() const;
    /// Pins the four edges at 0 with multiplier 1 and disables the rest.
    void fillContainer();
    /// Disables every rule and zeroes the size limits' constants and the edges' and sizes'
    /// multipliers.
    void disableAll();
    /// cloneWithScaleFactor: — despite its name, scales the receiver's rules in place (disabled
    /// ones too) and returns the receiver; callers that need the old values copy first.
    std::shared_ptr<VDModelViewConstraints> cloneWithScaleFactor(double factor);
    /// affectsOrigin:affectsWidth:affectsHeight: — whether the rules fix the origin, the width
    /// and the height; an aspect ratio carries a fixed width over to the height and back.
    void affectsOrigin(bool& origin, bool& width, bool& height) const;

private:
    bool enabled(Rule r) const {
        const auto& c = rule(r);
        return c && c->enabled();
    }

    std::uint8_t automatic_ = 1;
    std::array<std::shared_ptr<VDModelConstraint>, kRuleCount> rules_;
    double scaleFactor_ = 1.0;
    VDNumber translated_;
};

} // namespace velmo
