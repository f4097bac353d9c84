#pragma once

#include <mutex>
#include <string>
#include <thread>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace velmo::test {

/// Takes one request on 127.0.0.1, answers it with an empty 200 and keeps its body byte for
/// byte: the test server parses multipart bodies away before a route sees them.
class RawRequestCapture {
public:
    RawRequestCapture();
    ~RawRequestCapture();
    RawRequestCapture(const RawRequestCapture&) = delete;
    RawRequestCapture& operator=(const RawRequestCapture&) = delete;

    std::string url() const;
    /// The body as it came; empty until the request has been answered.
    std::string body() const;
    /// The request line without its line break ("GET /raw?a=1 HTTP/1.1"); empty until answered.
    std::string requestLine() const;

private:
    void serve();

    boost::asio::io_context io_;
    boost::asio::ip::tcp::acceptor acceptor_;
    mutable std::mutex mutex_;
    std::string body_;
    std::string requestLine_;
    std::thread thread_;
};

} // namespace velmo::test
