#include "server/ServiceError.h"

#include <fmt/format.h>

namespace velmo::server {

ServiceError::ServiceError(int status, std::string error, const std::string& message, std::string field)
    : std::runtime_error(message), status_(status), error_(std::move(error)), field_(std::move(field)) {}

ServiceError ServiceError::missingField(const std::string& field) {
    return ServiceError(400, "missing_field", fmt::format("The field \"{}\" is missing", field), field);
}

ServiceError ServiceError::invalidField(const std::string& field, const std::string& why) {
    return ServiceError(400, "invalid_field", fmt::format("The field \"{}\" {}", field, why), field);
}

ServiceError ServiceError::notFound(const std::string& what) {
    return ServiceError(404, "not_found", what);
}

ServiceError ServiceError::forbidden(const std::string& message) {
    return ServiceError(403, "forbidden", message);
}

ServiceError ServiceError::unauthorized(std::string error, const std::string& message) {
    return ServiceError(401, std::move(error), message);
}

ServiceError ServiceError::conflict(std::string error, const std::string& message) {
    return ServiceError(409, std::move(error), message);
}

Dictionary ServiceError::body() const {
    Dictionary body{{"error", Value(error_)}, {"message", Value(what())}};
    if (!field_.empty()) body.set("field", Value(field_));
    return body;
}

} // namespace velmo::server
