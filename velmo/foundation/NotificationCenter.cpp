#include "velmo/foundation/NotificationCenter.h"

#include <algorithm>

namespace velmo {

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter* center = new NotificationCenter(); // lives for the process
    return *center;
}

NotificationCenter::Token NotificationCenter::addObserver(std::string_view name, const Object* object,
                                                          Observer observer) {
    std::lock_guard lock(mutex_);
    const Token token = nextToken_++;
    registrations_.push_back(
        Registration{token, std::string(name), object, std::make_shared<Observer>(std::move(observer))});
    return token;
}

void NotificationCenter::removeObserver(Token token) {
    std::lock_guard lock(mutex_);
    std::erase_if(registrations_, [token](const Registration& r) { return r.token == token; });
}

void NotificationCenter::post(Notification notification) {
    // Observers run outside the lock, so they may post, add or remove observers themselves.
    std::vector<std::shared_ptr<Observer>> matching;
    {
        std::lock_guard lock(mutex_);
        for (const Registration& r : registrations_) {
            if (!r.name.empty() && r.name != notification.name) continue;
            if (r.object != nullptr && r.object != notification.object.get()) continue;
            matching.push_back(r.observer);
        }
    }
    for (const auto& observer : matching)
        (*observer)(notification);
}

void NotificationCenter::post(std::string_view name, std::shared_ptr<Object> object, Dictionary userInfo) {
    post(Notification{std::string(name), std::move(object), std::move(userInfo)});
}

ScopedObserver& ScopedObserver::operator=(ScopedObserver&& other) noexcept {
    if (this != &other) {
        reset();
        center_ = other.center_;
        token_ = other.token_;
        other.center_ = nullptr;
    }
    return *this;
}

void ScopedObserver::reset() {
    if (center_) center_->removeObserver(token_);
    center_ = nullptr;
}

} // namespace velmo
