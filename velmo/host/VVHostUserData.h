#pragma once

#include <mutex>
#include <string>

#include "velmo/runtime/VVUserData.h"

namespace velmo {

/// The stand-alone host's user: what the configuration names, changed when the user signs in or out.
class VVHostUserData : public VVUserData {
public:
    VVHostUserData(std::string userEmail, std::string userID);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    std::string userEmail() const override;
    std::string userID() const override;
    void setUserEmail(std::string userEmail);
    void setUserID(std::string userID);

private:
    mutable std::mutex mutex_;
    std::string userEmail_;
    std::string userID_;
};

} // namespace velmo
