#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/Value.h"

namespace velmo {

inline constexpr const char* kNSLocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr const char* kNSLocalizedFailureReasonErrorKey = "NSLocalizedFailureReason";
inline constexpr const char* kNSUnderlyingErrorKey = "NSUnderlyingError";
inline constexpr const char* kNSURLErrorFailingURLErrorKey = "NSErrorFailingURLKey";
inline constexpr const char* kNSURLErrorFailingURLStringErrorKey = "NSErrorFailingURLStringKey";
/// The platform's domain for errno values.
inline constexpr const char* kNSPOSIXErrorDomain = "NSPOSIXErrorDomain";
/// The platform's URL error domain, in which transfer failures and HTTP statuses are reported.
inline constexpr const char* kNSURLErrorDomain = "NSURLErrorDomain";
inline constexpr std::int64_t kNSURLErrorCancelled = -999;
inline constexpr std::int64_t kNSURLErrorBadURL = -1000;
inline constexpr std::int64_t kNSURLErrorTimedOut = -1001;
inline constexpr std::int64_t kNSURLErrorUnsupportedURL = -1002;
inline constexpr std::int64_t kNSURLErrorCannotFindHost = -1003;
inline constexpr std::int64_t kNSURLErrorCannotConnectToHost = -1004;
inline constexpr std::int64_t kNSURLErrorNetworkConnectionLost = -1005;
inline constexpr std::int64_t kNSURLErrorHTTPTooManyRedirects = -1007;
inline constexpr std::int64_t kNSURLErrorBadServerResponse = -1011;
inline constexpr std::int64_t kNSURLErrorCannotDecodeContentData = -1016;
inline constexpr std::int64_t kNSURLErrorCannotParseResponse = -1017;
inline constexpr std::int64_t kNSURLErrorSecureConnectionFailed = -1200;
inline constexpr std::int64_t kNSURLErrorCannotCreateFile = -3000;
inline constexpr std::int64_t kNSURLErrorCannotWriteToFile = -3003;

/// A failure of the service layer: domain, code and user information, as the platform's error
/// object carries them. Passed to completion callbacks as a shared pointer; nullptr means success.
class VPError : public Object {
public:
    VPError(std::string domain, std::int64_t code, Dictionary userInfo = Dictionary());

    static std::shared_ptr<VPError> make(std::string domain, std::int64_t code,
                                         Dictionary userInfo = Dictionary());
    /// An error whose user information holds only a localized description.
    static std::shared_ptr<VPError> withDescription(std::string domain, std::int64_t code,
                                                    std::string description);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    const std::string& domain() const { return domain_; }
    std::int64_t code() const { return code_; }
    /// Never nil: an error without user information has an empty dictionary.
    const Dictionary& userInfo() const { return userInfo_; }

    /// The description under "NSLocalizedDescription", or the platform's generic sentence.
    std::string localizedDescription() const;

    /// Lifts the "error" and "message" of a parsed JSON error body into a new error of the same
    /// domain and code; gives the receiver when the body holds no "error".
    std::shared_ptr<VPError> errorWithResponse(const Value& body) const;

    bool isEqual(const Object& other) const override;
    std::string description() const override;

private:
    std::string domain_;
    std::int64_t code_;
    Dictionary userInfo_;
};

using VPErrorPtr = std::shared_ptr<VPError>;

} // namespace velmo
