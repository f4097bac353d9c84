#include <filesystem>

#include <gtest/gtest.h>

#include "LocalHttpServer.h"
#include "velmo/foundation/Files.h"
#include "velmo/model/values/URLConnection.h"

using namespace velmo;

TEST(URLConnection, BlockingRequestGivesBodyResponseAndNoErrorForStatuses) {
    test::LocalHttpServer server;
    // The engine keeps connections for reuse: the server lets them go soon, so stopping it is quick.
    server.server().set_keep_alive_timeout(1);
    server.server().Post("/echo", [](const httplib::Request& req, httplib::Response& res) {
        res.status = 201;
        res.set_header("X-Seen", req.get_header_value("X-Token"));
        res.set_content(req.body, "application/json; charset=utf-8");
    });
    server.server().Get("/missing", [](const httplib::Request&, httplib::Response& res) {
        res.status = 404;
        res.set_content("nope", "text/plain");
    });
    server.server().Get(
        "/redirect", [](const httplib::Request&, httplib::Response& res) { res.set_redirect("/missing"); });
    server.start();

    URLRequest request;
    request.url = server.baseURL() + "/echo";
    request.method = "POST";
    request.body = R"({"a":1})";
    request.setValueForHTTPHeaderField("secret", "X-Token");
    HTTPURLResponse response;
    VPErrorPtr error = VPError::make("stale", 1);
    const auto body = URLConnection::sendSynchronousRequest(request, &response, &error);
    ASSERT_TRUE(body);
    EXPECT_EQ(*body, R"({"a":1})");
    EXPECT_FALSE(error);
    EXPECT_EQ(response.statusCode, 201);
    EXPECT_EQ(response.valueForHTTPHeaderField("x-seen"), "secret");
    EXPECT_EQ(response.MIMEType(), "application/json");
    EXPECT_EQ(response.textEncodingName(), "utf-8");

    URLRequest redirect;
    redirect.url = server.baseURL() + "/redirect";
    const auto missing = URLConnection::sendSynchronousRequest(redirect, &response, nullptr);
    ASSERT_TRUE(missing) << "an HTTP status is not a transfer error";
    EXPECT_EQ(*missing, "nope");
    EXPECT_EQ(response.statusCode, 404);
    EXPECT_EQ(response.url, server.baseURL() + "/missing");
}

TEST(URLConnection, TransferFailuresAreURLErrorsAndOnlyHttpIsSpoken) {
    test::LocalHttpServer server;
    server.server().set_keep_alive_timeout(1);
    server.server().Get("/loop",
                        [](const httplib::Request&, httplib::Response& res) { res.set_redirect("/loop"); });
    server.start();
    const auto folder = Files::makeTemporaryDirectory("velmo-urlconnection");
    const auto file = folder / "secret.txt";
    ASSERT_TRUE(Files::writeAtomically(file, "local bytes"));
    test::LocalHttpServer closed;
    closed.start();
    const int closedPort = closed.port();
    closed.stop(); // nothing listens there now

    const struct {
        std::string url;
        std::int64_t code;
    } cases[] = {
        {"http://127.0.0.1:" + std::to_string(closedPort) + "/", kNSURLErrorCannotConnectToHost},
        {"notascheme://x", kNSURLErrorUnsupportedURL},
        // A local file is never read, though it is there.
        {"file://" + file.string(), kNSURLErrorUnsupportedURL},
        {server.baseURL() + "/loop", kNSURLErrorHTTPTooManyRedirects},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        URLRequest request;
        request.url = c.url;
        HTTPURLResponse response;
        response.statusCode = 7;
        VPErrorPtr error;
        EXPECT_FALSE(URLConnection::sendSynchronousRequest(request, &response, &error));
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), kNSURLErrorDomain);
        EXPECT_EQ(error->code(), c.code);
        EXPECT_EQ(error->userInfo().get(kNSURLErrorFailingURLStringErrorKey), Value(c.url));
        EXPECT_EQ(response.statusCode, 7) << "the response is left alone on failure";
    }
    std::filesystem::remove_all(folder);
}
