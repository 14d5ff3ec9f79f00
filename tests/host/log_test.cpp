#include <regex>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/host/program_run.h"
#include "tests/host/udp_listeners.h"

namespace mvrtpfec {
namespace {

class LogOptionsTest : public ProgramTest {
protected:
    LogOptionsTest() {
        store("in.ts", sample());
        EXPECT_EQ(run("protect in.ts fec.pcap --mode both --columns 5 --rows 5 --log run.log").status, 0);
    }
};

TEST_F(LogOptionsTest, RunsFollowEachOtherInTheLogAndTheFiguresHaveTheReceiversBuffer) {
    ASSERT_EQ(run("repair fec.pcap out.ts --log run.log --stats-csv run.csv").status, 0);
    EXPECT_EQ(run("repair none.pcap out.ts --log run.log --log-level error").status, 1);
    const std::string time = R"(\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d\.\d{3} )";
    const std::regex expected(
        "\\[Level 2\\] " + time + "protection of in.ts begins\n\\[Level 2\\] " + time +
        "protection of in.ts ends\n\\[Level 2\\] " + time + "repair of fec.pcap begins\n\\[Level 2\\] " +
        time + "the FEC packets are ours\n\\[Level 2\\] " + time +
        "received 1140, lost 0, .*\n\\[Level 2\\] " + time + "repair of fec.pcap ends\n\\[Level 0\\] " +
        time + "repair of none.pcap ends: none.pcap: cannot open: .*\n");
    EXPECT_TRUE(std::regex_match(text("run.log"), expected)) << text("run.log");
    // However short the run: the names, and at least one line of as many figures.
    EXPECT_TRUE(std::regex_match(
        text("run.csv"), std::regex("Cpu,TotalCpu,(\\w+,){12}buffer_full_rtp_fec_in,(\\w+,){2}NeedRestart\n"
                                    "((-?\\d+,){17}0\n)+")))
        << text("run.csv");
}

TEST_F(LogOptionsTest, WhatARunLeftUnfinishedIsToldAndKept) {
    store("out.ts.part", {1, 2, 3});
    store("out.ts.part3", {4});
    const Outcome result = run("repair fec.pcap out.ts --log run.log");
    EXPECT_EQ(result.status, 0);
    for (const std::string& told : {result.text, text("run.log")})
        EXPECT_NE(told.find("out.ts.part and 1 more: what another run has written"), std::string::npos)
            << told;
    EXPECT_EQ(load("out.ts.part"), (Bytes{1, 2, 3}));
    EXPECT_EQ(load("out.ts.part3"), Bytes{4});
    EXPECT_TRUE(load("out.ts") == sample());
}

TEST_F(LogOptionsTest, ASyslogServerGetsTheMessages) {
    UdpListeners server(1);
    const std::string target = fmt::format("127.0.0.1:{}", server.firstPort());
    ASSERT_EQ(run("repair fec.pcap out.ts --log syslog:" + target).status, 0);
    const auto lines = server.datagrams(0);
    ASSERT_EQ(lines.size(), 4U);
    const std::string first(lines[0].begin(), lines[0].end() - 1);
    EXPECT_TRUE(std::regex_match(
        first, std::regex(R"(<134>\w{3} \d\d \d\d:\d\d:\d\d mvrtpfec 0000 repair of fec.pcap begins)")))
        << first;
    EXPECT_EQ(lines[0].back(), 0);
    for (const char* wrong :
         {"syslog:127.0.0.1", "syslog:300.1.1.1:514", "syslog:::1:514", "syslog:127.0.0.1:0"})
        EXPECT_EQ(run(std::string("repair fec.pcap out.ts --log ") + wrong).status, 2) << wrong;
}

}  // namespace
}  // namespace mvrtpfec
