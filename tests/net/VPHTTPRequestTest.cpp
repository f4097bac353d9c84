#include <filesystem>
#include <fstream>
#include <regex>
#include <thread>

#include <gtest/gtest.h>

#include "NetTestServer.h"
#include "RawRequestCapture.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/URL.h"
#include "velmo/net/VPHTTPRequest.h"

using namespace velmo;
using namespace velmo::test;

namespace {

using Method = VPHTTPRequestMethod;

std::shared_ptr<VPHTTPRequest> makeRequest(const std::string& url, Method method, Value parameters,
                                           Outcome& outcome, bool json = false) {
    auto request = std::make_shared<VPHTTPRequest>(url, method, std::move(parameters), outcome.completion());
    request->setSendParametersAsJSON(json);
    return request;
}

std::string pngBytes() {
    return std::string("\x89PNG\r\n\x1a\n", 8);
}

} // namespace

class VPHTTPRequestTest : public NetTest {};

// ---------------------------------------------------------------- encoding

TEST(VPHTTPRequestEncoding, ParameterStringEscapesAllButLettersDigitsAndDashDotUnderscore) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        {"aZ09-._", "aZ09-._"},
        {":/=,!$&'()*+;[]@#?^%\"`<>{}\\|~ ",
         "%3A%2F%3D%2C%21%24%26%27%28%29%2A%2B%3B%5B%5D%40%23%3F%5E%25%22%60%3C%3E%7B%7D%5C%7C%7E%20"},
        {"caf\xc3\xa9", "caf%C3%A9"},
        {"line\nbreak", "line%0Abreak"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(encodedURLParameterString(c.in), c.out) << c.in;
}

