#pragma once

#include <mutex>
#include <utility>

namespace velmo {

/// A block of fields reached only under its own lock: one lock for the block, taken for one read,
/// one write or one piece of work on several fields at once, so that no accessor can forget it.
/// Work given to `with` must be short and must not call out to code that could take the lock again.
template <class T> class Guarded {
public:
    Guarded() = default;
    explicit Guarded(T value) : value_(std::move(value)) {}
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    /// Runs `work` on the fields under the lock and gives its result.
    template <class F> decltype(auto) with(F&& work) {
        std::lock_guard lock(mutex_);
        return std::forward<F>(work)(value_);
    }
    template <class F> decltype(auto) with(F&& work) const {
        std::lock_guard lock(mutex_);
        return std::forward<F>(work)(std::as_const(value_));
    }

    /// A copy of one field.
    template <class M> M get(M T::*field) const {
        std::lock_guard lock(mutex_);
        return value_.*field;
    }
    /// Replaces one field.
    template <class M, class V> void set(M T::*field, V&& value) {
        std::lock_guard lock(mutex_);
        value_.*field = std::forward<V>(value);
    }

private:
    mutable std::mutex mutex_;
    T value_;
};

} // namespace velmo
