#pragma once

#include <mutex>
#include <stdexcept>
#include <string>

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVClientConfigInterface.h"
#include "velmo/runtime/VVDI.h"

namespace velmo::test {

/// A client configuration class for tests, whose values a test sets. One object for the process,
/// since the registry keeps what is bound.
class TestClientConfig : public VDClass, public VVClientConfigInterface {
public:
    struct Values {
        std::string logsURL = "";
        std::string clientVersion = "1.2.3";
        std::string clientName = "TestClient";
        std::string clientID = "client-42";
        std::string hostVersion = "99.1";
        /// The values above throw instead, as a broken host's might.
        bool throws = false;
    };

    /// Binds the test configuration with `values` and returns it.
    static TestClientConfig& bind(Values values) {
        static TestClientConfig* config = new TestClientConfig();
        config->set(std::move(values));
        VVDI::shared().bindClass(config, kVVClientConfigInterface);
        return *config;
    }

    void set(Values values) {
        std::lock_guard lock(mutex_);
        values_ = std::move(values);
    }

    std::string logsURL() const override { return get(&Values::logsURL); }
    std::string clientVersion() const override { return get(&Values::clientVersion); }
    std::string clientName() const override { return get(&Values::clientName); }
    std::string clientID() const override { return get(&Values::clientID); }
    std::string tempDir() const override { return "/tmp"; }
    std::string keyChainServiceName() const override { return "test-service"; }
    std::string bundle() const override { return "/nonexistent"; }
    std::string hostVersion() const override { return get(&Values::hostVersion); }

private:
    TestClientConfig() : VDClass("TestClientConfig", nullptr, nullptr) {}
    std::string get(std::string Values::*field) const {
        std::lock_guard lock(mutex_);
        if (values_.throws) throw std::runtime_error("the host's configuration failed");
        return values_.*field;
    }

    mutable std::mutex mutex_;
    Values values_;
};

} // namespace velmo::test
