#pragma once

#include <memory>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// A plain value as an object, for notifications whose object is a list or a text (the account
/// cache posts its new values so). Observers read `value()`.
class ValueObject : public Object {
public:
    explicit ValueObject(Value value) : value_(std::move(value)) {}

    /// nullptr for nil, so that "no value" posts no object.
    static std::shared_ptr<ValueObject> make(Value value);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    const Value& value() const { return value_; }

    bool isEqual(const Object& other) const override;
    std::string description() const override { return value_.description(); }

private:
    Value value_;
};

} // namespace velmo
