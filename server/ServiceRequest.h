#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/ServiceStore.h"
#include "velmo/foundation/Value.h"

namespace velmo::server {

/// One call as the service's routes see it: the parts of the path that name records, the signed-in
/// user, and the body's fields, which come as JSON or as a form (the client sends either,
/// depending on what it sent before). Field readers refuse with a 400 that names the field.
class ServiceRequest {
public:
    /// The fields of a body: a JSON object, an URL-encoded form or a multipart form (given here as
    /// their decoded fields), or nothing. Throws ServiceError: 415 for another kind of body, 400
    /// for JSON that doesn't parse or isn't an object.
    static Dictionary parseBody(std::string_view contentType, std::string_view body,
                                const std::vector<std::pair<std::string, std::string>>& formFields);

    std::string method;
    std::string path;
    /// The path's parts that the route captured, in order.
    std::vector<std::string> captures;
    std::optional<ServiceUser> user;
    Dictionary body;
    /// "client_id", "user_id", "user_email" of the identity headers, where sent.
    Dictionary identity;

    const ServiceUser& signedInUser() const;
    /// A text field that must be there and not be empty.
    std::string text(std::string_view field) const;
    /// A text field that must be there; it may be empty.
    std::string textAllowingEmpty(std::string_view field) const;
    /// An integer: a JSON integer, or a form's decimal text.
    std::int64_t integer(std::string_view field) const;
    /// The id of a resource reference {"type": `type`, "id": <id>}.
    std::string reference(std::string_view field, std::string_view type) const;
    /// An array of texts; an element may be a dictionary, whose `nameKey` is the text.
    std::vector<std::string> texts(std::string_view field, std::string_view nameKey) const;

    /// Whether text may name a record: ids are short words of letters, digits, "-" and "_", which
    /// keeps any path out of them.
    static bool isValidId(std::string_view id);
    /// Refuses a text that isn't a valid id, naming the field.
    static void requireId(std::string_view field, std::string_view id);

private:
    const Value& required(std::string_view field) const;
};

} // namespace velmo::server
