#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// A posted notification: its name, the object it concerns (may be null) and user information
/// (nil when the poster gave none).
struct Notification {
    std::string name;
    std::shared_ptr<Object> object;
    Dictionary userInfo;
};

/// Delivers notifications synchronously on the posting thread to the observers whose name and
/// object filters match, in the order they were added.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;
    using Token = std::uint64_t;

    static NotificationCenter& defaultCenter();

    /// `name` empty: every name. `object` null: every object. The object is compared by identity
    /// and not retained. Returns a token for `removeObserver`.
    Token addObserver(std::string_view name, const Object* object, Observer observer);
    void removeObserver(Token token);

    void post(Notification notification);
    void post(std::string_view name, std::shared_ptr<Object> object = nullptr,
              Dictionary userInfo = Dictionary());

private:
    struct Registration {
        Token token;
        std::string name;
        const Object* object;
        std::shared_ptr<Observer> observer;
    };
    std::mutex mutex_;
    std::vector<Registration> registrations_;
    Token nextToken_ = 1;
};

/// Removes its observer when it goes, for observers that must not outlive their owner.
class ScopedObserver {
public:
    ScopedObserver() = default;
    ScopedObserver(NotificationCenter& center, NotificationCenter::Token token)
        : center_(&center), token_(token) {}
    ScopedObserver(ScopedObserver&& other) noexcept : center_(other.center_), token_(other.token_) {
        other.center_ = nullptr;
    }
    ScopedObserver& operator=(ScopedObserver&& other) noexcept;
    ~ScopedObserver() { reset(); }
    void reset();

private:
    NotificationCenter* center_ = nullptr;
    NotificationCenter::Token token_ = 0;
};

} // namespace velmo
