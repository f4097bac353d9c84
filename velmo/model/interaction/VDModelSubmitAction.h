#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// Sends a form's data; the view that holds it is a form's submit button.
class VDModelSubmitAction : public VDModelAction {
    VD_MODEL_CLASS(VDModelSubmitAction)

    const std::optional<std::string>& email() const { return email_; }
    void setEmail(std::optional<std::string> v) { email_ = std::move(v); }
    const std::optional<std::string>& spreadsheet() const { return spreadsheet_; }
    void setSpreadsheet(std::optional<std::string> v) { spreadsheet_ = std::move(v); }
    const std::optional<std::string>& successScreenID() const { return successScreenID_; }
    void setSuccessScreenID(std::optional<std::string> v) { successScreenID_ = std::move(v); }
    const std::optional<std::string>& failureScreenID() const { return failureScreenID_; }
    void setFailureScreenID(std::optional<std::string> v) { failureScreenID_ = std::move(v); }

    /// The success screen, then the failure screen, each when set; an empty list otherwise.
    Array linkedScreenIDs() const override;

private:
    std::optional<std::string> email_;
    std::optional<std::string> spreadsheet_;
    std::optional<std::string> successScreenID_;
    std::optional<std::string> failureScreenID_;
};

} // namespace velmo