TEST(VPHTTPRequestEncoding, ImageTypeSniffsJpegGifPngByTheirFirstBytes) {
    const struct {
        std::string bytes;
        const char* type;
    } cases[] = {
        {std::string("\xFF\xD8\xFF\xE0\x00", 5), "jpg"},
        {std::string("\xFF\xD8\xFF\xE0", 4), ""}, // too short to be taken for a JPEG
        {"GIF8", "gif"},
        {"GIF", ""},
        {"\x89PNG\r", "png"},
        {"\x89PNG", ""},
        {"plain text", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VPHTTPRequest::imageType(c.bytes), c.type) << c.bytes;
}

TEST(VPHTTPRequestEncoding, WrongParameterKindsRaiseInStartWithTheSystemsMessages) {
    const struct {
        Method method;
        bool json;
        Value parameters;
        const char* message;
    } cases[] = {
        {Method::GET, false, Value(Array{Value(1)}),
         "GET and DELETE parameters must be provided as NSDictionary."},
        {Method::GET, false, Value(Dictionary{{"a", Value(Dictionary{{"b", Value(1)}})}}),
         "GET requests only accept NSString, NSNumber and NSData parameters."},
        {Method::HEAD, false, Value(Dictionary{{"a", Value::bytes("x")}}),
         "HEAD requests only accept NSString, NSNumber and NSData parameters."},
        {Method::POST, false, Value(Array{Value(1)}),
         "POST and PUT parameters must be provided as NSDictionary when sendParametersAsJSON is set to NO."},
        {Method::POST, false, Value(Dictionary{{"a", Value(Array{Value(1)})}}),
         "POST requests only accept NSString and NSNumber parameters."},
        {Method::PUT, false, Value(Dictionary{{"a", Value::null()}}),
         "PUT requests only accept NSString and NSNumber parameters."},
        {Method::PUT, true, Value("text"),
         "POST and PUT parameters must be provided as NSDictionary or NSArray when sendParametersAsJSON is "
         "set to YES."},
    };
    for (const auto& c : cases) {
        Outcome outcome;
        auto request = makeRequest("http://127.0.0.1:9/x", c.method, c.parameters, outcome, c.json);
        try {
            request->start();
            ADD_FAILURE() << "no exception for " << c.message;
        } catch (const std::invalid_argument& e) {
            EXPECT_STREQ(e.what(), c.message);
        }
        EXPECT_EQ(request->state(), OperationState::Ready);
    }
    drainMainQueue();
}

TEST_F(VPHTTPRequestTest, ParametersGoIntoQueryFormOrJsonBody) {
    const struct {
        const char* name;
        Method method;
        bool json;
        Value parameters;
        const char* path;
        const char* target;
        const char* body;
        const char* contentType;
    } cases[] = {
        {"get query", Method::GET, false,
         Value(Dictionary{{"q", Value("a b&c")}, {"n", Value(3)}, {"f", Value(true)}}), "/echo",
         "/echo?q=a%20b%26c&n=3&f=1", "", "<absent>"},
        {"empty get adds no ?", Method::GET, false, Value(Dictionary::create()), "/echo", "/echo", "",
         "<absent>"},
        {"delete query", Method::DELETE, false, Value(Dictionary{{"id", Value("7")}}), "/echo", "/echo?id=7",
         "", "<absent>"},
        {"form", Method::POST, false, Value(Dictionary{{"a", Value("x y")}, {"b", Value(1.5)}}), "/echo",
         "/echo", "a=x%20y&b=1.5", "application/x-www-form-urlencoded"},
        {"empty form", Method::POST, false, Value(Dictionary::create()), "/echo", "/echo", "",
         "application/x-www-form-urlencoded"},
        {"json without parameters", Method::POST, true, Value(), "/echo", "/echo", "", "<absent>"},
        {"json dictionary", Method::PUT, true, Value(Dictionary{{"a", Value(Array{Value(1), Value("x")})}}),
         "/echo", "/echo", R"({"a":[1,"x"]})", "application/json"},
        {"json array", Method::POST, true, Value(Array{Value(1), Value::null()}), "/echo", "/echo",
         "[1,null]", "application/json"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Outcome outcome;
        auto request = makeRequest(server.url(c.path), c.method, c.parameters, outcome, c.json);
        request->start();
        ASSERT_TRUE(outcome.wait());
        ASSERT_FALSE(outcome.error) << outcome.error->description();
        EXPECT_EQ(outcome.echo().get("target").str(), c.target);
        EXPECT_EQ(echoedBody(outcome), c.body);
        EXPECT_EQ(echoedHeader(outcome, "content-type"), c.contentType);
        EXPECT_TRUE(request->parameters().isNil()) << "parameters are cleared at start";
    }
}

// One request after another, so that each transfer runs on the handle the one before let go.
TEST_F(VPHTTPRequestTest, EachRequestGoesOutAsItselfWhateverWentBefore) {
    const struct {
        const char* name;
        Method method;
        const char* path;
        Value parameters;
        const char* header; // "X-Once: yes" on this request only
        const char* echoedMethod;
        const char* body;
    } cases[] = {
        {"head", Method::HEAD, "/text", Value(), nullptr, nullptr, ""},
        {"get after head", Method::GET, "/text", Value(), nullptr, nullptr, "hello"},
        {"put", Method::PUT, "/echo", Value(Dictionary{{"b", Value("2")}}), nullptr, "PUT", "b=2"},
        {"post after put, with a header", Method::POST, "/echo", Value(Dictionary{{"a", Value("1")}}),
         "X-Once", "POST", "a=1"},
        {"get after post", Method::GET, "/echo", Value(), nullptr, "GET", ""},
        {"delete", Method::DELETE, "/echo", Value(), nullptr, "DELETE", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Outcome outcome;
        auto request = makeRequest(server.url(c.path), c.method, c.parameters, outcome);
        if (c.header) request->setValue("yes", c.header);
        request->start();
        ASSERT_TRUE(outcome.wait());
        ASSERT_FALSE(outcome.error) << outcome.error->description();
        if (!c.echoedMethod) {
            EXPECT_EQ(outcome.response, Value::bytes(c.body));
            continue;
        }
        EXPECT_EQ(outcome.echo().get("method").str(), c.echoedMethod);
        EXPECT_EQ(echoedBody(outcome), c.body);
        EXPECT_EQ(echoedHeader(outcome, "x-once"), c.header ? "yes" : "<absent>");
        if (!*c.body) {
            EXPECT_EQ(echoedHeader(outcome, "content-type"), "<absent>");
        }
    }
}

TEST_F(VPHTTPRequestTest, MultipartBodyHasFixedBoundaryAndNamedFileParts) {
    const auto folder = Files::makeTemporaryDirectory("velmo-net");
    const auto file = folder / "notes.txt";
    std::ofstream(file) << "file bytes";
    const Dictionary parameters{{"title", Value("My title")},
                                {"count", Value(2)},
                                {"image", Value::bytes(pngBytes())},
                                {"blob", Value::bytes("raw")},
                                {"doc", Value(URL::fileURLWithPath(file))},
                                {"gone", Value(URL::fileURLWithPath(folder / "missing.txt"))}};
    RawRequestCapture capture;
    Outcome outcome;
    auto request = makeRequest(capture.url(), Method::POST, Value(parameters), outcome);
    request->start();
    ASSERT_TRUE(outcome.wait());

    EXPECT_EQ(request->operationRequest().valueForHTTPHeaderField("Content-Type"),
              "multipart/form-data; boundary=VPHTTPRequestBoundary");
    // A file that can't be read is sent as an empty part.
    const std::regex expected(
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: form-data; name=\"title\"\r\n\r\nMy title\r\n"
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: form-data; name=\"count\"\r\n\r\n2\r\n"
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: attachment; name=\"image\"; filename=\"userfile0[0-9a-f]+\\.png\"\r\n"
        "Content-Type: image/png\r\n\r\n\x89PNG\r\n\x1a\n\r\n"
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: attachment; name=\"blob\"; filename=\"userfile1[0-9a-f]+\"\r\n"
        "Content-Type: application/octet-stream\r\n\r\nraw\r\n"
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: attachment; name=\"doc\"; filename=\"notes.txt\"\r\n"
        "Content-Type: application/octet-stream\r\n\r\nfile bytes\r\n"
        "--VPHTTPRequestBoundary\r\n"
        "Content-Disposition: attachment; name=\"gone\"; filename=\"missing.txt\"\r\n"
        "Content-Type: application/octet-stream\r\n\r\n\r\n"
        "--VPHTTPRequestBoundary--\r\n");
    EXPECT_TRUE(std::regex_match(capture.body(), expected)) << capture.body();
    std::filesystem::remove_all(folder);
}

TEST_F(VPHTTPRequestTest, GetParametersFollowAQuestionMarkEvenAfterAQuery) {
    // The address's own query keeps "1?y=2" as the value of x: callers rely on the text as sent.
    RawRequestCapture capture;
    Outcome outcome;
    auto request =
        makeRequest(capture.url() + "?x=1", Method::GET, Value(Dictionary{{"y", Value("2")}}), outcome);
    request->start();
    ASSERT_TRUE(outcome.wait());
    EXPECT_EQ(capture.requestLine(), "GET /raw?x=1?y=2 HTTP/1.1");
    EXPECT_EQ(request->operationRequest().url, capture.url() + "?x=1?y=2");
}

// ---------------------------------------------------------------- answers

TEST_F(VPHTTPRequestTest, AnswersBecomeResponsesAndErrors) {
    const struct {
        const char* path;
        Value response;
        const char* errorDomain;
        std::int64_t errorCode;
        const char* description;
        int status;
    } cases[] = {
        {"/json?body=12", Value(12), nullptr, 0, nullptr, 200},
        {"/json?body=%7B%22a%22%3A%5B1%2Cnull%5D%7D",
         Value(Dictionary{{"a", Value(Array{Value(1), Value::null()})}}), nullptr, 0, nullptr, 200},
        {"/json/latin1", Value(Dictionary{{"name", Value("caf\xc3\xa9")}}), nullptr, 0, nullptr, 200},
        {"/status/500", Value(Dictionary{{"error", Value("status 500")}}), kNSURLErrorDomain, -1011,
         "Bad Server Response.", 500},
        {"/status/404", Value(Dictionary{{"error", Value("status 404")}}), kNSURLErrorDomain, 404, nullptr,
         404},
        {"/nocontent", Value::bytes(""), nullptr, 0, nullptr, 204},
        {"/text", Value::bytes("hello"), nullptr, 0, nullptr, 200},
        {"/json?body=%7Boops", Value::bytes("{oops"), kNSCocoaErrorDomain, kNSPropertyListReadCorruptError,
         nullptr, 200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        Outcome outcome;
        const std::string url = server.url(c.path);
        VPHTTPRequest::GET(url, Value(), outcome.completion());
        ASSERT_TRUE(outcome.wait());
        drainMainQueue();
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_TRUE(outcome.onMainThread);
        EXPECT_EQ(outcome.response, c.response);
        EXPECT_EQ(outcome.response.kind(), c.response.kind());
        ASSERT_TRUE(outcome.urlResponse);
        EXPECT_EQ(outcome.urlResponse->statusCode, c.status);
        if (!c.errorDomain) {
            EXPECT_FALSE(outcome.error) << outcome.error->description();
            continue;
        }
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->domain(), c.errorDomain);
        EXPECT_EQ(outcome.error->code(), c.errorCode);
        const Dictionary& info = outcome.error->userInfo();
        if (c.description) {
            EXPECT_EQ(info.get(kNSLocalizedDescriptionKey), Value(c.description));
        }
        if (c.errorDomain == std::string(kNSURLErrorDomain)) {
            EXPECT_EQ(info.get(kNSURLErrorFailingURLStringErrorKey), Value(url));
            EXPECT_EQ(info.contains(kNSLocalizedDescriptionKey), c.description != nullptr);
        }
    }
}

TEST_F(VPHTTPRequestTest, TransferFailuresCompleteWithoutResponse) {
    const struct {
        std::string url;
        Value parameters;
        std::int64_t code;
    } cases[] = {
        {server.url("/truncated"), Value(), kNSURLErrorNetworkConnectionLost},
        {server.url("/loop"), Value(), kNSURLErrorHTTPTooManyRedirects},
        {"http://127.0.0.1:9/closed", Value(), kNSURLErrorCannotConnectToHost},
        {"not a url", Value(), kNSURLErrorBadURL},
        {"ftp://127.0.0.1/file", Value(), kNSURLErrorUnsupportedURL},
        // Keys go into the query as given: a bare "%" makes an address no URL can hold.
        {server.url("/echo"), Value(Dictionary{{"100%", Value("x")}}), kNSURLErrorBadURL},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url);
        Outcome outcome;
        auto request = VPHTTPRequest::GET(c.url, c.parameters, outcome.completion());
        ASSERT_TRUE(outcome.wait());
        EXPECT_TRUE(outcome.response.isNil());
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->domain(), kNSURLErrorDomain);
        EXPECT_EQ(outcome.error->code(), c.code);
        EXPECT_TRUE(request->isFinished());
    }
}

// ---------------------------------------------------------------- time-outs

TEST(VPHTTPRequestTimeout, IntervalIsTheFieldElseTheDefaultInWholeSeconds) {
    const struct {
        unsigned own;
        double fallback;
        unsigned expected;
    } cases[] = {{0, 20, 20}, {0, 20.9, 20}, {7, 20, 7}, {0, 0.5, 0}};
    for (const auto& c : cases) {
        VPHTTPRequest::setDefaultTimeoutInterval(c.fallback);
        VPHTTPRequest request("http://127.0.0.1:9/", Method::GET, Value(), nullptr);
        request.setTimeoutInterval(c.own);
        EXPECT_EQ(request.timeoutInterval(), c.expected);
    }
    VPHTTPRequest::setDefaultTimeoutInterval(20);
}

TEST_F(VPHTTPRequestTest, InMemoryBodyIsCutOffAtTheLimitInForceWhileItRuns) {
    const struct {
        const char* path;
        unsigned limit;
        unsigned limitSetMeanwhile; // from another thread, while the request starts; 0: none
        unsigned limitSetOnceAsked; // once the server has the request; 0: none
        bool timesOut;
    } cases[] = {
        {"/slow?ms=4000", 1, 0, 0, true},
        {"/slow?ms=1500", 1, 10, 0, false},
        // Lowered while the transfer runs, counted from the start all the same.
        {"/slow?ms=4000", 20, 0, 1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const int asked = server.slowStarted();
        Outcome outcome;
        auto request = makeRequest(server.url(c.path), Method::GET, Value(), outcome);
        request->setTimeoutInterval(c.limit);
        std::thread setter([&] {
            if (c.limitSetMeanwhile) request->setTimeoutInterval(c.limitSetMeanwhile);
        });
        const auto started = std::chrono::steady_clock::now();
        request->start();
        setter.join();
        if (c.limitSetOnceAsked) {
            ASSERT_TRUE(waitFor([&] { return server.slowStarted() > asked; }));
            request->setTimeoutInterval(c.limitSetOnceAsked);
        }
        ASSERT_TRUE(outcome.wait());
        if (c.timesOut) {
            EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(3000));
        }
        EXPECT_TRUE(request->isFinished());
        if (!c.timesOut) {
            EXPECT_FALSE(outcome.error) << outcome.error->description();
            EXPECT_EQ(outcome.response, Value::bytes("late"));
            continue;
        }
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->code(), kNSURLErrorTimedOut);
        EXPECT_EQ(outcome.error->userInfo().get(kNSLocalizedDescriptionKey),
                  Value("The operation timed out."));
        EXPECT_TRUE(outcome.response.isNil());
    }
}

