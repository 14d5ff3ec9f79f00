#include "host/net/text_server.h"

#include <chrono>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

namespace mvrtpfec {

namespace {

namespace net = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Tcp = net::ip::tcp;
using Request = http::request<http::empty_body>;
using Response = http::response<http::string_body>;
using namespace std::chrono_literals;

constexpr auto patience = 10s;
constexpr std::uint32_t longestHead = 8192;
constexpr int mostClients = 16;
/// When the system has no descriptor left.
constexpr auto breath = 100ms;

Response answerTo(const Request& request, const TextServer::Page& page) {
    Response answer{http::status::ok, request.version()};
    answer.keep_alive(request.keep_alive());
    answer.set(http::field::content_type, "text/plain; charset=utf-8");
    const bool isHead = request.method() == http::verb::head;
    const std::string_view target(request.target().data(), request.target().size());
    if (request.method() != http::verb::get && !isHead) {
        answer.result(http::status::method_not_allowed);
        answer.set(http::field::allow, "GET, HEAD");
    } else if (target.substr(0, target.find('?')) != page.target) {
        answer.result(http::status::not_found);
        answer.body() = "see " + page.target + "\n";
    } else {
        answer.set(http::field::content_type, page.contentType);
        answer.body() = page.text();
    }
    answer.prepare_payload();
    // The length stays.
    if (isHead) answer.body().clear();
    return answer;
}

/// One client's connection, which lives as long as something is under way on it.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(Tcp::socket socket, const TextServer::Page& page, int& clients)
        : stream_(std::move(socket)), page_(page), clients_(clients) {
        ++clients_;
    }
    ~Connection() { --clients_; }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void read() {
        parser_.emplace();
        parser_->header_limit(longestHead);
        stream_.expires_after(patience);
        http::async_read(stream_, buffer_, *parser_,
                         [self = shared_from_this()](beast::error_code error, std::size_t) {
                             if (!error) self->answer();
                         });
    }

private:
    void answer() {
        response_ = answerTo(parser_->get(), page_);
        serializer_.emplace(response_);
        serializer_->split(parser_->get().method() == http::verb::head);
        stream_.expires_after(patience);
        const auto done = [self = shared_from_this()](beast::error_code error, std::size_t) {
            if (!error && self->response_.keep_alive()) self->read();
        };
        if (serializer_->split())
            http::async_write_header(stream_, *serializer_, done);
        else
            http::async_write(stream_, *serializer_, done);
    }

    beast::tcp_stream stream_;
    const TextServer::Page& page_;
    int& clients_;
    beast::flat_buffer buffer_{longestHead};
    std::optional<http::request_parser<http::empty_body>> parser_;
    Response response_;
    std::optional<http::response_serializer<http::string_body>> serializer_;
};

}  // namespace

class TextServer::Listener {
public:
    Listener(const Tcp::endpoint& endpoint, Page page)
        : page_(std::move(page)), acceptor_(context_, endpoint) {
        accept();
        thread_ = std::thread([this] { context_.run(); });
    }
    ~Listener() {
        context_.stop();
        thread_.join();
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::uint16_t port() const { return acceptor_.local_endpoint().port(); }

private:
    void accept() {
        acceptor_.async_accept([this](beast::error_code error, Tcp::socket socket) {
            if (error)
                std::this_thread::sleep_for(breath);
            else if (clients_ < mostClients)
                std::make_shared<Connection>(std::move(socket), page_, clients_)->read();
            accept();
        });
    }

    Page page_;
    int clients_ = 0;
    net::io_context context_{1};
    Tcp::acceptor acceptor_;
    std::thread thread_;
};

TextServer::TextServer(const std::string& address, std::uint16_t port, Page page) {
    try {
        listener_ =
            std::make_unique<Listener>(Tcp::endpoint(net::ip::make_address(address), port), std::move(page));
    } catch (const boost::system::system_error& error) {
        throw std::system_error(error.code().value(), std::system_category(),
                                "can't listen on " + address + " port " + std::to_string(port));
    }
}

TextServer::~TextServer() = default;

std::uint16_t TextServer::port() const {
    return listener_->port();
}

}  // namespace mvrtpfec
