#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "server/ServiceRequest.h"
#include "server/ServiceStore.h"

namespace velmo::server {

/// What a call answers: a status and a JSON body, or text as it is (the configuration file).
struct ServiceReply {
    ServiceReply() = default;
    ServiceReply(int status, Value body) : status(status), body(std::move(body)) {}

    int status = 200;
    Value body;
    /// Sent instead of `body` when `body` is nil.
    std::string text;
    std::string contentType = "application/json";
};

/// The calls the service answers, each reading its request's fields and answering with the
/// store's records. The route table (`ServiceServer`) says which path and method reach which call
/// and whether it needs a signed-in user.
class ServiceCalls {
public:
    ServiceCalls(ServiceStore& store, std::filesystem::path configFile);

    ServiceReply health(const ServiceRequest& request);
    ServiceReply remoteConfiguration(const ServiceRequest& request);
    ServiceReply logLine(const ServiceRequest& request);
    ServiceReply analyticsEvent(const ServiceRequest& request);

    ServiceReply me(const ServiceRequest& request);
    ServiceReply teamMemberships(const ServiceRequest& request);
    ServiceReply personalProjects(const ServiceRequest& request);
    ServiceReply installation(const ServiceRequest& request);
    ServiceReply teamProjects(const ServiceRequest& request);
    ServiceReply createProject(const ServiceRequest& request);
    ServiceReply project(const ServiceRequest& request);
    ServiceReply updateProject(const ServiceRequest& request);
    ServiceReply createProjectRelease(const ServiceRequest& request);
    ServiceReply previewRating(const ServiceRequest& request);
    ServiceReply scopedPreviewRating(const ServiceRequest& request);
    ServiceReply availableFonts(const ServiceRequest& request);

    /// The text the client puts in a path where a value is absent: a project made without a team.
    static constexpr std::string_view kAbsentId = "(null)";

private:
    ServiceReply keepEvent(const ServiceRequest& request, const std::string& kind, const char* nameKey);
    ServiceReply rating(const ServiceRequest& request, const std::optional<RatingSubject>& subject);

    ServiceStore& store_;
    std::filesystem::path configFile_;
};

} // namespace velmo::server