TEST_F(VPHTTPRequestTest, SavedBodyOutlastsTheTimeoutAndReportsProgress) {
    const auto folder = Files::makeTemporaryDirectory("velmo-net");
    const auto path = (folder / "drip.bin").string();
    std::vector<float> progress;
    Outcome outcome;
    auto request = std::make_shared<VPHTTPRequest>(
        server.url("/drip?bytes=20000&ms=2500"), Method::GET, Value(), path,
        [&](float p) { progress.push_back(p); }, outcome.completion());
    request->setTimeoutInterval(1);
    request->start();
    ASSERT_TRUE(outcome.wait());
    EXPECT_FALSE(outcome.error) << outcome.error->description();
    EXPECT_EQ(outcome.response, Value::bytes(""));
    EXPECT_EQ(std::filesystem::file_size(path), 20000u);
    // The length is unknown (chunked): every report says so, and nothing is counted.
    ASSERT_FALSE(progress.empty());
    for (float p : progress)
        EXPECT_EQ(p, -1.0f);
    EXPECT_EQ(request->expectedContentLength(), -1.0f);
    EXPECT_EQ(request->receivedContentLength(), 0.0f);
    std::filesystem::remove_all(folder);
}

// ---------------------------------------------------------------- files

TEST_F(VPHTTPRequestTest, HundredMegabytesToAFileDoNotGrowMemory) {
    constexpr std::size_t kSize = 100u * 1024 * 1024;
    const auto folder = Files::makeTemporaryDirectory("velmo-net");
    const auto path = (folder / "big.bin").string();
    const std::size_t before = heapBytesInUse();
    std::size_t peak = before;
    float last = 0;
    bool increasing = true;
    Outcome outcome;
    VPHTTPRequest::GET(
        server.url("/big?bytes=" + std::to_string(kSize)), Value(), path,
        [&](float p) {
            // Progress runs on the request's serial queue; the test reads these
            // values only after the completion on the main queue.
            peak = std::max(peak, heapBytesInUse());
            increasing = increasing && p >= last;
            last = p;
        },
        outcome.completion());
    ASSERT_TRUE(waitFor([&] { return outcome.calls > 0; }));
    EXPECT_FALSE(outcome.error) << outcome.error->description();
    EXPECT_EQ(std::filesystem::file_size(path), kSize);
    EXPECT_TRUE(increasing);
    EXPECT_FLOAT_EQ(last, 1.0f);
    EXPECT_LT(peak - before, 32u * 1024 * 1024) << "memory grew with the body";
    std::filesystem::remove_all(folder);
}

