#include "server/ServiceServer.h"

#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <regex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <SQLiteCpp/Exception.h>
#include <fmt/format.h>
#include <httplib.h>

#include "server/ServiceCalls.h"
#include "server/ServiceError.h"
#include "server/ServiceWorkers.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/Utf8.h"

namespace velmo::server {

namespace {

// Idle keep-alive connections hold a worker each; a short wait lets them go soon, also when the
// service stops.
constexpr time_t kKeepAliveSeconds = 1;

struct Route {
    const char* method;
    std::regex path;
    /// Whether it needs "Authorization: JWT <token>". The logging sinks, the configuration
    /// document and the health check don't: the client sends no token there.
    bool signedIn;
    ServiceReply (ServiceCalls::*call)(const ServiceRequest&);
};

const std::vector<Route>& routes() {
    using C = ServiceCalls;
    // An id is one path segment: a "/" never reaches a capture, and `isValidId` checks the rest.
    static const std::vector<Route> table = {
        {"GET", std::regex("/health"), false, &C::health},
        {"GET", std::regex("/sketchplugin/plugin_config\\.json"), false, &C::remoteConfiguration},
        {"POST", std::regex("/events/?"), false, &C::logLine},
        {"POST", std::regex("/mixpanel/?"), false, &C::analyticsEvent},
        {"GET", std::regex("/v2/users/me/?"), true, &C::me},
        {"GET", std::regex("/v2/users/me/team_memberships/?"), true, &C::teamMemberships},
        {"GET", std::regex("/v2/users/me/projects/?"), true, &C::personalProjects},
        {"POST", std::regex("/v2/users/me/installations/?"), true, &C::installation},
        {"GET", std::regex("/v2/teams/([^/]+)/projects/?"), true, &C::teamProjects},
        {"POST", std::regex("/v2/teams/([^/]+)/projects/?"), true, &C::createProject},
        {"GET", std::regex("/v2/projects/([^/]+)/?"), true, &C::project},
        {"PUT", std::regex("/v2/projects/([^/]+)/?"), true, &C::updateProject},
        {"POST", std::regex("/v2/projects/([^/]+)/project_releases/?"), true, &C::createProjectRelease},
        {"POST", std::regex("/v2/preview_ratings/?"), true, &C::previewRating},
        {"POST", std::regex("/v2/(projects|releases)/([^/]+)/preview_ratings/?"), true,
         &C::scopedPreviewRating},
        {"POST", std::regex("/rpc/get_available_fonts/?"), true, &C::availableFonts},
    };
    return table;
}

void sendJson(httplib::Response& res, int status, const Value& body) {
    res.status = status;
    res.set_content(Json::write(body), "application/json");
}

void sendError(httplib::Response& res, const ServiceError& error) {
    sendJson(res, error.status(), Value(error.body()));
}

std::vector<std::pair<std::string, std::string>> formFields(const httplib::Request& req) {
    std::vector<std::pair<std::string, std::string>> fields;
    if (req.is_multipart_form_data()) {
        for (const auto& [name, part] : req.files)
            fields.emplace_back(name, part.content);
    } else {
        for (const auto& [name, value] : req.params)
            fields.emplace_back(name, value);
    }
    return fields;
}

/// The HTTP server compresses answers with the best encoding the client accepts, and brotli at
/// its fixed top quality costs some 50 ms for a listing of 50 KB, where gzip costs 1 ms for a few
/// hundred bytes more. So the answer is offered to be gzip at most. The server's request object is
/// its own, writable one, handed to handlers as const, and read for compression after them.
void offerGzipOnly(const httplib::Request& req) {
    auto& headers = const_cast<httplib::Request&>(req).headers;
    const auto accepted = headers.find("Accept-Encoding");
    if (accepted == headers.end()) return;
    accepted->second = accepted->second.find("gzip") != std::string::npos ? "gzip" : "identity";
}

Dictionary identityOf(const httplib::Request& req) {
    Dictionary identity = Dictionary::create(3);
    for (const auto& [header, key] :
         {std::pair{"X-Client-Id", "client_id"}, std::pair{"X-User-Id", "user_id"},
          std::pair{"X-User-Email", "user_email"}}) {
        if (req.has_header(header)) identity.set(key, Value(Utf8::sanitized(req.get_header_value(header))));
    }
    return identity;
}

} // namespace

struct ServiceServer::Impl {
    explicit Impl(ServiceOptions o)
        : options(std::move(o)), store(options.dataFolder, options.workers, options.maxEvents),
          calls(store, options.configFile) {}

