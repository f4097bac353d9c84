#include "velmo/foundation/VPError.h"

#include <fmt/format.h>

#include "velmo/foundation/VDClass.h"

namespace velmo {

VPError::VPError(std::string domain, std::int64_t code, Dictionary userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(userInfo.isNil() ? Dictionary::create() : userInfo) {
}

std::shared_ptr<VPError> VPError::make(std::string domain, std::int64_t code, Dictionary userInfo) {
    return std::make_shared<VPError>(std::move(domain), code, std::move(userInfo));
}

std::shared_ptr<VPError> VPError::withDescription(std::string domain, std::int64_t code,
                                                  std::string description) {
    return make(std::move(domain), code, Dictionary{{kNSLocalizedDescriptionKey, Value(description)}});
}

const VDClass& VPError::classObject() {
    static const VDClass cls("NSError", nullptr, nullptr);
    return cls;
}

std::string VPError::localizedDescription() const {
    const Value& text = userInfo_.get(kNSLocalizedDescriptionKey);
    if (text.isString()) return text.str();
    if (!text.isNone()) return text.description();
    return fmt::format("The operation couldn\u2019t be completed. ({} error {}.)", domain_, code_);
}

std::shared_ptr<VPError> VPError::errorWithResponse(const Value& body) const {
    auto self = [this] {
        try {
            return std::static_pointer_cast<VPError>(std::const_pointer_cast<Object>(shared_from_this()));
        } catch (const std::bad_weak_ptr&) {
            return make(domain_, code_, userInfo_);
        }
    };
    try {
        const Dictionary dict = body.dictionary();
        const Value& error = dict.get("error");
        if (error.isNone()) return self();
        Dictionary info = userInfo_.copy();
        info.set(kNSLocalizedDescriptionKey, error);
        const Value& message = dict.get("message");
        info.set("message", message.isNil() ? error : message);
        return make(domain_, code_, info);
    } catch (...) {
        return self();
    }
}

bool VPError::isEqual(const Object& other) const {
    const auto* e = dynamic_cast<const VPError*>(&other);
    return e && e->domain_ == domain_ && e->code_ == code_ && e->userInfo_ == userInfo_;
}

std::string VPError::description() const {
    return fmt::format("Error Domain={} Code={} \"{}\"", domain_, code_, localizedDescription());
}

} // namespace velmo