TEST_F(VPHTTPRequestTest, UnwritableSavePathFailsWithWriteError) {
    const struct { const char* path; } cases[] = {{"/nonexistent-folder/x.bin"}, {"/dev/full"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        Outcome outcome;
        VPHTTPRequest::GET(server.url("/big?bytes=100000"), Value(), c.path, nullptr, outcome.completion());
        ASSERT_TRUE(outcome.wait());
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->domain(), kVPHTTPRequestWriteErrorDomain);
        EXPECT_EQ(outcome.error->code(), 0);
        EXPECT_TRUE(outcome.response.isNil());
    }
}

// ---------------------------------------------------------------- progress

TEST_F(VPHTTPRequestTest, PostReportsUploadProgressUpToOne) {
    std::vector<float> progress;
    Outcome outcome;
    auto request = std::make_shared<VPHTTPRequest>(
        server.url("/sink"), Method::POST, Value(Dictionary{{"data", Value(std::string(3 << 20, 'u'))}}), "",
        [&](float p) { progress.push_back(p); }, outcome.completion());
    request->setSendParametersAsJSON(true);
    request->start();
    ASSERT_TRUE(outcome.wait());
    EXPECT_FALSE(outcome.error) << outcome.error->description();
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_FLOAT_EQ(progress.back(), 1.0f);
}