    std::optional<ServiceUser> authenticate(const httplib::Request& req) {
        if (!req.has_header("Authorization")) {
            throw ServiceError::unauthorized("not_authenticated",
                                             "Sign in first: this call needs \"Authorization: JWT <token>\"");
        }
        const std::string value = req.get_header_value("Authorization");
        constexpr std::string_view scheme = "JWT ";
        std::optional<ServiceUser> user;
        if (value.starts_with(scheme))
            user = store.userForToken(std::string_view(value).substr(scheme.size()));
        if (!user)
            throw ServiceError::unauthorized("invalid_token", "The token is not known to this service");
        return user;
    }

    void dispatch(const httplib::Request& req, httplib::Response& res) {
        offerGzipOnly(req);
        answer(req, res);
        // Other connections wait for this worker: let it go after this answer.
        if (workers && workers->waiting() > 0) res.set_header("Connection", "close");
    }

    void answer(const httplib::Request& req, httplib::Response& res) {
        try {
            const std::string& method = req.method == "HEAD" ? std::string("GET") : req.method;
            bool pathKnown = false;
            for (const Route& route : routes()) {
                std::smatch match;
                if (!std::regex_match(req.path, match, route.path)) continue;
                pathKnown = true;
                if (method != route.method) continue;
                ServiceRequest request;
                request.method = req.method;
                request.path = req.path;
                for (std::size_t i = 1; i < match.size(); ++i)
                    request.captures.push_back(match[i].str());
                // "(null)" stands for an absent team in the one call that takes it; every other
                // captured id must be a real one.
                for (const std::string& capture : request.captures) {
                    if (capture != "projects" && capture != "releases" && capture != ServiceCalls::kAbsentId)
                        ServiceRequest::requireId("path", capture);
                }
                if (route.signedIn) request.user = authenticate(req);
                if (req.method == "POST" || req.method == "PUT") {
                    request.body = ServiceRequest::parseBody(req.get_header_value("Content-Type"), req.body,
                                                             formFields(req));
                }
                request.identity = identityOf(req);
                const ServiceReply reply = (calls.*route.call)(request);
                if (reply.body.isNil()) {
                    res.status = reply.status;
                    res.set_content(reply.text, reply.contentType.c_str());
                } else {
                    sendJson(res, reply.status, reply.body);
                }
                return;
            }
            if (pathKnown) {
                sendError(res, ServiceError(405, "method_not_allowed",
                                            fmt::format("{} is not answered on {}", req.method, req.path)));
            } else {
                sendError(res, ServiceError::notFound(fmt::format("No such path: {}", req.path)));
            }
        } catch (const ServiceError& error) {
            sendError(res, error);
        } catch (const SQLite::Exception& error) {
            SystemLog::log(
                fmt::format("velmo serve: {} {}: the store failed: {}", req.method, req.path, error.what()));
            sendError(res, ServiceError(503, "store_unavailable", "The service's store failed; try again"));
        } catch (const std::exception& error) {
            SystemLog::log(fmt::format("velmo serve: {} {}: {}", req.method, req.path, error.what()));
            sendError(res, ServiceError(500, "internal_error", "The service failed to answer"));
        }
    }

