#include "server/ServiceRequest.h"

#include <charconv>

#include <fmt/format.h>

#include "server/ServiceError.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/Utf8.h"
#include "velmo/model/values/StringExtensions.h"

namespace velmo::server {

namespace {

constexpr std::size_t kMaxIdLength = 64;

/// The media type alone, in lower case: "Application/JSON; charset=utf-8" is "application/json".
std::string mediaType(std::string_view contentType) {
    return toLowerAscii(trimBlanks(contentType.substr(0, contentType.find(';'))));
}

} // namespace

Dictionary ServiceRequest::parseBody(std::string_view contentType, std::string_view body,
                                     const std::vector<std::pair<std::string, std::string>>& formFields) {
    const std::string type = mediaType(contentType);
    if (type == "application/json") {
        JsonParseError error("", 0);
        const Value parsed = Json::tryParse(body, Json::ReadOptions{}, &error);
        if (parsed.isNil()) {
            throw ServiceError(
                400, "malformed_json",
                fmt::format("The body is not valid JSON: {} at offset {}", error.reason(), error.offset()));
        }
        if (!parsed.isDictionary())
            throw ServiceError(400, "malformed_json", "The body must be a JSON object");
        return parsed.dictionary();
    }
    if (type == "application/x-www-form-urlencoded" || type == "multipart/form-data") {
        Dictionary fields = Dictionary::create(formFields.size());
        for (const auto& [name, value] : formFields)
            fields.set(name, Value(value));
        return fields;
    }
    if (type.empty() && body.empty()) return Dictionary::create();
    throw ServiceError(415, "unsupported_media_type",
                       fmt::format("The body must be JSON or a form, not \"{}\"",
                                   type.empty() ? "a body without a content type" : type));
}

const ServiceUser& ServiceRequest::signedInUser() const {
    // Routes that read the user are only reached signed in; this is the guard against a route
    // table that says otherwise.
    if (!user) throw ServiceError::unauthorized("not_authenticated", "This call needs a signed-in user");
    return *user;
}

const Value& ServiceRequest::required(std::string_view field) const {
    const Value* value = body.find(field);
    if (!value || value->isNone()) throw ServiceError::missingField(std::string(field));
    return *value;
}

std::string ServiceRequest::textAllowingEmpty(std::string_view field) const {
    const Value& value = required(field);
    if (!value.isString()) throw ServiceError::invalidField(std::string(field), "must be a text");
    return value.str();
}

std::string ServiceRequest::text(std::string_view field) const {
    std::string value = textAllowingEmpty(field);
    if (value.find_first_not_of(" \t\r\n") == std::string::npos)
        throw ServiceError::invalidField(std::string(field), "is empty");
    return value;
}

std::int64_t ServiceRequest::integer(std::string_view field) const {
    const Value& value = required(field);
    if (value.isNumber() && value.isIntegral()) return value.int64Value();
    if (value.isString()) {
        const std::string_view digits = value.stringView();
        std::int64_t number = 0;
        const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (ec == std::errc() && end == digits.data() + digits.size() && !digits.empty()) return number;
    }
    throw ServiceError::invalidField(std::string(field), "must be an integer");
}

std::string ServiceRequest::reference(std::string_view field, std::string_view type) const {
    const Value& value = required(field);
    const std::string name(field);
    if (!value.isDictionary())
        throw ServiceError::invalidField(name,
                                         fmt::format("must be {{\"type\": \"{}\", \"id\": <id>}}", type));
    const Dictionary reference = value.dictionary();
    if (reference.get("type").stringView() != type)
        throw ServiceError::invalidField(name, fmt::format("must have the type \"{}\"", type));
    const Value& id = reference.get("id");
    if (!id.isString()) throw ServiceError::invalidField(name, "must have a text \"id\"");
    requireId(field, id.stringView());
    return id.str();
}

std::vector<std::string> ServiceRequest::texts(std::string_view field, std::string_view nameKey) const {
    const Value& value = required(field);
    if (!value.isArray()) throw ServiceError::invalidField(std::string(field), "must be an array");
    std::vector<std::string> texts;
    texts.reserve(value.array().size());
    for (const Value& element : value.array()) {
        const Value& text = element.isDictionary() ? element.dictionary().get(nameKey) : element;
        if (!text.isString()) {
            throw ServiceError::invalidField(
                std::string(field),
                fmt::format("must hold texts or {{\"{}\": <text>}} dictionaries", nameKey));
        }
        texts.push_back(text.str());
    }
    return texts;
}

bool ServiceRequest::isValidId(std::string_view id) {
    if (id.empty() || id.size() > kMaxIdLength) return false;
    for (const char c : id) {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                        c == '-' || c == '_';
        if (!ok) return false;
    }
    return true;
}

void ServiceRequest::requireId(std::string_view field, std::string_view id) {
    if (!isValidId(id)) {
        throw ServiceError(400, "invalid_id",
                           fmt::format("\"{}\" is not a valid id for \"{}\"",
                                       Utf8::sanitized(id.substr(0, kMaxIdLength)), field),
                           std::string(field));
    }
}

} // namespace velmo::server
