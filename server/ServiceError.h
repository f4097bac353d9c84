#pragma once

#include <stdexcept>
#include <string>

#include "velmo/foundation/Value.h"

namespace velmo::server {

/// A refusal of the service, with the status it answers and the JSON body it sends: "error", a
/// short code a program can test, and "message", the sentence a user reads; "field" names the
/// body's field at fault when there is one.
class ServiceError : public std::runtime_error {
public:
    ServiceError(int status, std::string error, const std::string& message, std::string field = {});

    static ServiceError missingField(const std::string& field);
    static ServiceError invalidField(const std::string& field, const std::string& why);
    static ServiceError notFound(const std::string& what);
    static ServiceError forbidden(const std::string& message);
    static ServiceError unauthorized(std::string error, const std::string& message);
    static ServiceError conflict(std::string error, const std::string& message);

    int status() const { return status_; }
    const std::string& error() const { return error_; }
    const std::string& field() const { return field_; }
    /// {"error", "message"[, "field"]}
    Dictionary body() const;

private:
    int status_;
    std::string error_;
    std::string field_;
};

} // namespace velmo::server