    ServiceOptions options;
    ServiceStore store;
    ServiceCalls calls;
    httplib::Server http;
    int port = 0;
    /// Made by the server when it starts serving, and owned by it.
    ServiceWorkers* workers = nullptr;
    /// The listening socket, caught as the server library makes it.
    socket_t listening = -1;
    std::atomic<bool> serving{false};
    std::atomic<bool> stopping{false};
};

ServiceServer::ServiceServer(ServiceOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {
    Impl& impl = *impl_;
    const std::size_t workers = impl.options.workers == 0 ? 1 : impl.options.workers;
    impl.http.new_task_queue = [&impl, workers] {
        auto* pool = new ServiceWorkers(workers);
        impl.workers = pool;
        return pool;
    };
    impl.http.set_payload_max_length(impl.options.maxBodyBytes);
    impl.http.set_keep_alive_timeout(kKeepAliveSeconds);
    impl.http.set_tcp_nodelay(true);
    // Reuse of the address, so that a restart needn't wait out the old connections; not of the
    // port, which would let a second service share it silently instead of failing to start.
    impl.http.set_socket_options([&impl](socket_t sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        impl.listening = sock;
    });
    const auto handler = [&impl](const httplib::Request& req, httplib::Response& res) {
        impl.dispatch(req, res);
    };
    impl.http.Get(".*", handler);
    impl.http.Post(".*", handler);
    impl.http.Put(".*", handler);
    impl.http.Patch(".*", handler);
    impl.http.Delete(".*", handler);
    impl.http.Options(".*", handler);
    // What the server refuses by itself (a body over the limit, a request it can't read) is JSON too.
    impl.http.set_error_handler([](const httplib::Request&, httplib::Response& res) {
        if (!res.body.empty()) return;
        const std::string error = res.status == 413 ? "payload_too_large" : "bad_request";
        const std::string message = res.status == 413
                                        ? "The body is larger than this service takes"
                                        : fmt::format("The request was refused ({})", res.status);
        res.set_content(Json::write(Value(Dictionary{{"error", Value(error)}, {"message", Value(message)}})),
                        "application/json");
    });
}

ServiceServer::~ServiceServer() {
    stop();
    // `serve` returning on another thread must be done before what it uses goes.
    while (impl_->serving)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

int ServiceServer::bind() {
    Impl& impl = *impl_;
    if (impl.options.port == 0) {
        impl.port = impl.http.bind_to_any_port(impl.options.host);
    } else if (impl.http.bind_to_port(impl.options.host, impl.options.port)) {
        impl.port = impl.options.port;
    } else {
        impl.port = -1;
    }
    if (impl.port <= 0) {
        throw std::runtime_error(
            fmt::format("cannot listen on {}:{} (in use, or not an address of this machine)",
                        impl.options.host, impl.options.port));
    }
    // The server library listens with a backlog of 5: a burst of connections beyond it is dropped
    // by the kernel, and the clients try again only a second later. The system's own backlog
    // takes the burst.
    if (::listen(impl.listening, SOMAXCONN) != 0)
        throw std::runtime_error(fmt::format("cannot listen on {}:{}", impl.options.host, impl.port));
    return impl.port;
}

void ServiceServer::serve() {
    impl_->serving = true;
    if (!impl_->stopping) impl_->http.listen_after_bind();
    impl_->serving = false;
}

void ServiceServer::stop() {
    impl_->stopping = true;
    // A stop that comes between `serve`'s start and the server's loop must wait for the loop, or
    // the loop would never hear of it.
    while (impl_->serving) {
        if (impl_->http.is_running()) {
            impl_->http.stop();
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

int ServiceServer::port() const {
    return impl_->port;
}

std::string ServiceServer::baseURL() const {
    return fmt::format("http://{}:{}", impl_->options.host, impl_->port);
}

ServiceStore& ServiceServer::store() {
    return impl_->store;
}

} // namespace velmo::server