TEST_F(VPHTTPRequestTest, AThrowingProgressCallbackLeavesTheRequestToFinish) {
    const auto folder = Files::makeTemporaryDirectory("velmo-net");
    int reports = 0;
    Outcome outcome;
    VPHTTPRequest::GET(
        server.url("/big?bytes=300000"), Value(), (folder / "big.bin").string(),
        [&](float) {
            ++reports;
            throw std::runtime_error("progress failed");
        },
        outcome.completion());
    ASSERT_TRUE(outcome.wait());
    EXPECT_FALSE(outcome.error) << outcome.error->description();
    EXPECT_GT(reports, 0);
    std::filesystem::remove_all(folder);
}

// ---------------------------------------------------------------- cancel and the task count

TEST_F(VPHTTPRequestTest, CancelAfterTheAnswerArrivedStillSuppressesTheCallback) {
    Outcome outcome;
    auto request = VPHTTPRequest::GET(server.url("/text"), Value(), outcome.completion());
    // Let the answer in and the completion step be queued, without running the main queue.
    for (int i = 0; i < 500 && !request->operationURLResponse(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    request->cancel();
    runMainLoopUntil([] { return false; }, std::chrono::milliseconds(100));
    EXPECT_EQ(outcome.calls, 0);
    EXPECT_TRUE(request->isFinished());
}

TEST_F(VPHTTPRequestTest, CancelBeforeStartIsIgnored) {
    Outcome outcome;
    auto request = makeRequest(server.url("/text"), Method::GET, Value(), outcome);
    request->cancel();
    EXPECT_FALSE(request->isCancelled());
    request->start();
    ASSERT_TRUE(outcome.wait());
    EXPECT_EQ(outcome.response, Value::bytes("hello"));
}

TEST_F(VPHTTPRequestTest, TaskCountRisesWhileRequestsRunAndFallsBackToZero) {
    drainMainQueue();
    const unsigned before = VPHTTPRequest::taskCount();
    Outcome slow;
    auto request = VPHTTPRequest::GET(server.url("/slow?ms=300"), Value(), slow.completion());
    drainMainQueue();
    EXPECT_EQ(VPHTTPRequest::taskCount(), before + 1);
    ASSERT_TRUE(slow.wait());
    EXPECT_EQ(VPHTTPRequest::taskCount(), before);
}
