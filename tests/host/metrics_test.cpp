#include <regex>
#include <string>
#include <vector>

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/live/reception_metrics.h"
#include "host/net/text_server.h"

namespace mvrtpfec {
namespace {

class Client {
public:
    explicit Client(std::uint16_t port) : socket_(context_) {
        socket_.connect({asio::ip::address_v4::loopback(), port});
    }

    void send(const std::string& text) { asio::write(socket_, asio::buffer(text)); }
    /// Up to the end of the connection.
    std::string receiveAll() {
        std::string text;
        asio::error_code error;
        asio::read(socket_, asio::dynamic_buffer(text), error);
        return text;
    }

private:
    asio::io_context context_;
    asio::ip::tcp::socket socket_;
};

class TextServerTest : public ::testing::Test {
protected:
    std::string ask(const std::string& head) {
        Client client(server_.port());
        client.send(head + "\r\nHost: x\r\nConnection: close\r\n\r\n");
        return client.receiveAll();
    }

    int served_ = 0;
    TextServer server_{"127.0.0.1", 0, {"/metrics", "text/plain; version=0.0.4", [this] {
                                            return fmt::format("page {}\n", ++served_);
                                        }}};
};

TEST_F(TextServerTest, AnswersWhatItShould) {
    const std::string page = ask("GET /metrics?x=1 HTTP/1.1");
    EXPECT_TRUE(page.starts_with("HTTP/1.1 200 ")) << page;
    EXPECT_NE(page.find("Content-Type: text/plain; version=0.0.4\r\n"), std::string::npos) << page;
    EXPECT_TRUE(page.ends_with("\r\n\r\npage 1\n")) << page;
    const std::string head = ask("HEAD /metrics HTTP/1.1");
    EXPECT_NE(head.find("Content-Length: 7\r\n"), std::string::npos) << head;
    EXPECT_TRUE(head.ends_with("\r\n\r\n")) << head;
    EXPECT_TRUE(ask("GET / HTTP/1.1").starts_with("HTTP/1.1 404 "));
    const std::string refused = ask("DELETE /metrics HTTP/1.1");
    EXPECT_TRUE(refused.starts_with("HTTP/1.1 405 ")) << refused;
    EXPECT_NE(refused.find("Allow: GET, HEAD\r\n"), std::string::npos) << refused;
    EXPECT_TRUE(ask("GET /metrics HTTP/1.0").starts_with("HTTP/1.0 200 "));
}

TEST_F(TextServerTest, OneConnectionMayAskAgainAndMayAskAheadOfTheAnswer) {
    Client client(server_.port());
    client.send(
        "GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n"
        "GET /metrics HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    const std::string answers = client.receiveAll();
    EXPECT_NE(answers.find("page 1\nHTTP/1.1 200 "), std::string::npos) << answers;
    EXPECT_TRUE(answers.ends_with("page 2\n")) << answers;
}

TEST_F(TextServerTest, GarbageAndCrowdsDoNotHarmIt) {
    for (const std::string& garbage :
         {std::string("\0\1\2\r\n\r\n", 7), std::string(100'000, 'x'),
          "GET /metrics HTTP/1.1\r\nX: " + std::string(20'000, 'y') + "\r\n\r\n",
          std::string("GET /metrics HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n")}) {
        Client client(server_.port());
        try {
            client.send(garbage);
        } catch (const std::system_error&) {
            continue;  // it had enough before all was sent
        }
        EXPECT_EQ(client.receiveAll().find(" 200 "), std::string::npos);
    }
    {
        std::vector<std::unique_ptr<Client>> silent;
        for (int i = 0; i < 40; ++i) silent.push_back(std::make_unique<Client>(server_.port()));
        EXPECT_EQ(silent.back()->receiveAll(), "") << "beyond the sixteenth it hangs up";
    }
    std::string page;
    for (int i = 0; i < 100 && page.empty(); ++i) page = ask("GET /metrics HTTP/1.1");
    EXPECT_TRUE(page.starts_with("HTTP/1.1 200 ")) << page;
}

TEST_F(TextServerTest, ATakenPortIsAnError) {
    EXPECT_THROW(TextServer("127.0.0.1", server_.port(), {"/", "text/plain", [] { return ""; }}),
                 std::system_error);
}

TEST(MetricsTextTest, IsWhatPrometheusReads) {
    ReceptionTotals totals;
    totals.reception.media = 12345678901;
    totals.reception.fec.columns = 10;
    totals.repair.stream.rebuilt = 7;
    totals.reception.jitter = std::chrono::microseconds(1500);
    const std::string text = metricsText(totals, std::chrono::milliseconds(250));
    const std::regex block(
        "# HELP (mvrtpfec_[a-z_]+) [^\n]+\\.\n# TYPE (mvrtpfec_[a-z_]+) (counter|gauge)\n(mvrtpfec_[a-z_]+) "
        "[0-9.e+-]+\n");
    std::size_t covered = 0;
    for (std::sregex_iterator match(text.begin(), text.end(), block), end; match != end; ++match) {
        const std::string name = (*match)[1];
        EXPECT_EQ(name, (*match)[2]);
        EXPECT_EQ(name, (*match)[4]);
        EXPECT_EQ(name.ends_with("_total"), (*match)[3] == "counter") << name;
        covered += static_cast<std::size_t>(match->length());
    }
    EXPECT_EQ(covered, text.size()) << text;
    for (const char* line : {"\nmvrtpfec_media_packets_total 12345678901\n", "\nmvrtpfec_columns 10\n",
                             "\nmvrtpfec_rebuilt_packets_total 7\n", "\nmvrtpfec_jitter_seconds 0.0015\n",
                             "\nmvrtpfec_longest_latency_seconds 0.25\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
}

}  // namespace
}  // namespace mvrtpfec
