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

template <class T> T readLocked(std::mutex& mutex, const T& field) {
    std::lock_guard lock(mutex);
    return field;
}

template <class T> void writeLocked(std::mutex& mutex, T& field, T value) {
    std::lock_guard lock(mutex);
    field = std::move(value);
}

// Header values are strings; numbers are written as text, and anything else is left out.
std::optional<std::string> headerText(const Value& value) {
    if (value.isString()) return value.str();
    if (value.isNumber()) return value.description();
    return std::nullopt;
}

} // namespace

struct VPHTTPClient::Fields {
    bool sendParametersAsJSON = false;
    Dictionary baseParameters;
    std::optional<std::string> username;
    std::optional<std::string> password;
    std::string basePath;
    std::optional<std::string> userAgent;
    unsigned cachePolicy = 0;
    unsigned timeoutInterval = 0;
    Dictionary HTTPHeaderFields;
};

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
    return readLocked(mutex_, sendParametersAsJSON_);
}

void VPHTTPClient::setSendParametersAsJSON(bool json) {
    writeLocked(mutex_, sendParametersAsJSON_, json);
}

Dictionary VPHTTPClient::baseParameters() const {
    return readLocked(mutex_, baseParameters_).copy();
}

void VPHTTPClient::setBaseParameters(const Dictionary& parameters) {
    writeLocked(mutex_, baseParameters_, parameters.copy());
}

std::optional<std::string> VPHTTPClient::username() const {
    return readLocked(mutex_, username_);
}

std::optional<std::string> VPHTTPClient::password() const {
    return readLocked(mutex_, password_);
}

std::string VPHTTPClient::basePath() const {
    return readLocked(mutex_, basePath_);
}

void VPHTTPClient::setBasePath(std::string basePath) {
    writeLocked(mutex_, basePath_, std::move(basePath));
}

std::optional<std::string> VPHTTPClient::userAgent() const {
    return readLocked(mutex_, userAgent_);
}

void VPHTTPClient::setUserAgent(std::optional<std::string> userAgent) {
    writeLocked(mutex_, userAgent_, std::move(userAgent));
}

unsigned VPHTTPClient::cachePolicy() const {
    return readLocked(mutex_, cachePolicy_);
}

void VPHTTPClient::setCachePolicy(unsigned policy) {
    writeLocked(mutex_, cachePolicy_, policy);
}

unsigned VPHTTPClient::timeoutInterval() const {
    return readLocked(mutex_, timeoutInterval_);
}

void VPHTTPClient::setTimeoutInterval(unsigned seconds) {
    writeLocked(mutex_, timeoutInterval_, seconds);
}

Dictionary VPHTTPClient::HTTPHeaderFields() const {
    std::lock_guard lock(mutex_);
    return HTTPHeaderFields_.copy();
}

void VPHTTPClient::setBasicAuthWithUsername(std::optional<std::string> username,
                                            std::optional<std::string> password) {
    std::lock_guard lock(mutex_);
    username_ = std::move(username);
    password_ = std::move(password);
}

void VPHTTPClient::setValue(std::optional<std::string> value, std::string_view field) {
    std::lock_guard lock(mutex_);
    if (value) {
        HTTPHeaderFields_.set(field, Value(std::move(*value)));
    } else {
        HTTPHeaderFields_.remove(field);
    }
}

VPHTTPClient::Fields VPHTTPClient::fields() const {
    // Base parameters are replaced, never changed in place, so sharing them is as good as a copy;
    // the headers are changed in place.
    std::lock_guard lock(mutex_);
    return Fields{sendParametersAsJSON_,
                  baseParameters_,
                  username_,
                  password_,
                  basePath_,
                  userAgent_,
                  cachePolicy_,
                  timeoutInterval_,
                  HTTPHeaderFields_.copy()};
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
