#include "velmo/net/VPHTTPClient.h"

#include <map>
#include <mutex>

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
    {
        std::lock_guard lock(shared.mutex);
        if (auto it = shared.clients.find(identifier); it != shared.clients.end()) return it->second;
    }
    // Made and bound outside the lock: a client's constructor and the registry may take locks of
    // their own, and other identifiers needn't wait for them.
    std::shared_ptr<VPHTTPClient> client;
    if (receiverIsAPIClient) {
        // The host may have put its own class in place of the service's client.
        if (const VDClass* bound = VVDI::shared().classForProtocol(kVVAPIClientInterface))
            client = instantiate(*bound);
    }
    if (!client) client = instantiate(receiver);
    // A class that can't make a client gets a plain one rather than nothing.
    if (!client) client = std::make_shared<VPHTTPClient>();
    {
        // Of two threads that made one for the same identifier, the first to get here wins.
        std::lock_guard lock(shared.mutex);
        const auto [it, inserted] = shared.clients.try_emplace(std::string(identifier), client);
        if (!inserted) return it->second;
    }
    if (receiverIsAPIClient) VVDI::shared().bindInstance(client, kVVAPIClientInterface);
    return client;
}

// ---------------------------------------------------------------- fields

bool VPHTTPClient::sendParametersAsJSON() const {
    return fields_.get(&Fields::sendParametersAsJSON);
}

void VPHTTPClient::setSendParametersAsJSON(bool json) {
    fields_.set(&Fields::sendParametersAsJSON, json);
}

Dictionary VPHTTPClient::baseParameters() const {
    return fields_.get(&Fields::baseParameters).copy();
}

void VPHTTPClient::setBaseParameters(const Dictionary& parameters) {
    fields_.set(&Fields::baseParameters, parameters.copy());
}

std::optional<std::string> VPHTTPClient::username() const {
    return fields_.get(&Fields::username);
}

std::optional<std::string> VPHTTPClient::password() const {
    return fields_.get(&Fields::password);
}

std::string VPHTTPClient::basePath() const {
    return fields_.get(&Fields::basePath);
}

void VPHTTPClient::setBasePath(std::string basePath) {
    fields_.set(&Fields::basePath, std::move(basePath));
}

std::optional<std::string> VPHTTPClient::userAgent() const {
    return fields_.get(&Fields::userAgent);
}

void VPHTTPClient::setUserAgent(std::optional<std::string> userAgent) {
    fields_.set(&Fields::userAgent, std::move(userAgent));
}

unsigned VPHTTPClient::cachePolicy() const {
    return fields_.get(&Fields::cachePolicy);
}

void VPHTTPClient::setCachePolicy(unsigned policy) {
    fields_.set(&Fields::cachePolicy, policy);
}

unsigned VPHTTPClient::timeoutInterval() const {
    return fields_.get(&Fields::timeoutInterval);
}

void VPHTTPClient::setTimeoutInterval(unsigned seconds) {
    fields_.set(&Fields::timeoutInterval, seconds);
}

Dictionary VPHTTPClient::HTTPHeaderFields() const {
    return fields_.with([](const Fields& f) { return f.HTTPHeaderFields.copy(); });
}

void VPHTTPClient::setBasicAuthWithUsername(std::optional<std::string> username,
                                            std::optional<std::string> password) {
    fields_.with([&](Fields& f) {
        f.username = std::move(username);
        f.password = std::move(password);
    });
}

void VPHTTPClient::setValue(std::optional<std::string> value, std::string_view field) {
    fields_.with([&](Fields& f) {
        if (value) {
            f.HTTPHeaderFields.set(field, Value(std::move(*value)));
        } else {
            f.HTTPHeaderFields.remove(field);
        }
    });
}

VPHTTPClient::Fields VPHTTPClient::fields() const {
    return fields_.with([](const Fields& f) {
        Fields copy = f;
        copy.HTTPHeaderFields = f.HTTPHeaderFields.copy();
        return copy;
    });
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
    const Fields fields = this->fields();
    const std::string address = fields.basePath + std::string(path);

    // A JSON body that is not a dictionary (an array, or nothing) goes as given: base parameters
    // have no place in it. Parameters of a wrong kind also pass, for the request to refuse them.
    const bool jsonBody = fields.sendParametersAsJSON &&
                          (method == VPHTTPRequestMethod::POST || method == VPHTTPRequestMethod::PUT);
    const bool passUnchanged =
        jsonBody ? !parameters.isDictionary() : !parameters.isNil() && !parameters.isDictionary();
    if (!passUnchanged) {
        Dictionary merged = Dictionary::create();
        for (const auto& entry : parameters.dictionary())
            merged.setEntry(entry.key, entry.value);
        for (const auto& entry : fields.baseParameters)
            merged.setEntry(entry.key, entry.value);
        parameters = Value(merged);
    }

    auto request =
        std::make_shared<VPHTTPRequest>(address, method, std::move(parameters), std::move(saveToPath),
                                        std::move(progress), std::move(completion));
    for (const auto& entry : requestHTTPHeaders) {
        if (auto text = headerText(entry.value)) request->setValue(std::move(text), entry.key.stringView());
    }
    request->setSendParametersAsJSON(fields.sendParametersAsJSON);
    request->setCachePolicy(fields.cachePolicy);
    request->setUserAgent(fields.userAgent);
    request->setTimeoutInterval(fields.timeoutInterval);
    request->setClient(std::static_pointer_cast<VPHTTPClient>(weak_from_this().lock()));
    // Later than the per-request headers, so a client header wins over one of the same name.
    for (const auto& entry : fields.HTTPHeaderFields) {
        if (auto text = headerText(entry.value)) request->setValue(std::move(text), entry.key.stringView());
    }
    if (fields.username && fields.password)
        request->signRequestWithUsername(*fields.username, *fields.password);
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
