#include "server/ServiceCalls.h"

#include <fmt/format.h>

#include "server/ServiceError.h"
#include "server/ServiceSchema.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"

namespace velmo::server {

namespace {

constexpr std::int64_t kLowestRating = 1;
constexpr std::int64_t kHighestRating = 5;
constexpr std::size_t kMaxNameLength = 200;

ServiceReply created(Value body) {
    return ServiceReply{201, std::move(body)};
}

ServiceReply results(Array records) {
    return ServiceReply{200, Value(Dictionary{{"results", Value(records)}})};
}

std::string projectName(const ServiceRequest& request) {
    std::string name = request.text("name");
    if (name.size() > kMaxNameLength)
        throw ServiceError::invalidField("name", fmt::format("is longer than {} bytes", kMaxNameLength));
    return name;
}

} // namespace

ServiceCalls::ServiceCalls(ServiceStore& store, std::filesystem::path configFile)
    : store_(store), configFile_(std::move(configFile)) {}

ServiceReply ServiceCalls::health(const ServiceRequest&) {
    return ServiceReply{200, Value(Dictionary{{"status", Value("ok")},
                                              {"schema_version", Value(ServiceSchema::currentVersion())}})};
}

ServiceReply ServiceCalls::remoteConfiguration(const ServiceRequest&) {
    // Read at each request, so that the operator's replacement of the file counts at once.
    std::error_code error;
    auto text = configFile_.empty() ? std::nullopt : Files::read(configFile_, error);
    if (!text) throw ServiceError::notFound("The service has no configuration document");
    ServiceReply reply;
    reply.text = std::move(*text);
    return reply;
}

ServiceReply ServiceCalls::keepEvent(const ServiceRequest& request, const std::string& kind,
                                     const char* nameKey) {
    Dictionary identity = request.identity.copy();
    const Value& name = request.body.get(nameKey);
    if (name.isString()) identity.set("name", name);
    // Kept as JSON whichever way it came, a form's fields included.
    store_.addEvent(kind, identity, Json::write(Value(request.body)));
    return ServiceReply{202, Value(Dictionary{{"status", Value("accepted")}})};
}

ServiceReply ServiceCalls::logLine(const ServiceRequest& request) {
    request.textAllowingEmpty("text");
    return keepEvent(request, "log", "text");
}

ServiceReply ServiceCalls::analyticsEvent(const ServiceRequest& request) {
    request.text("event");
    return keepEvent(request, "event", "event");
}

ServiceReply ServiceCalls::me(const ServiceRequest& request) {
    return ServiceReply{200, Value(store_.userRecord(request.signedInUser()))};
}

ServiceReply ServiceCalls::teamMemberships(const ServiceRequest& request) {
    return results(store_.memberships(request.signedInUser()));
}

ServiceReply ServiceCalls::personalProjects(const ServiceRequest& request) {
    return results(store_.personalProjects(request.signedInUser()));
}

ServiceReply ServiceCalls::installation(const ServiceRequest& request) {
    const std::string clientId = request.text("client_id");
    bool isNew = false;
    Dictionary record = store_.addInstallation(request.signedInUser(), clientId, isNew);
    return ServiceReply{isNew ? 201 : 200, Value(record)};
}

ServiceReply ServiceCalls::teamProjects(const ServiceRequest& request) {
    return results(store_.teamProjects(request.signedInUser(), request.captures.at(0)));
}

ServiceReply ServiceCalls::createProject(const ServiceRequest& request) {
    const std::string& pathTeam = request.captures.at(0);
    const std::string name = projectName(request);
    std::optional<std::string> team;
    if (request.body.contains("team")) team = request.reference("team", "teams");
    if (pathTeam != kAbsentId) {
        if (team && *team != pathTeam)
            throw ServiceError::invalidField(
                "team", fmt::format("names another team than the path's \"{}\"", pathTeam));
        team = pathTeam;
    }
    return created(Value(store_.createProject(request.signedInUser(), team, name)));
}

ServiceReply ServiceCalls::project(const ServiceRequest& request) {
    return ServiceReply{200, Value(store_.project(request.signedInUser(), request.captures.at(0)))};
}

ServiceReply ServiceCalls::updateProject(const ServiceRequest& request) {
    Dictionary changes = Dictionary::create();
    for (const auto& entry : request.body) {
        const std::string_view key = entry.key.stringView();
        if (key == "name") {
            changes.set("name", Value(projectName(request)));
        } else if (key == "live_project_release") {
            changes.set("live_project_release", Value(request.reference(key, "project_releases")));
        } else {
            throw ServiceError::invalidField(std::string(key), "can't be changed");
        }
    }
    if (changes.empty())
        throw ServiceError(400, "missing_field",
                           "Nothing to change: give \"name\" or \"live_project_release\"");
    return ServiceReply{200,
                        Value(store_.updateProject(request.signedInUser(), request.captures.at(0), changes))};
}

ServiceReply ServiceCalls::createProjectRelease(const ServiceRequest& request) {
    const std::string release = request.reference("release", "releases");
    return created(
        Value(store_.createProjectRelease(request.signedInUser(), request.captures.at(0), release)));
}

ServiceReply ServiceCalls::rating(const ServiceRequest& request,
                                  const std::optional<RatingSubject>& subject) {
    const std::string comment = request.textAllowingEmpty("comment");
    const std::int64_t rating = request.integer("rating");
    if (rating < kLowestRating || rating > kHighestRating) {
        throw ServiceError::invalidField(
            "rating", fmt::format("must be from {} to {} stars", kLowestRating, kHighestRating));
    }
    return created(
        Value(store_.addRating(request.signedInUser(), subject, static_cast<int>(rating), comment)));
}

ServiceReply ServiceCalls::previewRating(const ServiceRequest& request) {
    return rating(request, std::nullopt);
}

ServiceReply ServiceCalls::scopedPreviewRating(const ServiceRequest& request) {
    return rating(request, RatingSubject{request.captures.at(0), request.captures.at(1)});
}

ServiceReply ServiceCalls::availableFonts(const ServiceRequest& request) {
    return ServiceReply{200, Value(store_.availableFonts(request.texts("font_names", "familyName")))};
}

} // namespace velmo::server
