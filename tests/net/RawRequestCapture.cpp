#include "RawRequestCapture.h"

#include <regex>

#include <boost/asio/buffers_iterator.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <sys/socket.h>

namespace velmo::test {

namespace asio = boost::asio;
using asio::ip::tcp;

RawRequestCapture::RawRequestCapture()
    : acceptor_(io_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)), thread_([this] { serve(); }) {}

RawRequestCapture::~RawRequestCapture() {
    // Wakes an accept still waiting when a test ended before its request.
    ::shutdown(acceptor_.native_handle(), SHUT_RDWR);
    thread_.join();
}

std::string RawRequestCapture::url() const {
    return "http://127.0.0.1:" + std::to_string(acceptor_.local_endpoint().port()) + "/raw";
}

std::string RawRequestCapture::body() const {
    std::lock_guard lock(mutex_);
    return body_;
}

std::string RawRequestCapture::requestLine() const {
    std::lock_guard lock(mutex_);
    return requestLine_;
}

void RawRequestCapture::serve() {
    boost::system::error_code ec;
    tcp::socket socket(io_);
    acceptor_.accept(socket, ec);
    if (ec) return;
    asio::streambuf buffer;
    const std::size_t headLength = asio::read_until(socket, buffer, "\r\n\r\n", ec);
    if (ec) return;
    const auto begin = asio::buffers_begin(buffer.data());
    const std::string head(begin, begin + static_cast<std::ptrdiff_t>(headLength));
    std::smatch match;
    std::regex_search(head, match, std::regex("content-length: *([0-9]+)", std::regex::icase));
    const std::size_t length = match.empty() ? 0 : std::stoul(match[1]);
    const std::size_t buffered = buffer.size() - headLength;
    if (buffered < length) asio::read(socket, buffer, asio::transfer_exactly(length - buffered), ec);
    const auto all = asio::buffers_begin(buffer.data());
    std::string body(all + static_cast<std::ptrdiff_t>(headLength), asio::buffers_end(buffer.data()));
    {
        std::lock_guard lock(mutex_);
        body_ = std::move(body);
        requestLine_ = head.substr(0, head.find("\r\n"));
    }
    asio::write(
        socket,
        asio::buffer(std::string_view("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")),
        ec);
}

} // namespace velmo::test
