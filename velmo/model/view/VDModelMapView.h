#pragma once

#include <optional>
#include <string>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A map centred on an address.
class VDModelMapView : public VDModelView {
    VD_MODEL_CLASS(VDModelMapView)

    void fillDefaultValues() override;

    const std::optional<std::string>& address() const { return address_; }
    void setAddress(std::optional<std::string> v) { address_ = std::move(v); }

private:
    std::optional<std::string> address_;
};

} // namespace velmo
