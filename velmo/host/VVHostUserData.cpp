#include "velmo/host/VVHostUserData.h"

#include "velmo/foundation/VDClass.h"

namespace velmo {

VVHostUserData::VVHostUserData(std::string userEmail, std::string userID)
    : userEmail_(std::move(userEmail)), userID_(std::move(userID)) {}

const VDClass& VVHostUserData::classObject() {
    static const VDClass cls("VVHostUserData", nullptr, nullptr);
    return cls;
}

std::string VVHostUserData::userEmail() const {
    std::lock_guard lock(mutex_);
    return userEmail_;
}

std::string VVHostUserData::userID() const {
    std::lock_guard lock(mutex_);
    return userID_;
}

void VVHostUserData::setUserEmail(std::string userEmail) {
    std::lock_guard lock(mutex_);
    userEmail_ = std::move(userEmail);
}

void VVHostUserData::setUserID(std::string userID) {
    std::lock_guard lock(mutex_);
    userID_ = std::move(userID);
}

} // namespace velmo
