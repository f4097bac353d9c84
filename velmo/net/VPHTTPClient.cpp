#include "velmo/net/VPHTTPClient.h"

#include <map>

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {

namespace {

constexpr const char* kMasterIdentifier = "master";

struct SharedClients {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<VPHTTPClient>, std::less<>> clients;
};

SharedClients& sharedClients() {
    static SharedClients* clients = new SharedClients(); // once, for the process
    return *clients;
}

std::shared_ptr<VPHTTPClient> instantiate(const VDClass& cls) {
    return std::dynamic_pointer_cast<VPHTTPClient>(cls.create());
}

// Header values are strings; numbers are written as text, and anything else is left out.
std::optional<std::string> headerText(const Value& value) {
    if (value.isString()) return value.str();
    if (value.isNumber()) return value.description();
    return std::nullopt;
}

} // namespace

VPHTTPClient::VPHTTPClient() = default;

VPHTTPClient::~VPHTTPClient() = default;

const VDClass& VPHTTPClient::classObject() {
    static const VDClass cls("VPHTTPClient", nullptr,
                             [] { return std::shared_ptr<Object>(std::make_shared<VPHTTPClient>()); });
    return cls;
}

std::shared_ptr<VPHTTPClient> VPHTTPClient::sharedClient() {
    return sharedClientWithIdentifier(kMasterIdentifier);
}

std::shared_ptr<VPHTTPClient> VPHTTPClient::sharedClientWithIdentifier(std::string_view identifier) {
    return sharedClientWithIdentifier(identifier, classObject(), false);
}

std::shared_ptr<VPHTTPClient> VPHTTPClient::sharedClientWithIdentifier(std::string_view identifier,
                                                                       const VDClass& receiver,
                                                                       bool receiverIsAPIClient) {
    SharedClients& shared = sharedClients();
    std::lock_guard lock(shared.mutex);
    if (auto it = shared.clients.find(identifier); it != shared.clients.end()) return it->second;
    std::shared_ptr<VPHTTPClient> client;
    if (receiverIsAPIClient) {
        // The host may have put its own class in place of the service's client.
        VVDI& di = VVDI::shared();
        if (const VDClass* bound = di.classForProtocol(kVVAPIClientInterface)) client = instantiate(*bound);
        if (!client) client = instantiate(receiver);
        if (client) di.bindInstance(client, kVVAPIClientInterface);
    } else {
        client = instantiate(receiver);
    }
    // A class that can't make a client gets a plain one rather than nothing.
    if (!client) client = std::make_shared<VPHTTPClient>();
    shared.clients.emplace(std::string(identifier), client);
    return client;
}

Dictionary VPHTTPClient::HTTPHeaderFields() {
    std::call_once(headersOnce_, [this] { HTTPHeaderFields_ = Dictionary::create(); });
    return HTTPHeaderFields_;
}

void VPHTTPClient::setBasicAuthWithUsername(std::optional<std::string> username,
                                            std::optional<std::string> password) {
    username_ = std::move(username);
    password_ = std::move(password);
}

void VPHTTPClient::setValue(std::optional<std::string> value, std::string_view field) {
    Dictionary headers = HTTPHeaderFields();
    if (value) {
        headers.set(field, Value(*value));
    } else {
        headers.remove(field);
    }
}

// ---------------------------------------------------------------- sending

std::shared_ptr<VPHTTPRequest> VPHTTPClient::GET(std::string_view path, Value parameters,
                                                 Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::GET, std::move(parameters), {}, nullptr, {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::GET(std::string_view path, Value parameters,
                                                 std::string saveToPath, Progress progress,
                                                 Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::GET, std::move(parameters), std::move(saveToPath),
                        std::move(progress), {}, std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::POST(std::string_view path, Value parameters,
                                                  Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::POST, std::move(parameters), {}, nullptr, {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::POST(std::string_view path, Value parameters,
                                                  Dictionary requestHTTPHeaders, Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::POST, std::move(parameters), {}, nullptr,
                        std::move(requestHTTPHeaders), std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::POST(std::string_view path, Value parameters, Progress progress,
                                                  Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::POST, std::move(parameters), {}, std::move(progress), {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::PUT(std::string_view path, Value parameters,
                                                 Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::PUT, std::move(parameters), {}, nullptr, {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::DELETE(std::string_view path, Value parameters,
                                                    Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::DELETE, std::move(parameters), {}, nullptr, {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::HEAD(std::string_view path, Value parameters,
                                                  Completion completion) {
    return queueRequest(path, VPHTTPRequestMethod::HEAD, std::move(parameters), {}, nullptr, {},
                        std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPClient::queueRequest(std::string_view path, VPHTTPRequestMethod method,
                                                          Value parameters, std::string saveToPath,
                                                          Progress progress, Dictionary requestHTTPHeaders,
                                                          Completion completion) {
    const std::string address = basePath_ + std::string(path);

    // A JSON body that is not a dictionary (an array, or nothing) goes as given: base parameters
    // have no place in it. Parameters of a wrong kind also pass, for the request to refuse them.
    const bool jsonBody =
        sendParametersAsJSON_ && (method == VPHTTPRequestMethod::POST || method == VPHTTPRequestMethod::PUT);
    const bool passUnchanged =
        jsonBody ? !parameters.isDictionary() : !parameters.isNil() && !parameters.isDictionary();
    if (!passUnchanged) {
        Dictionary merged = Dictionary::create();
        for (const auto& entry : parameters.dictionary())
            merged.setEntry(entry.key, entry.value);
        for (const auto& entry : baseParameters_)
            merged.setEntry(entry.key, entry.value);
        parameters = Value(merged);
    }

    auto request =
        std::make_shared<VPHTTPRequest>(address, method, std::move(parameters), std::move(saveToPath),
                                        std::move(progress), std::move(completion));
    for (const auto& entry : requestHTTPHeaders) {
        if (auto text = headerText(entry.value)) request->setValue(std::move(text), entry.key.stringView());
    }
    request->setSendParametersAsJSON(sendParametersAsJSON_);
    request->setCachePolicy(cachePolicy_);
    request->setUserAgent(userAgent_);
    request->setTimeoutInterval(timeoutInterval_);
    request->setClient(std::static_pointer_cast<VPHTTPClient>(weak_from_this().lock()));
    // Later than the per-request headers, so a client header wins over one of the same name.
    for (const auto& entry : HTTPHeaderFields()) {
        if (auto text = headerText(entry.value)) request->setValue(std::move(text), entry.key.stringView());
    }
    if (username_ && password_) request->signRequestWithUsername(*username_, *password_);
    queueRequest(request);
    return request;
}

void VPHTTPClient::queueRequest(const std::shared_ptr<VPHTTPRequest>& request) {
    operationQueue_.addOperation(request);
}

void VPHTTPClient::cancelRequestsWithPath(std::string_view path) {
    operationQueue_.cancelOperations([path](Operation& operation) {
        const auto* request = dynamic_cast<const VPHTTPRequest*>(&operation);
        return request && request->requestPath() == path;
    });
}

void VPHTTPClient::cancelAllRequests() {
    operationQueue_.cancelAllOperations();
}

} // namespace velmo
